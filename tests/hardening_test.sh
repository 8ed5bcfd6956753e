#!/bin/sh
# hardening_test.sh LIBRARY PROGRAM...: each can be loaded anywhere, has its tables read-only once it
# is loaded, watches its stack and its buffers, and keeps stack and code apart.
set -eu
library=$1
status=0

# has WHAT FILE TABLE PATTERN: a line of what readelf shows matches.
has() {
  readelf -W "$3" "$2" | grep -Eq "$4" && return
  echo "$2: no $1"
  status=1
}

for file in "$@"; do
  has 'read-only relocations' "$file" --program-headers '^ *GNU_RELRO'
  has 'binding of all symbols at start' "$file" --dynamic 'BIND_NOW|FLAGS.*NOW'
  has 'stack that cannot be executed' "$file" --program-headers '^ *GNU_STACK .* RW +0x'
  has 'position-independent code' "$file" --file-header 'Type: +DYN'
  [ "$file" = "$library" ] || has 'flag of such a program' "$file" --dynamic 'FLAGS_1.*PIE'
  has 'check of the stack' "$file" --dyn-syms '__stack_chk_fail'
  has 'check of buffers' "$file" --dyn-syms '__[a-z]+_chk(@|$)'
done
exit "$status"
