#!/bin/sh
# exports_test.sh LIBRARY HEADER ARCHIVE: the shared library exports the functions that the header
# declares with GZD_API, no more and no fewer, and this check notices one too many and one too few.
# The static one shows besides them only what stands in namespace gzd, so that no class of a
# client's takes the place of one of the library's.
set -eu
library=$1
header=$2
archive=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Names in front of the first bracket of each declaration, comments and directives left out.
declared_in() {
  sed '/^#/d' "$1" | tr '\n' ' ' | sed 's|/\*|\n/*|g; s|\*/|*/\n|g' | sed '/^\/\*/d' |
    tr '\n;' ' \n' | sed -n 's/^.*GZD_API [^(]*[ *]\([A-Za-z_][A-Za-z_0-9]*\)(.*/\1/p' | sort -u
}

differences() {
  diff "$1" "$2" || true
}

declared_in "$header" >"$work/declared"
nm -D --defined-only "$library" | awk '{ sub(/@.*/, "", $3); print $3 }' | sort -u >"$work/exported"

status=0
fail() {
  echo "$1"
  status=1
}

[ "$(wc -l <"$work/declared")" -eq "$(grep -c '^GZD_API ' "$header")" ] ||
  fail "not every declaration of $header was understood"
[ -z "$(differences "$work/declared" "$work/exported")" ] || {
  differences "$work/declared" "$work/exported"
  fail "declared but not exported (<), or exported but not declared (>)"
}

sed '0,/^GZD_API .*gzd_/s/^GZD_API /        /' "$header" >"$work/fewer.h"
declared_in "$work/fewer.h" >"$work/fewer"
[ -n "$(differences "$work/fewer" "$work/exported")" ] || fail "one export too many went unnoticed"
{
  cat "$header"
  echo 'GZD_API int gzd_invented(void);'
} >"$work/more.h"
declared_in "$work/more.h" >"$work/more"
[ -n "$(differences "$work/more" "$work/exported")" ] || fail "a missing export went unnoticed"

# Templates of the standard library may be shared (some with the type that they return in front),
# and tables of the compiler's and of its sanitizers.
nm -C -g --defined-only "$archive" | sed -n 's/^[0-9a-f]* [A-Za-z] //p' |
  grep -vE '^([a-z]+ )*(std::|__gnu_cxx::|DW\.ref\.)|^__odr_asan\._ZN3gzd|gzd::' | sort -u >"$work/shown"
[ -z "$(differences "$work/declared" "$work/shown")" ] || {
  differences "$work/declared" "$work/shown"
  fail "declared but not in $archive (<), or shown by it outside namespace gzd (>)"
}
exit $status
