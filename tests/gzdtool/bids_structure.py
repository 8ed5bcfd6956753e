"""Whether a folder has the structure of the exchange form: names, order and units of columns, keys of
sidecars, regular times."""
import gzip
import json
import re
import sys
from pathlib import Path

NAME = re.compile(r"(sub-01)/beh/\1_task-read_run-\d+_recording-eye[12]_physio(events)?\.(tsv\.gz|json)$")
description = Path(sys.argv[1]) / "dataset_description.json"
assert json.loads(description.read_text())["Name"] == "Reading" and "BIDSVersion" in description.read_text()
files = [p for p in Path(sys.argv[1]).rglob("*") if p.is_file() and p != description]
assert len(files) == 12, files  # two eyes, then one
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
