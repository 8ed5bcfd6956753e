"""Recordings for MNE-Python. Needs mne."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any

import mne
import numpy as np

from ._recording import Path, Recording, read

if TYPE_CHECKING:
    from collections.abc import Iterator

_MOST_SAMPLES = 200_000_000  # of a gap-free row of samples

# Columns of `samples`, and what MNE calls such a channel.
_CHANNELS = {
    f"{eye}_{column}": (name.format(eye), (kind, unit, eye, *axis))
    for eye in ("left", "right")
    for column, name, kind, unit, axis in (
        ("x", "xpos_{}", "eyegaze", "px", ("x",)),
        ("y", "ypos_{}", "eyegaze", "px", ("y",)),
        ("pupil", "pupil_{}", "pupil", "au", ()),
    )
}


def _rate_of(recording: Recording) -> float:
    rates = np.unique(recording.blocks["rate"])
    if len(rates) != 1:
        told = ", ".join(f"{rate:g} Hz" for rate in rates) or "none"
        raise ValueError(f"{recording.path}: one sampling rate is needed, the blocks have {told}")
    return float(rates[0])


def _eyes_of(recording: Recording) -> set[str]:
    named = set(recording.blocks["eyes"].tolist()) - {None}
    return {"left", "right"} if "both" in named else named


def _places(times: np.ndarray[Any, Any], rate: float, path: str) -> np.ndarray[Any, Any]:
    """The place of each sample in a row of samples without gaps."""
    places: np.ndarray[Any, Any] = np.rint((times - times.min()) * rate / 1000).astype(np.int64)
    if places.max() >= _MOST_SAMPLES:
        raise ValueError(f"{path}: its times span {places.max():,} samples")
    return places


def _holes(recorded: np.ndarray[Any, Any]) -> Iterator[tuple[int, int]]:
    """Begin and end of each run of samples that were not recorded."""
    edges = np.flatnonzero(np.diff(np.concatenate([[False], ~recorded, [False]]).astype(np.int8)))
    yield from zip(edges[::2].tolist(), edges[1::2].tolist())


def _event_annotations(
    recording: Recording, first: float, names: list[str]
) -> list[tuple[Any, ...]]:
    """Onset and duration in seconds, what, and the channels of the eye."""
    events = recording.events
    marks = []
    for onset, duration, kind, eye in zip(
        events["onset"], events["duration"], events["type"], events["eye"]
    ):
        channels = tuple(name for name in names if name.endswith(eye))
        what = "BAD_blink" if kind == "blink" else kind
        marks.append(((onset - first) / 1000, max(0.0, duration / 1000), what, channels))
    return marks


def _annotations(
    recording: Recording, first: float, rate: float, there: Any, names: list[str]
) -> mne.Annotations:
    marks = _event_annotations(recording, first, names)
    marks += [(b / rate, (e - b) / rate, "BAD_ACQ_SKIP", ()) for b, e in _holes(there)]
    messages = recording.messages
    marks += [
        ((time - first) / 1000, 0.0, text, ())
        for time, text in zip(messages["time"], messages["text"])
        if text is not None
    ]
    marks = [mark for mark in marks if -0.5 / rate <= mark[0] <= len(there) / rate]
    onsets, durations, texts, channels = zip(*marks) if marks else ((), (), (), ())
    return mne.Annotations(onsets, durations, texts, ch_names=list(channels))


def read_raw(path: Path, **options: Any) -> mne.io.RawArray:
    """A recording as `mne.io.RawArray`, with the options of `gzdapi.read`.

    Channels are gaze (px) and pupil of each eye, from the first sample to the last without a gap;
    what was not recorded is NaN and annotated BAD_ACQ_SKIP. Fixations, saccades and blinks
    (`BAD_blink`) are annotations of the channels of their eye, messages of all; those outside the
    samples are left out. Raises ValueError where blocks have different rates.
    """
    recording = read(path, **options)
    samples = recording.samples
    if len(samples) == 0:
        raise ValueError(f"{recording.path}: no samples")
    rate = _rate_of(recording)
    places = _places(samples["time"], rate, recording.path)
    there = np.zeros(places.max() + 1, dtype=bool)
    there[places[np.ma.filled(samples["recorded"], False)]] = True
    eyes = _eyes_of(recording)
    columns = [column for column in _CHANNELS if column.partition("_")[0] in eyes]
    data = np.full((len(columns), len(there)), np.nan)
    for row, column in zip(data, columns):
        row[places] = samples[column]
    names = [_CHANNELS[column][0] for column in columns]
    info = mne.create_info(names, rate, [_CHANNELS[column][1][0] for column in columns])
    raw = mne.io.RawArray(data, info, verbose="error")
    mapping = {_CHANNELS[column][0]: _CHANNELS[column][1] for column in columns}
    mne.preprocessing.eyetracking.set_channel_types_eyetrack(raw, mapping)
    raw.set_annotations(_annotations(recording, samples["time"].min(), rate, there, names))
    return raw
