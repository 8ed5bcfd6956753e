#!/usr/bin/env bash
# report_test.sh GZDTOOL GZDSYNTH: reports hold what the other verbs tell, and the index tells of all.
set -euo pipefail
tool=$1 synth=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
fail() { echo "FAILED: $*" >&2 && exit 1; }

"$synth" --duration 30 --gap 30 lossy.gzd
head -c 20 lossy.gzd >'<b>&.gzd'
echo '<p>@RECORDING@</p>' >page.html

"$tool" report lossy.gzd -o report.html --page page.html
sed 's/<p>\(.*\)<\/p>/\1/' report.html | base64 -d | gunzip >data.json
"$tool" info --json lossy.gzd >info.json
"$tool" check --json lossy.gzd >check.json || true
for table in fixations saccades blinks messages trials; do "$tool" $table lossy.gzd >$table.tsv 2>err; done
"$tool" samples lossy.gzd 2>err >samples.tsv
python3 - <<'P' || fail "the report tells something else"
import json, statistics
data, info, check = (json.load(open(name + ".json")) for name in ("data", "info", "check"))
assert {key: data["facts"][key] for key in info} == info
assert {key: check[key] for key in data["check"]} == data["check"]
for name in ("fixations", "saccades", "blinks", "messages", "trials"):
    assert data["tables"][name] == open(name + ".tsv").read(), name
rows = [line.rstrip("\n").split("\t") for line in open("samples.tsv")]
column = {name: [row[i] for row in rows[1:]] for i, name in enumerate(rows[0])}
recorded = [value == "true" for value in column["recorded"]]
summary, trace = data["summary"], data["trace"]
assert sum(summary["loss"]["recorded"]) == sum(recorded)
assert sum(summary["loss"]["filled"]) == len(recorded) - sum(recorded) > 0
for curve, name in ((0, "left_x"), (2, "left_pupil"), (4, "right_y")):
    values = [float(value) for value in column[name] if value != "n/a"]
    low = [value for value in trace["low"][curve] if value is not None]
    high = [value for value in trace["high"][curve] if value is not None]
    assert (min(low), max(high)) == (min(values), max(values)), name
    assert 0 < statistics.mean(high) - statistics.mean(low) < 60, name
lost = [value == "n/a" for value in column["left_x"]]
assert sum(summary["loss"]["left"]) == sum(a and b for a, b in zip(lost, recorded))
P

status=0
"$tool" report lossy.gzd '<b>&.gzd' --output-dir all --page page.html 2>err || status=$?
[[ $status -eq 1 && -e all/lossy.html && $(find all -type f | wc -l) -eq 2 ]] || fail "files of a folder"
grep -q 'href="./lossy.html">lossy</a></th><td>lossy' all/index.html || fail "the index has no link"
grep -q '&#60;b&#62;&#38;</th><td>unreadable' all/index.html || fail "a name is markup"
status=0
"$tool" report lossy.gzd -o x.html --page info.json 2>err || status=$?
[[ $status -eq 2 && ! -e x.html ]] || fail "what is no page was taken for one"
