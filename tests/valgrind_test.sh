#!/bin/sh
# valgrind_test.sh GZDSYNTH "OPTION..." PROGRAM [OPTION]...: makes a recording with the options and has
# the program read it under valgrind, which must see no invalid access, no use of what was never set
# and no leak. Ends with 77 when there is no valgrind.
set -eu
command -v valgrind >/dev/null 2>&1 || {
  echo 'valgrind is not installed: skipped'
  exit 77
}
synth=$1
recording_options=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# shellcheck disable=SC2086 # several words
"$synth" --duration 3 --trials 2 --seed 3 $recording_options rec.gzd
valgrind --quiet --leak-check=full --show-leak-kinds=all --error-exitcode=9 --log-file=errors \
  "$@" rec.gzd >output || {
  status=$?
  cat errors
  exit "$status"
}
