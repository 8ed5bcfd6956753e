#!/usr/bin/env bash
# manual_test.sh CHECK ARGUMENT...: holds the pages of the manual against the program.
#   options PAGE OPTION_PARSER.cpp GZDCONV README   every option, both ways
#   synth PAGE GZDSYNTH                             the same of gzdsynth
#   diagnostics PAGE SOURCE...                      messages told by the page
#   functions PAGE HEADER                           functions and the example of the library
#   rendering PAGE...                               no warnings; 77 when no reader is there
set -euo pipefail
export LC_ALL=C.UTF-8

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0

fail() {
  echo "$1"
  status=1
}

# same WHAT FILE OTHER: two sorted lists hold the same words, and not none.
same() {
  [[ -s $2 ]] || fail "$1: nothing found in the first list"
  diff "$2" "$3" || fail "$1: the lists differ (< first, > second)"
}

# The options of a page: every Fl of the items of its lists.
options_of_page() {
  sed -n 's/^\.It \(Fl .*\)/\1/p' "$1" | sed 's/ , /\n/g' | awk '$1 == "Fl" { print "-" $2 }' | sort
}

# rule_of_option PARSER OPTIONS: for each option the text of the first rule that takes it.
rules_of_options() {
  awk '
    NR == FNR {
      if (match($0, /^ *(\{|handled\()(word|prefix), "[A-Z0-9]+"/)) {
        line = substr($0, RSTART, RLENGTH)
        count++
        whole[count] = line ~ /word,/
        sub(/^[^"]*"/, "", line)
        sub(/"$/, "", line)
        text[count] = line
      }
      next
    }
    {
      typed = toupper(substr($0, 2))
      found = "none"
      for (i = 1; i <= count && found == "none"; i++)
        if (whole[i] ? typed == text[i] : index(typed, text[i]) == 1) found = text[i]
      print found, $0
    }
    END { for (i = 1; i <= count; i++) print text[i] >rules }
  ' rules="$work/rules" "$1" "$2"
}

check_options() {
  local page=$1 parser=$2 converter=$3 readme=$4
  options_of_page "$page" >"$work/page"
  [[ -z $(uniq -d "$work/page") ]] || fail "named twice: $(uniq -d "$work/page")"

  grep -v '^--' "$work/page" >"$work/single"
  rules_of_options "$parser" "$work/single" >"$work/pairs"
  grep '^none ' "$work/pairs" && fail "options of the page that the program does not know"
  cut -d ' ' -f 1 "$work/pairs" | sort -u >"$work/taken"
  sort -u "$work/rules" >"$work/known"
  same "rules of the program and options of the page" "$work/known" "$work/taken"

  # The head of each line of the usage text, in front of two blanks.
  "$converter" --help | sed -n 's/^     \(-.*\)/\1/p' | sed 's/   *.*//; s/<[^>]*>//g' |
    grep -oE -- '-[A-Za-z0-9_]+' | sort -fu >"$work/usage"
  [[ $(wc -l <"$work/usage") -gt 40 ]] || fail "the usage text was not understood"
  local option
  while read -r option; do
    grep -qixF -e "$option" "$work/page" || fail "in the usage text, not in the page: $option"
  done <"$work/usage"

  grep '^| `-' "$readme" | cut -d '|' -f 2 | grep -oE -- '`--?[A-Za-z0-9_]+' | tr -d '`' |
    sort >"$work/readme"
  grep -vxF -e -reparse "$work/page" >"$work/wanted"
  same "options of the page and of the README" "$work/wanted" "$work/readme"
}

check_synth() {
  options_of_page "$1" >"$work/page"
  "$2" --help | grep -oE -- '^  --[a-z-]+' | tr -d ' ' | sort >"$work/usage"
  same "options of the page and of gzdsynth" "$work/page" "$work/usage"
}

# The longest fixed part of each message of the page stands in a source.
check_diagnostics() {
  local page=$1 part
  shift
  sed -n '/^\.Bl -diag/,/^\.El/s/^\.It //p' "$page" | tr -d '"' |
    awk '{
      count = split($0, parts, /%[a-z]|\.\.\./)
      longest = ""
      for (i = 1; i <= count; i++) {
        gsub(/^ +| +$/, "", parts[i])
        if (length(parts[i]) > length(longest)) longest = parts[i]
      }
      print longest
    }' >"$work/parts"
  [[ -s $work/parts ]] || fail "no diagnostics were found"
  while IFS= read -r part; do
    grep -qF -e "$part" "$@" || fail "no source holds this message: $part"
  done <"$work/parts"
}

check_functions() {
  local page=$1 header=$2
  sed -n 's/^\.Fo //p' "$page" | sort >"$work/page"
  grep -o '^GZD_API [^(]*' "$header" | sed 's/.*[ *]//' | sort >"$work/header"
  same "functions of the page and of the header" "$work/page" "$work/header"

  # Arguments of both, by their number.
  awk '/^\.Fo / { name = $2; count = 0 } /^\.Fa / { count++ }
       /^\.Fc/ { print name, count }' "$page" | sort >"$work/page"
  sed '/^#/d' "$header" | tr '\n' ' ' | sed 's/GZD_API/\n&/g; s/void)/)/g' |
    sed -n 's/^GZD_API [^(]*[ *]\([a-z_0-9]*\)(\([^)]*\)).*/\1 \2/p' |
    awk '{ print $1, NF == 1 ? 0 : gsub(",", "") + 1 }' | sort >"$work/header"
  sed -i 's/^gzd_get_version 1$/gzd_get_version 0/' "$work/page"  # void
  same "numbers of arguments" "$work/page" "$work/header"

  sed -n '/^\.Bd -literal/,/^\.Ed/p' "$page" | sed '/^\./d; s/\\e/\\/g' >"$work/example.c"
  "${CC:-cc}" -std=c99 -Wall -Wextra -Werror -fsyntax-only -I "$(dirname "$header")" \
    "$work/example.c" || fail "the example does not compile"
}

# rendered PAGE: what its readers have to say against it.
rendered() {
  if command -v man >/dev/null; then
    { MANROFFSEQ='' MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$1" >/dev/null; } 2>&1
  fi
  if command -v mandoc >/dev/null; then
    mandoc -T lint -W warning "$1"
  fi
}

check_rendering() {
  if ! command -v man >/dev/null && ! command -v mandoc >/dev/null; then
    echo "neither man nor mandoc is installed: skipped"
    exit 77
  fi
  local page said
  for page in "$@"; do
    [[ -s $page ]] || fail "$page is not there"
    ! grep -n '@' "$page" || fail "$page: something was not filled in"
    said=$(rendered "$page" || true)
    [[ -z $said ]] || fail "$said"
  done
}

check=$1
shift
case "$check" in
  options) check_options "$@" ;;
  synth) check_synth "$@" ;;
  diagnostics) check_diagnostics "$@" ;;
  functions) check_functions "$@" ;;
  rendering) check_rendering "$@" ;;
  *) fail "no check $check" ;;
esac
exit "$status"
