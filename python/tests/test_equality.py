"""Every table is what `gzdtool export` writes, value by value; whatever bytes a file has, reading
them ends with a table or an exception."""

import json
import os
import pathlib
import subprocess

import gzdapi
import numpy as np
import pytest
from conftest import BIN, GOLDEN, synth
from hypothesis import HealthCheck, given, reject, settings
from hypothesis import strategies as st

TABLES = "samples events fixations saccades blinks messages inputs blocks trials".split()
TRIALS = dict(trial_start="TRIAL", trial_end="END", trial_variables={"number": "([0-9]+)"})
OPTIONS = [
    ({}, []),
    (
        dict(repair=False, message_offsets=True, failsafe=True, groups="all", **TRIALS),
        "--no-repair --message-offsets --failsafe --columns all --trial-start TRIAL --trial-end END "
        "--trial-variable number=([0-9]+)".split(),
    ),
]
FLOATS = {"float32": np.float32, "float64": np.float64}


def assert_same_column(field, array, cells, where):
    if field.type in FLOATS:
        kind = FLOATS[field.type]
        told = np.array([np.nan if cell is None else cell for cell in cells], np.float64).astype(kind)
        assert array.dtype == kind and np.array_equal(array, told, equal_nan=True), where
    else:
        assert array.tolist() == cells, where


def assert_same_table(table, lines):
    rows = [json.loads(line) for line in lines]
    assert len(table) == len(rows)
    for field in table.fields:
        cells = [row[field.name] for row in rows]
        assert_same_column(field, table[field.name], cells, (table.name, field.name))
    assert not rows or table.columns == list(rows[0])


def assert_same(path, folder, reading, options):
    """Against `gzdtool export`; both refuse the recording, or tell the same."""
    command = [BIN / "gzdtool/gzdtool", "export", "--format", "jsonl", "--output-dir", folder]
    told = subprocess.run([*command, "--table", ",".join(TABLES), *options, path], capture_output=True)
    if told.returncode != 0:
        with pytest.raises((gzdapi.Error, OSError)):
            gzdapi.read(path, **reading)
        return
    recording = gzdapi.read(path, **reading)
    name = pathlib.Path(path).stem
    for table in TABLES:
        lines = (folder / f"{name}_{table}.jsonl").read_text().splitlines()
        assert_same_table(getattr(recording, table), lines)
    facts = json.loads((folder / f"{name}.json").read_text())
    assert recording.info == {key: facts[key] for key in recording.info}
    assert [finding.text for finding in recording.findings] == [f["text"] for f in facts["findings"]]


@pytest.mark.parametrize("reading, options", OPTIONS)
@pytest.mark.parametrize("name", GOLDEN)
def test_small_recordings(name, reading, options, golden, tmp_path):
    assert_same(golden / f"{name}.gzd", tmp_path, reading, options)


@pytest.mark.skipif("GZD_RECORDINGS" not in os.environ, reason="no folder of further recordings")
@pytest.mark.parametrize("reading, options", OPTIONS)
def test_further_recordings(reading, options, tmp_path):
    for path in pathlib.Path(os.environ["GZD_RECORDINGS"]).rglob("*.gzd"):
        assert_same(path, tmp_path, reading, options)


@st.composite
def made(draw):
    generation = draw(st.sampled_from([1, 2, 3, 4]))
    rates = [250] if generation == 1 else [250, 500, 1000, 2000]
    flags = ["--zip", "--raw-packed", "--long-messages", "--no-resolution", "--no-input", "--no-buttons",
             "--no-samples", "--repeat-times", "--unpaired-blinks", "--stray-samples", "--no-end-tag",
             "--gap 7", "--coords gaze,href,raw", "--cut 4001", "--start-time 2147483000"]
    flags += ["--target"] if generation == 3 else ["--pose", "--ellipse 72"] if generation == 4 else []
    chosen = draw(st.sets(st.sampled_from(flags)))
    eyes = draw(st.sampled_from(["left", "right", "both"]))
    return " ".join([f"--generation {generation} --rate {draw(st.sampled_from(rates))} --eyes {eyes}",
                     f"--duration 2 --trials {draw(st.integers(1, 3))} --seed {draw(st.integers(1, 99))}",
                     *sorted(chosen)])


def synth_or_reject(path, options):
    """Makes a recording; options that do not go together are no example."""
    try:
        return synth(path, options)
    except subprocess.CalledProcessError:
        reject()


ROUNDS = settings(max_examples=int(os.environ.get("GZD_ROUNDS", 12)), deadline=None,
                  suppress_health_check=list(HealthCheck))


@ROUNDS
@given(made(), st.sampled_from(OPTIONS))
def test_made_recordings(tmp_path_factory, made_with, option):
    folder = tmp_path_factory.mktemp("made")
    assert_same(synth_or_reject(folder / "made.gzd", made_with), folder, *option)


@ROUNDS
@given(made(), st.lists(st.tuples(st.floats(0, 1), st.binary(min_size=1, max_size=4)), max_size=4),
       st.floats(0, 1))
def test_hostile_recordings(tmp_path_factory, made_with, faults, end):
    path = synth_or_reject(tmp_path_factory.mktemp("hostile") / "hostile.gzd", made_with)
    data = bytearray(path.read_bytes())
    for place, patch in faults:
        at = int(place * len(data))
        data[at : at + len(patch)] = patch
    path.write_bytes(data[: int(len(data) * (1 - end**3))])
    for failsafe in (False, True):
        try:
            recording = gzdapi.read(path, failsafe=failsafe, groups="all")
            assert all(len(getattr(recording, table)) >= 0 for table in TABLES)
            assert recording.info
        except gzdapi.Error as error:
            assert str(path) in str(error)
