"""What goes wrong with recordings."""

from __future__ import annotations

import os
from typing import NoReturn, Optional


class Error(Exception):
    """A recording that cannot be read. `path` is the file's name."""

    def __init__(self, message: str, path: str = "") -> None:
        super().__init__(message, path)
        self.path = path

    def __str__(self) -> str:
        return str(self.args[0])


class DamagedRecording(Error):
    """A recording whose records are cut short or damaged.

    `position` is the byte of the record stream where the damage begins. `failsafe=True` reads what
    stands before it.
    """

    def __init__(self, message: str, path: str = "", position: int = 0) -> None:
        super().__init__(message, path)
        self.args = (message, path, position)
        self.position = position


def raise_failure(
    file: bytes, what: str, reason: int, position: Optional[int], said: bytes
) -> NoReturn:
    """Raises the exception for a failure that the extension met."""
    path = os.fsdecode(file)
    if reason:
        raise OSError(reason, os.strerror(reason), path)
    lines = [line.strip() for line in said.decode(errors="replace").splitlines()]
    why = "; ".join(dict.fromkeys(line for line in lines if line))
    told = f" ({why})" if why else ""
    if position is None:
        raise Error(f"{path}: {what}{told}", path)
    advice = "failsafe=True reads what stands before"
    raise DamagedRecording(f"{path}: damaged at byte {position:,}{told}; {advice}", path, position)
