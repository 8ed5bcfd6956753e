# Shared by the scripts of this directory; sourced, not run.
# shellcheck shell=bash disable=SC2034

# What a build needs: "probe package", a probe being a command or an absolute path of a header.
readonly build_needs=(
  "g++ g++"
  "cmake cmake"
  "ninja ninja-build"
  "/usr/include/zlib.h zlib1g-dev"
)
# What gzdtool needs beyond that; without them a build leaves it out.
readonly tool_needs=(
  "/usr/include/CLI/CLI.hpp libcli11-dev"
  "/usr/include/nlohmann/json.hpp nlohmann-json3-dev"
  "/usr/include/fmt/format.h libfmt-dev"
  "/usr/include/libdeflate.h libdeflate-dev"
)
# What the page in the browser needs.
readonly page_needs=("node nodejs" "npm npm")
readonly module_needs=("em++ emscripten")
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

readonly seconds_between_reports=20

# report_progress LABEL LOG: copies standard input into LOG, and tells now and then how far it is by
# the counts that ninja ("[3/90]") and ctest ("  3/90 Test") begin their lines with.
report_progress() {
  local line next=$((SECONDS + seconds_between_reports))
  while IFS= read -r line; do
    printf '%s\n' "$line" >>"$2"
    [[ $SECONDS -ge $next && $line =~ ^\ *\[?([0-9]+/[0-9]+)(\]|\ Test) ]] || continue
    say "  $1: ${BASH_REMATCH[1]}"
    next=$((SECONDS + seconds_between_reports))
  done
}

# followed LABEL LOG COMMAND...: says what is done and how far it is; what is printed goes to LOG.
followed() {
  local label=$1 log=$2
  shift 2
  say "$label"
  ("$@" 2>&1) | report_progress "$label" "$log"
}

# build_preset PRESET DIRECTORY [CMAKE OPTION]...
build_preset() {
  local preset=$1 directory=$2 log status=0
  shift 2
  log=$(mktemp)
  { followed "configuring $preset" "$log" cmake --preset "$preset" -B "$directory" "$@" &&
    followed "building $preset" "$log" cmake --build "$directory" -j "$build_jobs"; } || status=$?
  if [[ $status -ne 0 ]]; then
    grep -vE '^\[[0-9]+/[0-9]+\] (Building|Linking)' "$log" | tail -n 200
    say "FAILED: configuring or building $preset" >&2
  fi
  rm -f "$log"
  return "$status"
}
