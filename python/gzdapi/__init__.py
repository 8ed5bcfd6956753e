"""Recordings of Ovilo eye trackers as data frames.

    rec = gzdapi.read("trial.gzd", trial_start="TRIALID", trial_end="TRIAL_RESULT")
    rec.fixations.to_pandas()

`read` opens a recording, `open_stream` reads a table of it in batches. What the library warns of goes
to the logger `gzdapi`. Threads may share a recording: reading takes turns, and lets other Python run.
"""

from ._core import library_version
from ._errors import DamagedRecording, Error
from ._recording import Finding, Recording, open_stream, read
from ._table import Field, Stream, Table

__all__ = [
    "DamagedRecording",
    "Error",
    "Field",
    "Finding",
    "Recording",
    "Stream",
    "Table",
    "library_version",
    "open_stream",
    "read",
]
