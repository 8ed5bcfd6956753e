"""What the Python package costs: `bench/python_bench.py [MINUTES [ROUNDS]]`, run by a Python that has
it, pandas and pyarrow. Beside it in turns, by processor time: the converter, and pandas that reads its
text. Starting the interpreter and importing are left out, and so are the threads that numpy's linear
algebra starts: none of the work needs them, but they spin for a while. BUILD (build/release) has the
programs."""

import json
import os
import pathlib
import resource
import shutil
import statistics
import subprocess
import sys
import tempfile

BUILD = pathlib.Path(os.environ.get("BUILD", "build/release"))
TABLES = ("samples", "events", "messages")
MIB = 1 << 20


# ---- work, each in a process of its own ---------------------------------------------------------


def columns(folder):
    import gzdapi

    yield
    yield gzdapi.read(folder / "hour.gzd").samples


def tables(folder):
    import gzdapi

    yield
    recording = gzdapi.read(folder / "hour.gzd")
    yield [recording.table(name) for name in TABLES]


def frames(folder):
    import gzdapi
    import pandas

    yield
    recording = gzdapi.read(folder / "hour.gzd")
    yield [recording.table(name).to_pandas() for name in TABLES]


def stream(folder):
    import gzdapi

    yield
    yield sum(len(batch) for batch in gzdapi.open_stream(folder / "hour.gzd"))


def parquet(folder):
    import gzdapi.parquet

    yield
    failures = gzdapi.parquet.write_dataset([folder / "hour.gzd"], folder / "set", tables=TABLES)
    assert not failures, failures
    yield


def text_frames(folder):
    import asc_pandas

    yield
    yield asc_pandas.read(folder / "hour.asc")


def plain_frame(folder):
    import asc_pandas

    yield
    yield asc_pandas.read_plainly(folder / "hour.asc")


def two_texts_frames(folder):
    import asc_pandas

    yield
    samples = asc_pandas.read_samples(folder / "samples.asc")
    with open(folder / "events.asc", encoding="utf-8", errors="replace") as text:
        yield asc_pandas.completed(samples, text.readlines())


def text_parquet(folder):
    import asc_pandas

    yield
    for name, frame in zip(TABLES, asc_pandas.read(folder / "hour.asc")):
        frame.to_parquet(folder / f"{name}.parquet")
    yield


# Half of the last digit that the text has.
ROUNDED = {"time": 0, "onset": 0, "offset": 0, "duration": 0, "pupil": 0.5, "peak_velocity": 0.5,
           "amplitude": 0.005}


def same(left, right):
    """Whether a column of the package is that of the text, but for what the text rounds off."""
    import numpy as np

    if (left.isna() != right.isna()).any():
        return False
    if left.dtype.kind != "f":
        return (left.astype("string") == right.astype("string"))[left.notna()].all()
    half_digit = ROUNDED.get(left.name, 0.05)
    near = np.abs(left - right) <= half_digit + 1e-4 * (half_digit > 0)
    return left.dtype == right.dtype and near[left.notna()].all()


def prove(folder):
    """Stops unless both ways to frames give the same."""
    import asc_pandas
    import gzdapi

    yield
    recording = gzdapi.read(folder / "hour.gzd")
    for name, told in zip(TABLES, asc_pandas.read(folder / "hour.asc")):
        table = recording.table(name).to_pandas()
        if name == "events":
            table = table.sort_values(asc_pandas.ORDER, kind="stable", ignore_index=True)
            table["peak_velocity"] = table["peak_velocity"].where(table["type"] == "saccade")
        assert len(table) == len(told), name
        wrong = [column for column in told if not same(table[column], told[column])]
        assert not wrong, (name, wrong)
    yield


def run_task(name, folder):
    """What the work took, as JSON."""

    def used():
        usage = resource.getrusage(resource.RUSAGE_SELF)
        return usage.ru_utime + usage.ru_stime

    steps = globals()[name](pathlib.Path(folder))
    next(steps)
    before = used()
    kept = next(steps)
    seconds = used() - before
    peak = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024
    held = held_by(kept) / MIB if name == "columns" else 0
    print(json.dumps({"seconds": seconds, "peak": peak, "held": held}))


def held_by(table):
    """Bytes of the columns of a table."""
    arrays = [table[field.name] for field in table.fields if field.type != "enum"]
    enums = sum(field.type == "enum" for field in table.fields)
    return sum(array.nbytes for array in arrays) + enums * 2 * len(table) + sum(
        len(table) for array in arrays if hasattr(array, "mask"))


# ---- the bench ----------------------------------------------------------------------------------


class Bench:
    def __init__(self, folder, minutes):
        self.folder = pathlib.Path(folder)
        self.recording = self.folder / "hour.gzd"
        subprocess.run([BUILD / "gzdsynth/gzdsynth", "--duration", str(60 * minutes), "--trials", "40",
                        self.recording], check=True, capture_output=True)
        (self.folder / "null.asc").symlink_to("/dev/null")
        self.convert("samples.asc", "-s", "-nflags")
        self.convert("events.asc", "-e")
        self.convert("hour.asc")
        self.task("prove")

    def convert(self, output, *options):
        """Processor seconds of a conversion, from the start of its process."""
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        subprocess.run([BUILD / "gzdconv/gzdconv", "-y", "-q", *options, self.recording,
                        self.folder / output], check=True, capture_output=True)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime

    def task(self, name):
        shutil.rmtree(self.folder / "set", ignore_errors=True)
        told = subprocess.run([sys.executable, __file__, "--task", name, self.folder], check=True,
                              stdout=subprocess.PIPE, env={**os.environ, "PYTHONWARNINGS": "ignore",
                                                              "OPENBLAS_NUM_THREADS": "1"})
        return json.loads(told.stdout)

    def seconds(self, name):
        return self.task(name)["seconds"]

    def round(self):
        """What each kind of work took, once."""
        took = {name: self.seconds(name) for name in
                ("columns", "tables", "frames", "parquet", "text_frames", "plain_frame", "two_texts_frames",
                 "text_parquet")}
        took["null"] = self.convert("null.asc")
        took["text"] = self.convert("hour.asc")
        took["text_parquet"] += took["text"]
        return took


def ratio(rounds, above, below):
    return statistics.median(took[above] / took[below] for took in rounds)


def row(work, must, measured, unit, reached):
    print(f"| {work} | {must:g} {unit} | {measured:.4g} {unit} | {'reached' if reached else 'MISSED'} |")


def main(minutes=60, rounds=5):
    with tempfile.TemporaryDirectory(prefix="gzd-bench-") as folder:
        bench = Bench(folder, minutes)
        bench.round()  # to warm up
        took = [bench.round() for _ in range(rounds)]
        for name in took[0]:
            print(f"{name}: {statistics.median(one[name] for one in took):.2f} s")
        print("\n| work | must | measured | |\n|---|---|---|---|")
        value = ratio(took, "columns", "null")
        row("samples into columns, against the conversion to /dev/null", 1.6, value, "x", value <= 1.6)
        value = ratio(took, "text_frames", "tables")
        row("pandas reading the text, against reading the same tables", 20, value, "x", value >= 20)
        value = ratio(took, "text_parquet", "parquet")
        row("text, pandas and to_parquet, against writing Parquet", 5, value, "x", value >= 5)
        memory = bench.task("columns")
        beyond = memory["peak"] - memory["held"]
        row("peak memory of samples beyond their columns", 64, beyond, "MiB", beyond <= 64)
        peak = bench.task("stream")["peak"]
        row("peak memory of a stream of samples", 128, peak, "MiB", peak <= 128)
        print(f"\nBeside: pandas reading the text, against data frames of pandas from the package: "
              f"{ratio(took, 'text_frames', 'frames'):.1f} x; pandas reading two texts, of samples alone "
              f"and of events, against tables: {ratio(took, 'two_texts_frames', 'tables'):.1f} x; samples by "
              f"split() of each line, against columns: {ratio(took, 'plain_frame', 'columns'):.1f} x")


if __name__ == "__main__":
    if sys.argv[1:2] == ["--task"]:
        run_task(*sys.argv[2:4])
    else:
        main(*map(int, sys.argv[1:3]))
