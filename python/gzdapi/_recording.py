"""Recordings: opening them, their facts and their tables."""

from __future__ import annotations

import os
from collections.abc import Iterable, Iterator, Mapping
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any, Optional, Union

from . import _core
from ._table import Stream, Table

if TYPE_CHECKING:
    import matplotlib.figure

Path = Union[str, "os.PathLike[str]"]
Groups = Union[str, Iterable[str]]

_BATCH_ROWS = 1 << 16


@dataclass(frozen=True)
class Finding:
    """Something that reading, checks or repairs found. Times are ms of the tracker's clock, `place` a
    byte of the record stream; `text` says it all in a sentence."""

    kind: str
    eye: Optional[str]
    start: Optional[float]
    end: Optional[float]
    count: int
    detail: int
    place: Optional[int]
    merged: int
    text: str


def as_text(path: str) -> str:
    """A path as text that every library takes: bytes that are no UTF-8 become U+FFFD."""
    return os.fsencode(path).decode("utf-8", "replace")


def name_of(path: str) -> str:
    """The name of a recording: its file's name without folder and `.gzd`, as text."""
    name = as_text(os.path.basename(path))
    return name[: -len(".gzd")] if name.endswith(".gzd") and name != ".gzd" else name


def _file_name(path: Path) -> bytes:
    name = os.fsencode(path)
    if b"\0" in name:
        raise ValueError("embedded null byte")
    return name


def group_names(groups: Groups) -> list[str]:
    """Groups of columns as a list. Raises ValueError for one that no table has."""
    names = (
        [name for name in groups.split(",") if name] if isinstance(groups, str) else list(groups)
    )
    known = {"all"}.union(*(_core.groups_of(table) for table in _core.table_names()))
    for name in names:
        if name not in known:
            _request("samples", [name])  # tells which is meant
    return names


def _request(
    table: str,
    groups: list[str],
    eye: Optional[str] = None,
    trial: Optional[int] = None,
    start: float = float("-inf"),
    end: float = float("inf"),
    batch_rows: int = _BATCH_ROWS,
) -> _core.Request:
    return _core.Request(
        table=table,
        groups=groups,
        eye=eye,
        trial=trial,
        start=start,
        end=end,
        batch_rows=batch_rows,
    )


class Recording:
    """An open recording. Made by `gzdapi.read`, which tells what the options are.

    Each table is read when it is asked for first, and kept. Can be pickled: the copy opens the file
    again.
    """

    def __init__(self, path: Path, options: dict[str, Any], groups: Groups) -> None:
        self.path: str = os.fsdecode(path)
        self._options = options
        self._groups = group_names(groups)
        self._file = _core.OpenFile(_file_name(path), self._core_options())
        self._tables: dict[str, Table] = {}
        self._facts: Optional[dict[str, Any]] = None

    def _core_options(self) -> _core.Options:
        variables = list(dict(self._options["trial_variables"] or {}).items())
        return _core.Options(**{**self._options, "trial_variables": variables})

    def __reduce__(self) -> tuple[Any, ...]:
        return Recording, (self.path, self._options, self._groups)

    @property
    def name(self) -> str:
        """The name of the file without folder and `.gzd`."""
        return name_of(self.path)

    @property
    def info(self) -> dict[str, Any]:
        """Facts: what `gzdtool info --json` tells, with its keys."""
        if self._facts is None:
            self._facts = {**self._file.facts(), "file": as_text(self.path)}
        return self._facts

    @property
    def findings(self) -> list[Finding]:
        """What the library found wrong with the recording, and mended."""
        return [Finding(**finding) for finding in self._file.findings()]

    # ---- tables --------------------------------------------------------------------------------

    def _groups_for(self, table: str, groups: Optional[Groups]) -> list[str]:
        if groups is not None:
            return group_names(groups)
        known = _core.groups_of(table)
        return [name for name in self._groups if name in known or (name == "all" and known)]

    def table(
        self,
        name: str,
        *,
        groups: Optional[Groups] = None,
        eye: Optional[str] = None,
        trial: Optional[int] = None,
        start: float = float("-inf"),
        end: float = float("inf"),
    ) -> Table:
        """Some rows of a table: of one eye ("left", "right"), of one trial, or whose time, onset or
        start lies from `start` to `end` (ms, ends included). Not kept. `groups` is as in `read`."""
        request = _request(name, self._groups_for(name, groups), eye, trial, start, end)
        return Table(name, self._file.read(request))

    def stream(
        self,
        name: str,
        *,
        groups: Optional[Groups] = None,
        eye: Optional[str] = None,
        trial: Optional[int] = None,
        start: float = float("-inf"),
        end: float = float("inf"),
        batch_rows: int = _BATCH_ROWS,
    ) -> Stream:
        """As `table`, but read in batches of at most `batch_rows` rows."""
        request = _request(name, self._groups_for(name, groups), eye, trial, start, end, batch_rows)
        return Stream(_file_name(self.path), name, self._core_options(), request)

    def _pieces(self, name: str, rows: int) -> Iterator[Table]:
        """The table in pieces of at most `rows` rows. Unlike `stream` it does not open the file anew:
        reading anything else of this recording ends it."""
        stream = self._file.stream(_request(name, self._groups_for(name, None), batch_rows=rows))
        while (frame := stream.next()) is not None:
            yield Table(name, frame)

    def _kept(self, name: str) -> Table:
        if name not in self._tables:
            self._tables[name] = self.table(name)
        return self._tables[name]

    @property
    def samples(self) -> Table:
        """One row a sample."""
        return self._kept("samples")

    @property
    def events(self) -> Table:
        """One row an eye event that ended: fixations, saccades and blinks."""
        return self._kept("events")

    @property
    def fixations(self) -> Table:
        """The fixations of `events`."""
        return self._kept("fixations")

    @property
    def saccades(self) -> Table:
        """The saccades of `events`."""
        return self._kept("saccades")

    @property
    def blinks(self) -> Table:
        """The blinks of `events`."""
        return self._kept("blinks")

    @property
    def messages(self) -> Table:
        """One row a message."""
        return self._kept("messages")

    @property
    def inputs(self) -> Table:
        """One row a change of a button or of the input port."""
        return self._kept("inputs")

    @property
    def blocks(self) -> Table:
        """One row a recording block."""
        return self._kept("blocks")

    @property
    def trials(self) -> Table:
        """One row a trial; without `trial_start` each block is one."""
        return self._kept("trials")

    # ---- what it looks like --------------------------------------------------------------------

    def plot(self, **choice: Any) -> matplotlib.figure.Figure:
        """Gaze, pupils, blinks, gaps and messages over time: `gzdapi.plots.plot`."""
        from . import plots

        return plots.plot(self, **choice)

    def plot_fixations(self, trial: Optional[int] = None) -> matplotlib.figure.Figure:
        """Fixations on the display: `gzdapi.plots.plot_fixations`."""
        from . import plots

        return plots.plot_fixations(self, trial)

    def plot_main_sequence(self) -> matplotlib.figure.Figure:
        """Peak velocity of saccades over amplitude: `gzdapi.plots.plot_main_sequence`."""
        from . import plots

        return plots.plot_main_sequence(self)

    def __repr__(self) -> str:
        return f"<gzdapi.Recording {self.path!r}>"

    def _repr_html_(self) -> str:
        from ._html import recording_html

        return recording_html(self)


def read(
    path: Path,
    *,
    trial_start: Optional[str] = None,
    trial_end: Optional[str] = None,
    trial_variables: Optional[Mapping[str, str]] = None,
    groups: Groups = (),
    failsafe: bool = False,
    repair: bool = True,
    message_log: bool = False,
    message_offsets: bool = False,
) -> Recording:
    """Opens a recording.

    trial_start, trial_end: a message that contains the text opens or ends a trial.
    trial_variables: columns of `trials` by name: a regular expression (POSIX extended, one group),
        looked for in the messages of the trial.
    groups: columns beside those that are always there, as a list or with commas between: "href",
        "raw", "velocity", "fast_velocity", "resolution", "input", "buttons", "status", "target",
        "head", "ellipse", or "all" for those that were recorded.
    failsafe: reads a damaged recording up to the damage; `findings` tells.
    repair: fills gaps, pairs blinks, mends fixations.
    message_log: merges tq_messages.log, the experiment's log in the recording's folder.
    message_offsets: a number at the start of a message is an offset of its time.

    Raises DamagedRecording for a damaged file, Error for any other that is no recording, OSError when
    the system cannot read it, ValueError for options without sense.
    """
    options = {
        "repair": repair,
        "failsafe": failsafe,
        "message_offsets": message_offsets,
        "message_log": message_log,
        "trial_start": trial_start,
        "trial_end": trial_end,
        "trial_variables": trial_variables,
    }
    return Recording(path, options, groups)


def open_stream(path: Path, table: str = "samples", **options: Any) -> Stream:
    """A table of a recording in batches, for recordings larger than memory. Takes the options of
    `read`, and those of `Recording.stream`."""
    choice = {
        key: options.pop(key)
        for key in ("eye", "trial", "start", "end", "batch_rows")
        if key in options
    }
    recording = read(path, **options)
    request = _request(table, recording._groups_for(table, None), **choice)
    first = recording._file.stream(request)
    return Stream(_file_name(path), table, recording._core_options(), request, first)
