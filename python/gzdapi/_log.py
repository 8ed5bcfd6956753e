"""Hands what the library says to `logging`."""

import logging
import os

logger = logging.getLogger("gzdapi")

_MOST_LINES = 8


def tell(path: bytes, said: bytes, is_new: bool) -> None:
    """One record for what the library said of a file: a warning, or for debugging when it was told
    before."""
    lines = [line.strip() for line in said.decode(errors="replace").splitlines() if line.strip()]
    more = len(lines) - _MOST_LINES
    text = "; ".join(lines[:_MOST_LINES]) + (f"; and {more} lines more" if more > 0 else "")
    logger.log(logging.WARNING if is_new else logging.DEBUG, "%s: %s", os.fsdecode(path), text)
