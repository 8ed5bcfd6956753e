"""What users do with recordings and tables."""

import logging
import pickle
import threading

import duckdb
import gzdapi
import numpy as np
import pandas as pd
import polars as pl
import pyarrow as pa
import pytest
from conftest import synth


@pytest.fixture(scope="module")
def rec(trial):
    return gzdapi.read(trial, trial_start="TRIALID", trial_end="TRIAL_RESULT")


def as_rows(frame):
    """Rows of a pandas frame with None for every null."""
    return [[None if pd.isna(cell) else cell for cell in row] for row in frame.itertuples(index=False)]


def test_libraries_agree(rec):
    for name in ("samples", "saccades", "messages", "inputs", "blocks", "trials"):
        table = getattr(rec, name)
        arrow = table.to_arrow()
        arrow.validate(full=True)
        rows = [list(row.values()) for row in arrow.to_pylist()]
        assert rows == [list(row) for row in table.to_polars().rows()]
        assert rows == as_rows(table.to_pandas()) == as_rows(table.to_pandas(copy=False))
        taken = table  # found by its name
        assert rows == [list(row) for row in duckdb.sql("select * from taken").fetchall()]


def test_types_and_units(rec):
    schema = rec.samples.to_arrow().schema
    field = schema.field("left_x")
    assert field.metadata[b"unit"] == b"px" == rec.samples.units["left_x"].encode()
    assert b"gaze" in field.metadata[b"description"]
    assert schema.metadata[b"table"] == b"samples"
    assert pa.types.is_dictionary(schema.field("left_event").type)
    frame = rec.samples.to_pandas()
    assert frame.dtypes["trial"] == "Int32" and frame.dtypes["left_event"] == "category"
    assert rec.samples["left_x"].dtype == np.float32 and not rec.samples["left_x"].flags.writeable
    assert isinstance(rec.samples.to_polars()["left_event"].dtype, (pl.Categorical, pl.Enum))
    with pytest.raises(KeyError, match="left_z"):
        rec.samples["left_z"]


def test_no_copy(rec):
    column = rec.samples.to_arrow()["left_x"].chunk(0)
    assert column.buffers()[1].address == rec.samples["left_x"].ctypes.data
    pandas = rec.samples.to_pandas(copy=False)["left_x"].to_numpy()
    assert np.shares_memory(pandas, rec.samples["left_x"])


def test_memory_outlives_the_recording(trial):
    column = gzdapi.read(trial).samples["left_x"]
    arrow = gzdapi.read(trial).samples.to_arrow()
    assert np.array_equal(column, arrow["left_x"].to_numpy(), equal_nan=True)


def test_requested_schema(rec):
    plain = pa.schema([f.with_type(pa.string()) if pa.types.is_dictionary(f.type) else f
                       for f in rec.samples.to_arrow().schema])
    for source in (rec.samples, rec.stream("samples", batch_rows=999)):
        table = pa.RecordBatchReader.from_stream(source, schema=plain).read_all()
        assert table["left_event"].type == pa.string()
        assert table["left_event"].to_pylist() == rec.samples["left_event"].tolist()
        for wrong in (plain.remove(0), plain.set(0, pa.field("bloc", pa.int32()))):
            with pytest.raises(ValueError, match="requested schema"):
                source.__arrow_c_stream__(wrong.__arrow_c_schema__())


def test_streams(rec, trial):
    whole = rec.samples.to_arrow()
    stream = rec.stream("samples", batch_rows=777)
    other = gzdapi.open_stream(trial, "messages", trial_start="TRIALID", batch_rows=2)
    kept, texts = [], []
    for batch, more in zip(stream, [*other] * 10):  # several files and loops at once
        kept.append(batch.to_arrow())
        texts.extend(more["text"])
    assert pa.concat_tables(kept).equals(whole.slice(0, 777 * len(kept)))
    assert texts[: len(rec.messages)] == rec.messages["text"].tolist()
    for rows in (777, 2**64 - 1):
        assert sum(len(batch) for batch in rec.stream("samples", batch_rows=rows)) == len(whole)
    assert pa.RecordBatchReader.from_stream(stream).read_all().equals(pa.concat_tables(
        [batch.to_arrow() for batch in stream]))


def test_filters(rec):
    samples = rec.samples.to_pandas()
    chosen = rec.table("samples", trial=3, eye="left", groups="velocity").to_pandas()
    assert len(chosen) == (samples["trial"] == 3).sum()
    assert "left_velocity_x" in chosen and "right_x" not in chosen
    late = rec.table("fixations", start=110000).to_pandas()
    assert late["onset"].min() >= 110000 and len(late) < len(rec.fixations)


@pytest.mark.parametrize("options, words", [
    ({"groups": "hreff"}, "did you mean 'href'"),
    ({"trial_end": "x"}, "start text"),
    ({"trial_start": "x", "trial_variables": {"n": "("}}, "regular expression"),
])
def test_options_without_sense(trial, options, words):
    with pytest.raises(ValueError, match=words):
        gzdapi.read(trial, **options)


def test_damage(tmp_path, caplog):
    path = synth(tmp_path / "cut.gzd", "--duration 5 --cut 3001")
    with pytest.raises(gzdapi.DamagedRecording, match="cut.gzd: damaged at byte") as caught:
        gzdapi.read(path)
    assert pickle.loads(pickle.dumps(caught.value)).position == caught.value.position
    recording = gzdapi.read(path, failsafe=True)
    assert recording.info["damaged_at"] == caught.value.position
    assert recording.findings[0].kind == "cut" and len(recording.samples) > 4000
    assert [record.levelno for record in caplog.records] == [logging.WARNING]
    path.write_bytes(b"no recording")
    with pytest.raises(gzdapi.Error) as caught:
        gzdapi.read(path)
    assert not isinstance(caught.value, gzdapi.DamagedRecording)
    with pytest.raises(FileNotFoundError):
        gzdapi.read(tmp_path / "nothere.gzd")


def test_threads(golden, trial):
    """Threads that read one recording and others get what one thread gets."""
    recordings = [gzdapi.read(trial), gzdapi.read(golden / "trials.gzd"), gzdapi.read(trial)]
    alone = [[r.samples.to_arrow(), r.events.to_arrow()] for r in recordings]
    wrong = []

    def work(number):
        for _ in range(5):
            r, told = recordings[number % 3], alone[number % 3]
            tables = [r.table("samples").to_arrow(), r.table("events").to_arrow()]
            tables[0] = pa.RecordBatchReader.from_stream(r.stream("samples")).read_all()
            if not all(table.equals(other) for table, other in zip(tables, told)):
                wrong.append(number)

    threads = [threading.Thread(target=work, args=[i]) for i in range(6)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not wrong


def test_copies(rec):
    again = pickle.loads(pickle.dumps(rec))
    assert again.trials.to_arrow().equals(rec.trials.to_arrow())


def test_notebook(rec):
    assert "TRIALID 1" in rec.messages._repr_html_() and "12 columns" in rec.samples._repr_html_()
    page = rec._repr_html_()
    assert all(word in page for word in ("trial.gzd", "samples are missing", "left lost", "19,820"))
