#!/usr/bin/env bash
# usage_test.sh GZDTOOL GOLDEN_RECORDINGS SOURCE: odd command lines, outputs that stay as they were,
# and the page that is made of the declaration.
set -euo pipefail
tool=$1 golden=$2 source=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
"$golden" messages words.gzd
cp words.gzd other.gzd

fail() { echo "FAILED: $*" >&2 && exit 1; }

# refuses STATUS WORDS COMMAND...: ends with the status, says the words, prints nothing.
refuses() {
  local status=$1 words=$2 got=0
  shift 2
  "$tool" "$@" >out 2>err || got=$?
  [[ $got -eq $status && ! -s out ]] || fail "$* ended with $got"
  grep -qF -- "$words" err || fail "$* said $(cat err)"
}
refuses 2 "did you mean 'samples'" sample words.gzd
refuses 2 "did you mean '--columns'" samples --colums href words.gzd
refuses 2 "did you mean 'href'" samples --columns hrf words.gzd
refuses 2 "unknown option '--columns'" messages --columns x words.gzd
refuses 2 "FILE" samples
refuses 2 "left or right" events --eye up words.gzd
refuses 2 "start text" trials --trial-end x words.gzd
refuses 2 "NAME=REGEX" trials --trial-variable x words.gzd
refuses 2 "is a recording of this run" samples -o other.gzd words.gzd other.gzd
refuses 2 "unknown format" samples --format ods words.gzd
refuses 2 "did you mean '--redo'" convert --rdo words.gzd
refuses 1 "no.gzd" samples no.gzd
cmp -s words.gzd other.gzd || fail "a recording was written over"

# A table that fails leaves what was there, and no part.
echo old >kept.tsv
refuses 1 "no.gzd" samples -o kept.tsv words.gzd no.gzd
[[ $(cat kept.tsv) == old && ! -e kept.tsv.part ]] || fail "a failed table was left"

# The formats say the same; several recordings are told apart.
"$tool" messages -o table.tsv words.gzd 2>/dev/null
"$tool" messages -o table.tsv.gz words.gzd 2>/dev/null
"$tool" export --table messages --output - words.gzd 2>/dev/null | cmp - table.tsv
gzip -dc table.tsv.gz | cmp - table.tsv
rows=$(($(wc -l <table.tsv) - 1))
[[ $("$tool" messages --format jsonl words.gzd 2>/dev/null | wc -l) -eq $rows ]] || fail "rows of jsonl"
[[ $("$tool" messages words.gzd other.gzd 2>/dev/null | grep -c '^other') -eq $rows ]] || fail "two files"

# Texts of messages and names of files do not speak to a terminal.
sed 's/text !V inside/\x1b[31m\xc2\x9b inside/' words.gzd >"$(printf 'a\033b.gzd')"
python3 - "$tool" <<'P'
import pty, subprocess, sys
shown = b""
def keep(fd):
    global shown
    import os
    data = os.read(fd, 4096)
    shown += data
    return b"." * (len(data) > 0)
name = "a\x1bb.gzd"
for words in (["messages", name], ["messages", "--format", "csv", name], ["info", name], ["info", "--json", name],
              ["messages", "--format", "jsonl", name], ["check", name], ["samples", "\x1b" + name],
              ["convert", "\x1b" + name], ["export", "--table", "\x1b"], ["samples", "--\x1b"]):
    shown = b""
    pty.spawn([sys.argv[1], *words], keep)
    assert b"\x1b" not in shown and b"\xc2\x9b" not in shown and shown, (words, shown)
P

# The completion offers each verb and each option of its help, and completes values.
"$tool" manual bash >completion.bash
# shellcheck source=/dev/null
source completion.bash
offers() { # WORD LINE...: that word is offered at the end of the line
  local wanted=$1
  COMP_WORDS=("${@:2}") COMP_CWORD=$(($# - 2))
  _gzdtool || true
  [[ " ${COMPREPLY[*]} " == *" $wanted "* ]] || fail "$wanted is not offered behind ${*:2}: ${COMPREPLY[*]}"
}
"$tool" --help | sed -n '/^Subcommands:/,$ s/^  \([a-z]*\) .*/\1/p' >verbs
[[ $(wc -l <verbs) -eq 16 ]] || fail "verbs of the help: $(cat verbs)"
while read -r verb; do
  offers "$verb" gzdtool ""
  while read -r option; do offers "$option" gzdtool "$verb" --; done \
    < <("$tool" help "$verb" | grep -oE '^  (-[a-z],)?--[a-z-]+' | grep -oE -- '--[a-z-]+')
done <verbs
offers velocity gzdtool samples --columns ""
offers tsv.gz gzdtool export --format ""
offers words.gzd gzdtool info ""
"$tool" manual man | grep -q '^.It Fl -trial-variable Ar NAME=REGEX$' || fail "the manual page lacks an option"

"$tool" schema --format markdown | diff "$source/docs/tables.md" - ||
  fail "docs/tables.md is old: gzdtool schema --format markdown > docs/tables.md"
