"""Plots that people expect of recordings. Needs matplotlib."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, Optional

import matplotlib.pyplot as plt
import numpy as np

if TYPE_CHECKING:
    from matplotlib.axes import Axes
    from matplotlib.figure import Figure

    from ._recording import Recording

_COLOURS = {"left": ("tab:blue", "tab:cyan"), "right": ("tab:red", "tab:orange")}
_MOST_POINTS = 20_000  # of a line; more cannot be seen
_MOST_LABELS = 40
_LABEL_DISTANCE = 1 / 60  # of the width, at least
_LONGEST_LABEL = 24


def _eyes_of(table: Any) -> list[str]:
    return [eye for eye in _COLOURS if not np.all(np.isnan(table[f"{eye}_pupil"]))]


def _spans(flags: Any) -> list[tuple[int, int]]:
    """First and last row of each run of true."""
    edges = np.flatnonzero(np.diff(np.concatenate([[0], np.asarray(flags, np.int8), [0]])))
    return [(int(begin), int(end) - 1) for begin, end in zip(edges[::2], edges[1::2])]


def _drawn(values: Any) -> slice:
    return slice(None, None, max(1, -(-len(values) // _MOST_POINTS)))


def _with_breaks(seconds: Any, values: Any) -> tuple[Any, Any]:
    """Points of a line, broken where the recording pauses."""
    step = _drawn(values)
    seconds, values = seconds[step], values[step].astype(float)
    if len(seconds) > 2:
        pauses = np.flatnonzero(np.diff(seconds) > 4 * np.median(np.diff(seconds))) + 1
        seconds, values = np.insert(seconds, pauses, np.nan), np.insert(values, pauses, np.nan)
    return seconds, values


def _draw_traces(gaze: Axes, pupil: Axes, samples: Any, seconds: Any) -> None:
    for eye in _eyes_of(samples):
        for axis, colour in zip("xy", _COLOURS[eye]):
            line = _with_breaks(seconds, samples[f"{eye}_{axis}"])
            gaze.plot(*line, color=colour, lw=0.8, label=f"{eye} {axis}")
        line = _with_breaks(seconds, samples[f"{eye}_pupil"])
        pupil.plot(*line, color=_COLOURS[eye][0], lw=0.8, label=eye)


def _shade(axes: Any, samples: Any, seconds: Any) -> None:
    blinking = (samples["left_event"] == "blink") | (samples["right_event"] == "blink")
    missing = ~np.ma.filled(samples["recorded"], False)
    for label, flags, colour in (("blink", blinking, "0.75"), ("gap", missing, "tab:pink")):
        for number, (begin, end) in enumerate(_spans(flags)):
            for axis in axes:
                axis.axvspan(
                    seconds[begin],
                    seconds[end],
                    color=colour,
                    alpha=0.5,
                    lw=0,
                    label=label if number == 0 and axis is axes[0] else None,
                )


def _mark_messages(axis: Axes, messages: Any, origin: float) -> None:
    seconds = (messages["time"] - origin) / 1000
    place = axis.get_xaxis_transform()
    ticks = np.ones(len(seconds))
    axis.plot(seconds, ticks, "|", color="k", ms=8, clip_on=False, transform=place)
    last = -np.inf
    for second, text in zip(seconds, messages["text"]):
        if second - last < _LABEL_DISTANCE * np.ptp(seconds):
            continue
        last = second
        axis.annotate(
            (text or "")[:_LONGEST_LABEL],
            (second, 1),
            (0, 6),
            xycoords=place,
            textcoords="offset points",
            rotation=45,
            fontsize=7,
        )


def plot(
    recording: Recording,
    *,
    trial: Optional[int] = None,
    start: float = float("-inf"),
    end: float = float("inf"),
) -> Figure:
    """Gaze over time with blinks and gaps shaded and messages as ticks, pupil sizes below. Of one
    trial, or from `start` to `end` (ms)."""
    samples = recording.table("samples", trial=trial, start=start, end=end)
    messages = recording.table("messages", trial=trial, start=start, end=end)
    figure, (gaze, pupil) = plt.subplots(
        2, 1, sharex=True, figsize=(11, 6), height_ratios=(2, 1), layout="constrained"
    )
    times = samples["time"] if len(samples) else messages["time"]
    origin = float(times[0]) if len(times) else 0.0
    seconds = (samples["time"] - origin) / 1000
    _draw_traces(gaze, pupil, samples, seconds)
    _shade((gaze, pupil), samples, seconds)
    _mark_messages(gaze, messages, origin)
    gaze.set_ylabel("gaze (px)")
    pupil.set_ylabel("pupil (tracker units)")
    pupil.set_xlabel(f"time since {origin:,.0f} ms (s)")
    if gaze.get_legend_handles_labels()[0]:
        gaze.legend(loc="upper left", bbox_to_anchor=(1, 1), fontsize=8)
    return figure


def _set_display(axis: Axes, recording: Recording) -> None:
    display = recording.info["display"]
    if display:
        left, top, right, bottom = display
        axis.set_xlim(left, right)
        axis.set_ylim(bottom, top)
    else:
        axis.invert_yaxis()
    axis.set_aspect("equal")
    axis.set_xlabel("x (px)")
    axis.set_ylabel("y (px)")


def plot_fixations(recording: Recording, trial: Optional[int] = None) -> Figure:
    """Fixations on the display in their order, as large as they are long."""
    fixations = recording.table("fixations", trial=trial)
    figure, axis = plt.subplots(figsize=(8, 6), layout="constrained")
    for eye, (colour, _) in _COLOURS.items():
        chosen = fixations["eye"] == eye
        x, y = fixations["x"][chosen], fixations["y"][chosen]
        if not len(x):
            continue
        axis.plot(x, y, color=colour, lw=0.6, alpha=0.6)
        axis.scatter(x, y, s=fixations["duration"][chosen], color=colour, alpha=0.35, label=eye)
        is_first = len(axis.collections) == 1  # both eyes have the same numbers
        for number, place in enumerate(zip(x, y), 1):
            if is_first and len(x) <= _MOST_LABELS and np.all(np.isfinite(place)):
                axis.annotate(
                    str(number), place, fontsize=7, ha="center", va="center", clip_on=True
                )
    _set_display(axis, recording)
    axis.set_title("fixations" if trial is None else f"fixations of trial {trial}")
    if axis.get_legend_handles_labels()[0]:
        axis.legend()
    return figure


def plot_main_sequence(recording: Recording) -> Figure:
    """Peak velocity of saccades over their amplitude. Those that hold a blink are left out."""
    saccades = recording.saccades
    figure, axis = plt.subplots(figsize=(7, 5), layout="constrained")
    for eye, (colour, _) in _COLOURS.items():
        chosen = (saccades["eye"] == eye) & ~np.ma.filled(saccades["has_blink"], False)
        axis.loglog(
            saccades["amplitude"][chosen],
            saccades["peak_velocity"][chosen],
            ".",
            color=colour,
            alpha=0.6,
            label=eye,
        )
    axis.set_xlabel("amplitude (deg)")
    axis.set_ylabel("peak velocity (deg/s)")
    axis.set_title("main sequence")
    axis.legend()
    return figure
