# Shared by the scripts of this directory; sourced, not run.
# shellcheck shell=bash disable=SC2034

# What a build needs: "probe package", a probe being a command or an absolute path of a header.
readonly build_needs=(
  "g++ g++"
  "cmake cmake"
  "ninja ninja-build"
  "/usr/include/zlib.h zlib1g-dev"
)
readonly test_needs=(
  "/usr/include/gtest/gtest.h libgtest-dev"
  "pkg-config pkgconf"
)
readonly lint_needs=("clang-format clang-format" "shellcheck shellcheck")
readonly package_needs=("dpkg-shlibdeps dpkg-dev" "file file")

readonly build_jobs=2

say() { printf '%s\n' "$*"; }
heading() { printf '\n--- %s\n' "$*"; }

is_present() {
  case "$1" in
    /*) [[ -e "$1" ]] ;;
    *) command -v "$1" >/dev/null 2>&1 ;;
  esac
}

# missing_packages "probe package"...: the packages whose probe fails, one a line.
missing_packages() {
  local need
  for need in "$@"; do
    is_present "${need%% *}" || printf '%s\n' "${need##* }"
  done
}

# require_packages "probe package"...: installs what is missing when run as root; otherwise says how
# and ends the script.
require_packages() {
  local missing
  mapfile -t missing < <(missing_packages "$@")
  [[ ${#missing[@]} -eq 0 ]] && return
  if [[ $(id -u) -ne 0 ]]; then
    say "Some packages are missing. Install them with" >&2
    say "  sudo apt-get update && sudo apt-get install -y --no-install-recommends ${missing[*]}" >&2
    exit 1
  fi
  heading "installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# quietly LABEL COMMAND...: runs a command and shows its output only when it fails.
quietly() {
  local label=$1 log status=0
  shift
  log=$(mktemp)
  "$@" >"$log" 2>&1 || status=$?
  if [[ $status -ne 0 ]]; then
    cat "$log"
    say "FAILED: $label" >&2
  fi
  rm -f "$log"
  return "$status"
}

# build_preset PRESET DIRECTORY [CMAKE OPTION]...
build_preset() {
  local preset=$1 directory=$2
  shift 2
  quietly "configuring $preset" cmake --preset "$preset" -B "$directory" "$@" &&
    quietly "building $preset" cmake --build "$directory" -j "$build_jobs"
}
