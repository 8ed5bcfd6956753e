"""What gzdconv says of a recording, and what that means.

Lines of standard error begin with "gzdconv: NAME: "; they come back without it, marked.
"""

import os
import re

MARK = "! "  # of a line of standard error that names the recording
LAST_LINES = 4  # tell why a recording failed
KINDS = 8  # of warnings in a message

ORDINARY = re.compile(
    r"GZDCONV[ :]|processing file |[|=]|Processed \[|Converted successfully|Command line option"
)
LOSS = re.compile(
    r"Missing (\d+|sample)|missing sample|WARNING: GZD FILE MAY BE CORRUPTED"
    r"|WARNING: The GZD file is larger|Could not read \d+ elements|Sample at time \d+ encountered"
)
HARMLESS = re.compile(r"messages with line breaks")


def said(text, recording):
    """The lines of a text that tell something of the recording, in their order."""
    own = os.fsencode(f"gzdconv: {recording}: ")
    lines = (line.rpartition(b"\r")[2] for line in text.split(b"\n"))
    told = (_readable(line, own) for line in lines)
    return [line for line in told if line and not ORDINARY.match(line)]


def _readable(line, own):
    mark = MARK if line.startswith(own) else ""
    text = line[len(own) if mark else 0 :].decode(errors="replace")
    return mark + " ".join(text.split())


def tells_of_loss(line):
    """Whether something of the recording is not in the text."""
    if line.startswith(MARK):
        return not HARMLESS.match(line, len(MARK))
    return LOSS.match(line) is not None


def warnings(lines):
    """One text: the first line of each kind, and how many more there are; standard error first."""
    kinds = {}
    for line in lines:
        kinds.setdefault(re.sub(r"\d+(\.\d+)?", "#", line), []).append(line)
    parts = sorted(kinds.values(), key=lambda alike: not alike[0].startswith(MARK))
    told = [
        _plain(alike[0]) + (f" (and {len(alike) - 1} more)" if len(alike) > 1 else "")
        for alike in parts[:KINDS]
    ]
    return "; ".join(told + ["..."] * (len(parts) > KINDS))


def last(lines):
    return "; ".join(map(_plain, lines[-LAST_LINES:]))


def _plain(line):
    return line[len(MARK) :] if line.startswith(MARK) else line
