"""Converts one chunk: convert.py PLAN CHUNK RESULT

The chunk is one call of gzdconv into a folder of its own; only whole texts are moved to their
places. What the call left out is converted again alone: so its message is its own, and a call that
crashed takes no other recording along.
"""

import os
import shlex
import shutil
import subprocess
import sys
import tempfile
import time

from recordings import Recording
from state import CONVERTED, FAILED, STOPPED, UNREADABLE, load, save, stamp

MESSAGE_LINES = 4  # the last ones tell why
MESSAGE_ROOM = 8000


def convert_chunk(plan, members, stage):
    """One result row for each recording, in their order."""
    stamps = [stamp(one.path) for one in members]
    shutil.rmtree(stage, ignore_errors=True)
    os.makedirs(stage)
    status = _run(plan, stage, members)
    if status not in (0, 1):  # it crashed: nobody knows which texts are whole
        shutil.rmtree(stage)
        os.makedirs(stage)
    rows = [
        _result(plan, one, before, *_finish(plan, stage, number, one, before))
        for number, (one, before) in enumerate(zip(members, stamps))
    ]
    shutil.rmtree(stage)
    return rows


def _run(plan, stage, members, first=0, told=None):
    """Status of gzdconv; each recording's text is named by its number, whatever its folder."""
    command = [plan["gzdconv"], "-y", "-q", "-p", stage, *shlex.split(plan["options"])]
    for number, one in enumerate(members, first):
        command += [one.path, str(number)]
    return subprocess.call(
        command, stdin=subprocess.DEVNULL, stdout=told, stderr=subprocess.STDOUT
    )


def _finish(plan, stage, number, recording, before):
    """Status and message of a recording; its text is in its place or, after a failure, nowhere.

    Only the text of a recording that was taken away stays.
    """
    staged = os.path.join(stage, f"{number}.asc")
    status, message = CONVERTED, ""
    if not os.path.exists(staged):
        status, message = _convert_alone(plan, stage, number, recording)
    if stamp(recording.path) != before:
        status, message = STOPPED, "the recording changed while it was converted"
    text = os.path.join(plan["output"], recording.text)
    try:
        if status == CONVERTED:
            os.makedirs(os.path.dirname(text), exist_ok=True)
            os.replace(staged, text)
        elif before != UNREADABLE and os.path.exists(text):
            os.remove(text)  # of the recording as it was before
    except OSError as error:
        status, message = STOPPED, f"{text}: {error.strerror}"
    return status, message


def _convert_alone(plan, stage, number, recording):
    with tempfile.TemporaryFile() as told:
        code = _run(plan, stage, [recording], number, told)
        lines = _last_lines(told)
    if code == 0:
        return CONVERTED, ""
    if code < 0:
        lines.append(f"gzdconv was ended by signal {-code}")
    elif code != 1:
        lines.append(f"gzdconv ended with status {code}")
    own_fault = code == 1 and any(line.startswith("Could not process ") for line in lines)
    return FAILED if own_fault else STOPPED, "; ".join(lines)


def _last_lines(file):
    """The last lines, without the echo of options."""
    file.seek(max(0, file.tell() - MESSAGE_ROOM))
    lines = (" ".join(line.split()) for line in file.read().decode(errors="replace").split("\n"))
    told = [line for line in lines if line and not line.startswith("Command line option")]
    return told[-MESSAGE_LINES:]


def _result(plan, recording, before, status, message):
    return {
        "recording": recording.path,
        "text": recording.text,
        "options": plan["options"],
        "stamp": before,
        "status": status,
        "message": message,
        "time": time.strftime("%Y-%m-%d %H:%M:%S"),
    }


def main(path, chunk, result):
    plan = load(path)
    members = [Recording(*one) for one in plan["chunks"][chunk]]
    stage = os.path.splitext(result)[0].replace("result-", "stage-")
    save(result, convert_chunk(plan, members, stage))


if __name__ == "__main__":
    main(*sys.argv[1:])
