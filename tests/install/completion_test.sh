#!/usr/bin/env bash
# completion_test.sh GZDCONV SOURCE_DIRECTORY: the completions offer every option of the program's
# help and of its option table, and none that the table does not know.
set -euo pipefail
gzdconv=$1
source_dir=$2
status=0
fail() {
  echo "$*"
  status=1
}

# shellcheck source=completions/gzdconv.bash
source "$source_dir/completions/gzdconv.bash"

# Options completed at the end of a line of the given words.
complete_line() {
  COMP_WORDS=("$@")
  COMP_CWORD=$(($# - 1))
  _gzdconv
}

complete_line gzdconv -
offered=("${COMPREPLY[@]}")
is_offered() { [[ " ${offered[*],,} " == *" ${1,,} "* ]]; }

# --- the help: what its lines begin with, and what they name in brackets
mapfile -t helped < <("$gzdconv" --help | sed -n 's/^     -/-/p' | sed 's/  .*//' |
  grep -oE -- '(^|[ (/])-[A-Za-z0-9_]+' | tr -d ' (/' | sort -u)
((${#helped[@]} > 40)) || fail "only ${#helped[@]} options found in the help"
for option in "${helped[@]}"; do
  is_offered "$option" || fail "$option of the help is not completed"
done

# --- the option table: lines of how a word must look, the first that fits counts
mapfile -t table < <(sed -n 's/^    \(handled(\|{\)\(word\|prefix\), "\([A-Z0-9]*\)".*/\2 \3/p' \
  "$source_dir/gzdconv/cli/option_parser.cpp")
declare -A used=([REPARSE]=refused)

# line_for OPTION: sets `line` to the text of the table's line that fits it.
line_for() {
  local typed=${1#-} match text
  typed=${typed^^}
  for line in "${table[@]}"; do
    match=${line% *}
    text=${line#* }
    line=$text
    [[ $match == word && $typed == "$text" || $match == prefix && $typed == "$text"* ]] && return
  done
  return 1
}
for option in "${offered[@]}"; do
  [[ $option == --help || $option == --version ]] && continue
  [[ -z $("$gzdconv" "$option" 2>&1 >/dev/null) ]] || fail "the program does not know $option"
  if line_for "$option"; then used[$line]=1; else fail "$option is completed but unknown"; fi
done
((${#table[@]} > 50)) || fail "only ${#table[@]} lines of the option table understood"
for line in "${table[@]}"; do
  [[ -v used[${line#* }] ]] || fail "no option for the table's line ${line#* } is completed"
done

# --- zsh offers what bash offers
mapfile -t zsh_offered < <(sed -n "s/^  '\(([^)]*)\)\?\*\?\(-[^[]*\)\[.*/\2/p" \
  "$source_dir/completions/_gzdconv" | sort)
diff <(printf '%s\n' "${offered[@]}" | sort) <(printf '%s\n' "${zsh_offered[@]}" | sort) ||
  fail "bash (<) and zsh (>) differ"

# --- values and files
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
mkdir runs
touch a.gzd B.GZD a.asc
complete_line gzdconv -y ""
[[ $(printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort | tr '\n' ' ') == "B.GZD a.gzd runs " ]] ||
  fail "completed as recordings: ${COMPREPLY[*]}"
complete_line gzdconv -P ""
[[ ${COMPREPLY[*]} == runs ]] || fail "completed as directories: ${COMPREPLY[*]}"
complete_line gzdconv -miss ""
[[ ${#COMPREPLY[@]} -eq 0 ]] || fail "completed as a free value: ${COMPREPLY[*]}"
for option in -d -DEBUG; do
  complete_line gzdconv "$option" ""
  [[ $(printf '%s\n' "${COMPREPLY[@]}" | sort | tr '\n' ' ') == "a.asc runs " ]] ||
    fail "completed as a file to write to: ${COMPREPLY[*]}"
done
exit "$status"
