"""The ASC text of a recording as pandas data frames, the way that is usual: the file is read line by
line, lines that begin with a digit are samples, and pandas parses each kind of line in one go. The
frames have the columns of gzdapi's tables, with their types, as far as the text tells them."""

import io

import numpy as np
import pandas as pd

EYES = ("left", "right")
SAMPLES = ["time", *(f"{eye}_{value}" for eye in EYES for value in ("x", "y", "pupil"))]
KINDS = {
    "EFIX": ("fixation", ["eye", "onset", "offset", "duration", "x", "y", "pupil"]),
    "ESACC": ("saccade", ["eye", "onset", "offset", "duration", "start_x", "start_y", "end_x", "end_y",
                          "amplitude", "peak_velocity"]),
    "EBLINK": ("blink", ["eye", "onset", "offset", "duration"]),
}
ORDER = ["offset", "eye", "onset"]  # of events
DOUBLES = ("time", "onset", "offset", "duration")


def _split(path):
    samples, others = [], []
    with open(path, encoding="utf-8", errors="replace") as text:
        for line in text:
            (samples if line[0].isdigit() else others).append(line)
    return samples, others


def _table(lines, names, **how):
    types = {name: "float64" if name in DOUBLES else "float32" for name in names if name != "eye"}
    return pd.read_csv(io.StringIO("".join(lines)), header=None, names=names, usecols=range(len(names)),
                       dtype=types, na_values=".", **how)


def _number_at(times, starts, ends):
    """The number, from 1, of the span that holds each time; null where none does."""
    found = np.searchsorted(starts, times, side="right")
    outside = (found == 0) | (times > ends[np.maximum(found, 1) - 1])
    return pd.arrays.IntegerArray(found.astype("int32"), outside)


def _blocks(others):
    """Starts and ends; the last may lack its end."""
    starts = [float(line.split()[1]) for line in others if line.startswith("START")]
    ends = [float(line.split()[1]) for line in others if line.startswith("END")]
    return np.array(starts), np.array(ends + [np.inf] * (len(starts) - len(ends)))


def _events(others):
    tables = []
    for word, (kind, names) in KINDS.items():
        lines = [line[len(word):] for line in others if line.startswith(word)]
        table = _table(lines, names, sep=r"\s+")
        table["type"] = kind
        tables.append(table)
    events = pd.concat(tables, ignore_index=True)
    events["eye"] = events["eye"].map({"L": "left", "R": "right"}).astype("category")
    events["type"] = events["type"].astype("category")
    return events.sort_values(ORDER, kind="stable", ignore_index=True)


def _labels(times, events, eye):
    """The kind of the eye's event that holds each time: blinks before saccades before fixations."""
    codes = np.full(len(times), -1, np.int8)
    kinds = [kind for kind, _ in KINDS.values()]
    for code, kind in enumerate(kinds):
        mine = events[(events["eye"] == eye) & (events["type"] == kind)]
        first = np.searchsorted(times, mine["onset"])
        last = np.searchsorted(times, mine["offset"], side="right")
        for begin, end in zip(first, last):
            codes[begin:end] = code
    return pd.Categorical.from_codes(codes, kinds)


def _messages(others):
    lines = [line[4:].rstrip("\n").split(" ", 1) for line in others if line.startswith("MSG")]
    return pd.DataFrame({"time": np.array([float(time) for time, _ in lines]),
                         "text": pd.array([text for _, text in lines], dtype="string")})


def read(path):
    """Samples, events and messages of a binocular recording of gaze."""
    sample_lines, others = _split(path)
    samples = _table(sample_lines, SAMPLES, sep="\t", skipinitialspace=True)
    del sample_lines
    return completed(samples, others)


def read_samples(path):
    """The samples alone, of a text that holds nothing else and no flags: one call of pandas."""
    return pd.read_csv(path, sep="\t", header=None, names=SAMPLES, na_values=".", skipinitialspace=True,
                       dtype={name: "float64" if name == "time" else "float32" for name in SAMPLES})


def read_plainly(path):
    """The samples as scripts often read them."""
    with open(path, encoding="utf-8", errors="replace") as text:
        rows = [line.split()[:7] for line in text if line[0].isdigit()]
    return pd.DataFrame(rows, columns=SAMPLES).apply(pd.to_numeric, errors="coerce")


def completed(samples, others):
    """The three tables, with lost pupils null, and blocks, trials and events told for each row."""
    blocks = _blocks(others)
    events, messages = _events(others), _messages(others)
    for eye in EYES:
        lost = samples[f"{eye}_pupil"] == 0
        samples[f"{eye}_pupil"] = samples[f"{eye}_pupil"].mask(lost)
        samples[f"{eye}_event"] = _labels(samples["time"].to_numpy(), events, eye)
    for table, times in ((samples, "time"), (events, "onset"), (messages, "time")):
        table["block"] = _number_at(table[times].to_numpy(), *blocks)
        table["trial"] = table["block"].copy()  # without marks of trials each block is one
    return samples, events, messages
