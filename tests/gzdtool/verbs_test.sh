#!/usr/bin/env bash
# verbs_test.sh GZDTOOL GOLDEN_RECORDINGS GZDSYNTH HERE: info, check, export, convert and bids on small
# recordings. What info and check tell is kept in verbs.expected; GZD_UPDATE=1 writes it anew.
set -euo pipefail
tool=$1 golden=$2 synth=$3 here=$4
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
fail() { echo "FAILED: $*" >&2 && exit 1; }

"$synth" --duration 4 --trials 2 sound.gzd
"$synth" --duration 4 --rate 500 --eyes left --gap 30 --stray-samples --unpaired-blinks lossy.gzd
"$synth" --duration 4 --generation 4 --cut 4001 cut.gzd
for name in messages block_shapes blink_repairs block_repairs odd_values; do "$golden" "$name" "$name.gzd"; done
head -c 20 sound.gzd >broken.gzd

# ---- info and check ----
report() {
  local file status
  for file in sound lossy cut messages block_shapes blink_repairs block_repairs odd_values broken; do
    for verb in info "info --json" check "check --json"; do
      status=0
      # shellcheck disable=SC2086
      "$tool" $verb $file.gzd 2>err || status=$?
      echo "$verb: $status$([[ ! -s err ]] || echo ", words on standard error")"
    done
  done
}

# ---- every table and format, their first lines ----
for name in event_kinds buttons_and_input target_flags pose_flags half_milliseconds gaps packed trials; do
  "$golden" "$name" "$name.gzd"
done
tables() {
  local name words
  while read -r name words; do
    echo "--- $name: $words"
    # shellcheck disable=SC2086
    "$tool" $words "$name.gzd" 2>err | head -n 5
  done <<'END'
event_kinds events --columns href,raw
event_kinds fixations --format csv --eye left
event_kinds saccades --format jsonl
blink_repairs blinks
messages messages
messages messages --message-offsets --format csv
messages messages --format jsonl --from 1050
buttons_and_input inputs
buttons_and_input samples --columns input,buttons,status
block_shapes blocks
trials trials
sound trials --trial-start TRIALID --trial-end RESULT --trial-variable n=D.([0-9]+) --format jsonl
target_flags samples --columns target --eye left
pose_flags samples --columns all
half_milliseconds samples --format jsonl
gaps samples --from 1007
packed samples --columns raw
odd_values samples --columns all
END
}
for kept in report:verbs.expected tables:tables.expected; do
  [[ -z ${GZD_UPDATE:-} ]] || ${kept%:*} >"$here/${kept#*:}"
  ${kept%:*} | diff "$here/${kept#*:}" - || fail "${kept#*:}: something else is told"
done
"$tool" info --loss --json sound.gzd | grep -q '"loss":{"left":0.0' || fail "loss of info"

# ---- export ----
export_all() { "$tool" export sound.gzd lossy.gzd --output-dir tables --columns all "$@"; }
export_all
[[ $(find tables -type f | wc -l) -eq 14 ]] || fail "files of export"
"$tool" samples --columns all sound.gzd 2>/dev/null | cmp - tables/sound_samples.tsv
python3 - "$(sha256sum <lossy.gzd | cut -d ' ' -f 1)" <<'P'
import json, sys
side = json.load(open("tables/lossy.json"))
assert side["sha256"] == sys.argv[1] and side["repairs"]["samples_filled"] > 0
for name, table in side["tables"].items():
    lines = open("tables/" + table["file"]).read().split("\n")
    assert lines[0].split("\t") == [c["name"] for c in table["columns"]], name
    assert len(lines) - 2 == table["rows"], name
P
before=$(stat -c %Y.%y tables/lossy_samples.tsv)
rm tables/lossy_blocks.tsv
export_all 2>words
[[ $(stat -c %Y.%y tables/lossy_samples.tsv) == "$before" && -s tables/lossy_blocks.tsv ]] ||
  fail "not only what was missing was written"
grep -q "sound.gzd: done before" words || fail "a finished recording was exported again"
export_all --eye left
head -n 1 tables/sound_samples.tsv | grep -q right_x && fail "other options, old tables"

# ---- a run that is killed leaves whole files or none ----
mkdir many
for seed in $(seq 12); do "$synth" --duration 20 --seed "$seed" "many/$seed.gzd"; done
for pause in 0.01 0.05 0.1 0.2; do
  rm -rf texts out texts.ndjson
  "$tool" convert -j 2 many/*.gzd --output-dir texts --report texts.ndjson & killed=$!
  "$tool" export many/*.gzd --output-dir out --table samples,events >/dev/null & other=$!
  sleep "$pause"
  kill -KILL "$killed" "$other" 2>/dev/null || true
  wait "$killed" "$other" 2>/dev/null || true
  [[ ! -e texts.ndjson || $(wc -l <texts.ndjson) -eq 12 ]] || fail "a report of half a run"
  for file in out/*_samples.tsv; do
    [[ ! -e $file ]] || [[ $(wc -l <"$file") -eq 20001 ]] || fail "half a table: $file"
  done
done
sleep 0.5 # converters end with the run that started them
for file in texts/*.asc; do
  [[ ! -e $file ]] || [[ $(tail -n 1 "$file") == *TRIAL_RESULT* ]] || fail "half a text: $file"
done

# ---- convert ----
"$tool" convert -j 2 many/*.gzd --output-dir texts --report all.ndjson -- -res
[[ $(find texts -name "*.asc" | wc -l) -eq 12 && $(wc -l <all.ndjson) -eq 12 ]] || fail "texts of convert"
printf '%s\0' many/3.gzd many/none.gzd many/1.gzd |
  "$tool" convert --files-from - --output-dir texts --report - 2>words >again.ndjson && fail "no failure"
cut -d '"' -f 4,8 again.ndjson | diff - <(printf '%s\n' 'many/3.gzd"skipped' 'many/none.gzd"failed' 'many/1.gzd"skipped')
# Findings are those of the reading that the options ask for.
"$synth" --duration 5 --stray-samples --seed 6 stray.gzd
found() {
  "$tool" convert stray.gzd --output-dir texts --redo --report - -- "$@" | grep -o 'samples_dropped\|period_mismatch' |
    sort -u | tr '\n' ' '
}
[[ $(found -vel) == "period_mismatch samples_dropped " && $(found -z -C) == "samples_dropped " && -z $(found -z) ]] ||
  fail "findings of another reading"
refused() { ! "$tool" convert sound.gzd -- "$@" 2>words || fail "took $*"; }
refused -bogus
refused -p texts
refused other.gzd
[[ ! -e sound.asc ]] || fail "a refused run converted"

# ---- bids ----
echo '{"ScreenSize": [0.4, 0.3], "ScreenDistance": 0.6}' >lab.json
"$tool" bids sound.gzd lossy.gzd --output-dir set --subject 01 --task read --lab lab.json 2>words
grep -q "not told by recording or --lab: Manufacturer" words || fail "what is missing was not named"
grep -q "no dataset_description.json" words || fail "a dataset without a name was not told"
"$tool" bids sound.gzd lossy.gzd --output-dir set --subject 01 --task read --lab lab.json \
  --dataset-name Reading 2>words
python3 "$here/bids_structure.py" set
