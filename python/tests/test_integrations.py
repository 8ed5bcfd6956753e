"""What other packages are handed: Parquet files, MNE, Dask, plots."""

import json
import os

import duckdb
import gzdapi
import numpy as np
import pyarrow.parquet as pq
import pytest
from conftest import synth
from gzdapi.__main__ import main


def test_parquet(tmp_path, trial, capfd):
    other = synth(tmp_path / "other 2.gzd", "--generation 4 --eyes left --duration 3")
    (tmp_path / "bad.gzd").write_bytes(b"bad")
    words = ["parquet", "--trial-start", "TRIALID", "-o", str(tmp_path / "set"), str(trial), str(other)]
    assert main([*words, str(tmp_path / "bad.gzd"), "-j", "2"]) == 1
    assert "bad.gzd: cannot be opened" in capfd.readouterr().err
    rec = gzdapi.read(trial, trial_start="TRIALID")
    for table in ("samples", "events", "messages", "inputs", "blocks", "trials"):
        part = tmp_path / "set" / table / "recording=trial" / "part.parquet"
        rows = pq.read_table(part, partitioning=None)
        assert rows.to_pylist() == getattr(rec, table).to_arrow().to_pylist()
    samples = tmp_path / "set/samples"
    assert pq.read_schema(samples / "recording=trial/part.parquet").field("time").metadata[b"unit"] == b"ms"
    found = duckdb.sql(f"select recording, count(*) from '{samples}/*/*.parquet' group by 1 order by 1")
    assert found.fetchall() == [("other 2", 3000), ("trial", 20000)]
    # A second run leaves what is whole, and writes what was made with other options.
    kept, lost = samples / "recording=trial/part.parquet", samples / "recording=other 2/part.parquet"
    before = kept.stat().st_mtime_ns
    lost.write_bytes(lost.read_bytes()[:-9])
    assert main(words) == 0
    assert kept.stat().st_mtime_ns == before and pq.read_table(lost, partitioning=None).num_rows == 3000
    assert main([*words, "--no-repair", "--tables", "samples"]) == 0
    assert kept.stat().st_mtime_ns != before
    assert not [path for path in samples.rglob(".*")]


def test_names_that_are_no_text(tmp_path):
    path = synth(os.fsdecode(bytes(tmp_path / "n") + b"\xff.gzd"), "--duration 1 --trials 1")
    rec = gzdapi.read(path)
    assert "n\ufffd.gzd" in rec._repr_html_() and rec.name == "n\ufffd"
    assert main(["parquet", path, "-o", str(tmp_path / "set")]) == 0
    assert (tmp_path / "set/events/recording=n%EF%BF%BD/part.parquet").exists()


def test_info(trial, capfd):
    assert main(["info", "--json", str(trial)]) == 0
    assert json.loads(capfd.readouterr().out) == gzdapi.read(trial).info
    assert main(["info", str(trial), "nothere.gzd"]) == 1
    told = capfd.readouterr()
    assert "19,820 samples" in told.out and "nothere.gzd" in told.err


def test_dask(trial, tmp_path):
    pytest.importorskip("distributed")
    import gzdapi.dask
    from distributed import Client

    other = synth(tmp_path / "other.gzd", "--duration 3 --eyes right")
    with pytest.raises(ValueError, match="all"):
        gzdapi.dask.read(trial, groups="all")
    with Client(n_workers=2, threads_per_worker=2, dashboard_address=None, local_directory=tmp_path):
        for table in ("samples", "events", "messages", "trials"):
            frame = gzdapi.dask.read([trial, other], table, groups="href" if table == "events" else ())
            rows = frame.compute()
            assert (rows.dtypes == frame.dtypes).all()
            alone = [gzdapi.read(path, groups="href") for path in (trial, other)]
            assert len(rows) == sum(len(getattr(rec, table)) for rec in alone)
            assert set(rows["recording"]) == {"trial", "other"}


def test_mne(trial):
    pytest.importorskip("mne")
    import gzdapi.mne

    rec, raw = gzdapi.read(trial), gzdapi.mne.read_raw(trial)
    assert raw.info["sfreq"] == 1000 and raw.get_channel_types()[:3] == ["eyegaze", "eyegaze", "pupil"]
    times, values = rec.samples["time"], raw.get_data("pupil_right")[0]
    places = (times - times[0]).astype(int)
    assert np.array_equal(values[places], rec.samples["right_pupil"], equal_nan=True)
    there = np.zeros(len(values), bool)
    there[places[rec.samples["recorded"]]] = True
    told = np.ones(len(values), bool)
    counts = {}
    for mark in raw.annotations:
        counts[mark["description"]] = counts.get(mark["description"], 0) + 1
        if mark["description"] == "BAD_ACQ_SKIP":
            begin = round(mark["onset"] * 1000)
            told[begin : begin + round(mark["duration"] * 1000)] = False
    assert np.array_equal(told, there)
    assert [counts[k] for k in ("fixation", "saccade", "BAD_blink")] == [
        len(table) for table in (rec.fixations, rec.saccades, rec.blinks)]


def test_plots(trial, golden):
    pytest.importorskip("matplotlib").use("Agg")
    rec = gzdapi.read(trial, trial_start="TRIALID")
    figure = rec.plot(trial=3)
    gaze = figure.axes[0]
    assert [line.get_label() for line in gaze.get_lines()][:4] == ["left x", "left y", "right x", "right y"]
    told = rec.table("samples", trial=3)["left_x"]
    drawn = gaze.get_lines()[0].get_ydata()
    assert np.nanmax(drawn) == np.nanmax(told)
    fixations = rec.plot_fixations(trial=3).axes[0]
    assert sum(len(c.get_offsets()) for c in fixations.collections) == len(rec.table("fixations", trial=3))
    assert rec.plot_main_sequence().axes[0].get_xscale() == "log"
    for name in ("zero_tags", "trials", "packed"):  # with little or nothing to show
        odd = gzdapi.read(golden / f"{name}.gzd", failsafe=True)
        for figure in (odd.plot(), odd.plot_fixations(), odd.plot_main_sequence()):
            figure.canvas.draw()
