"""Whether a folder has the structure of the exchange form: names, order and units of columns, keys of
sidecars, regular times."""
import gzip
import json
import re
import sys
from pathlib import Path

STEM = r"(sub-01)/beh/\1_task-read_run-\d+_"
NAME = re.compile(STEM + r"recording-eye[12]_physio(events)?\.(tsv\.gz|json)$")
TASK = re.compile(STEM + r"events\.(tsv|json)$")
description = Path(sys.argv[1]) / "dataset_description.json"
assert json.loads(description.read_text())["Name"] == "Reading" and "BIDSVersion" in description.read_text()
files = [p for p in Path(sys.argv[1]).rglob("*") if p.is_file() and p != description]
task = [p for p in files if TASK.search(str(p))]
assert len(task) == 4 and len(files) == 16, files  # two eyes, then one
for path in task:
    if path.suffix == ".json":
        screen = json.loads(path.read_text())["StimulusPresentation"]
        assert {"ScreenDistance", "ScreenOrigin", "ScreenResolution", "ScreenSize"} <= set(screen), screen
    else:
        head, *rows = [line.split("\t") for line in path.read_text().split("\n")[:-1]]
        assert head == ["onset", "duration", "trial_type"] and float(rows[0][0]) == 0 and float(rows[0][1]) > 0.5
files = [p for p in files if p not in task]
assert all(NAME.search(str(p)) for p in files), files


def rows_of(path):
    return [line.split("\t") for line in gzip.open(path, "rt").read().split("\n")[:-1]]


for path in files:
    side_path = Path(str(path).replace(".tsv.gz", ".json"))
    if path == side_path:
        assert Path(str(path).replace(".json", ".tsv.gz")).exists()
        continue
    side, rows = json.loads(side_path.read_text()), rows_of(path)
    assert rows and all(len(row) == len(side["Columns"]) for row in rows)
    if "physioevents" in path.name:
        assert side["Columns"] == ["onset", "duration", "trial_type", "blink", "message"]
        assert side["OnsetSource"] == "timestamp" and side["onset"]["Units"] == "ms"
        onsets = [float(row[0]) for row in rows]
        assert onsets == sorted(onsets)
        assert {row[2] for row in rows} <= {"fixation", "saccade", "n/a"}
        assert {row[3] for row in rows} <= {"0", "1"}
        assert all(row[1] == "n/a" or 0 <= float(row[1]) < 20 for row in rows)
        assert any(row[4].startswith("TRIALID") for row in rows)
        continue
    assert side["Columns"] == ["timestamp", "x_coordinate", "y_coordinate", "pupil_size"]
    assert side["PhysioType"] == "eyetrack" and side["StartTime"] == 0
    assert side["RecordedEye"] == ("right" if "eye2" in path.name else "left")
    assert side["StimulusPresentation"]["ScreenSize"] == [0.4, 0.3]
    step = 1000 / side["SamplingFrequency"]
    times = [float(row[0]) for row in rows]
    assert all(abs(t - times[0] - i * step) < 1e-6 for i, t in enumerate(times))
    lost = sum(row[1] == "n/a" for row in rows)
    assert 0 < lost < len(rows) / 2, lost
