"""Converts one chunk: convert.py PLAN CHUNK RESULT

Each recording is a call of gzdconv of its own into a folder of the chunk: so what is said is said of
it, and a crash takes no other along. With gzdtool, its `convert` makes these calls, and its report says
what became of them. Only whole texts are moved to their places.
"""

import errno
import json
import os
import shlex
import shutil
import subprocess
import sys
import tempfile
import time

import words
from recordings import Recording
from state import CONVERTED, FAILED, LOSSY, STOPPED, UNREADABLE, WHOLE, load, save, stamp

ROOM = 1 << 20  # of what gzdconv says, from its beginning and from its end
PASSING = [os.strerror(code) for code in (errno.EIO, errno.ENOMEM, errno.ENOSPC, errno.EMFILE)]


def convert_chunk(plan, members, stage):
    """One result row for each recording, in their order."""
    shutil.rmtree(stage, ignore_errors=True)
    os.makedirs(stage)
    convert = _convert_by_tool if plan.get("gzdtool") else _convert_one_by_one
    rows = list(convert(plan, members, stage))
    shutil.rmtree(stage)
    return rows


def _convert_one_by_one(plan, members, stage):
    for number, recording in enumerate(members):
        before = stamp(recording.path)
        staged = os.path.join(stage, str(number))
        code, lines = _call(plan, recording, staged)
        verdict = _judge(code, lines, os.path.exists(staged + ".asc"))
        yield _place(plan, recording, before, staged + ".asc", verdict)


def _convert_by_tool(plan, members, stage):
    """One call for all recordings whose names differ, as their texts lie side by side."""
    rows = {}
    for number, names in enumerate(_of_different_names(members)):
        folder = os.path.join(stage, str(number))
        before = [stamp(one.path) for one in names]
        for one, was, told in zip(names, before, _call_tool(plan, names, folder)):
            lines = words.said("\n".join(told["messages"]).encode(), one.path)
            findings = [finding["text"] for finding in told["findings"] or []]
            staged = os.path.join(folder, _stem(one) + ".asc")
            verdict = _judge(told["status"], [*findings, *lines], os.path.exists(staged))
            if findings and verdict[0] == CONVERTED:
                verdict = CONVERTED, LOSSY, verdict[2]
            rows[one.path] = _place(plan, one, was, staged, verdict)
    return [rows[one.path] for one in members]


def _stem(recording):
    return os.path.basename(recording.path)[: -len(".gzd")]


def _of_different_names(members):
    """Lists of recordings, as few as can be, of different names each."""
    lists = []
    for recording in members:
        home = next((one for one in lists if _stem(recording) not in map(_stem, one)), None)
        if home is None:
            lists.append(home := [])
        home.append(recording)
    return lists


def _call_tool(plan, recordings, folder):
    """The report's lines; what else is said goes to the log of the job."""
    report = folder + ".ndjson"
    command = [plan["gzdtool"], "convert", "-j", "1", "--redo", "--gzdconv", plan["gzdconv"]]
    command += ["--output-dir", folder, "--report", report, *(one.path for one in recordings)]
    code = subprocess.call([*command, "--", *shlex.split(plan["options"])], stderr=sys.stdout)
    if code not in (0, 1):
        raise subprocess.CalledProcessError(code, command)
    with open(report, encoding="utf-8") as lines:
        return list(map(json.loads, lines))


def _place(plan, recording, before, staged, verdict):
    """The result row; the text is in its place or, after a failure, nowhere.

    Only the text of a recording that was taken away stays.
    """
    status, state, message = verdict
    if stamp(recording.path) != before:
        status, state = STOPPED, ""
        message = "the recording changed while it was converted"
    text = os.path.join(plan["output"], recording.text)
    try:
        if status == CONVERTED:
            os.makedirs(os.path.dirname(text), exist_ok=True)
            os.replace(staged, text)
        elif before != UNREADABLE and os.path.exists(text):
            os.remove(text)  # of the recording as it was before
    except OSError as error:
        status, state, message = STOPPED, "", f"{text}: {error.strerror}"
    return _result(plan, recording, before, status, state, message)


def _call(plan, recording, staged):
    """Status of gzdconv, and what it said, which also goes to the log of the job."""
    command = [plan["gzdconv"], "-y", "-p", os.path.dirname(staged), *shlex.split(plan["options"])]
    command += [recording.path, os.path.basename(staged)]
    with tempfile.TemporaryFile() as told:
        code = subprocess.call(
            command, stdin=subprocess.DEVNULL, stdout=told, stderr=subprocess.STDOUT
        )
        lines = words.said(_both_ends(told), recording.path)
    log = "".join(f"{line}\n" for line in [recording.path, *lines])
    sys.stdout.buffer.write(log.encode(errors="surrogateescape"))
    sys.stdout.flush()
    return code, lines


def _both_ends(file):
    size = file.tell()
    file.seek(0)
    text = file.read(ROOM)
    if size > ROOM:
        file.seek(max(ROOM, size - ROOM))
        text += b"\n" + file.read(ROOM)
    return text


def _judge(code, lines, has_text):
    """Status, state and message."""
    if has_text and code in (0, 1):
        is_whole = code == 0 and not any(map(words.tells_of_loss, lines))
        return CONVERTED, WHOLE if is_whole else LOSSY, words.warnings(lines)
    if code < 0:
        lines = [*lines, f"gzdconv was ended by signal {-code}"]
    elif code != 1:
        lines = [*lines, f"gzdconv ended with status {code}"]
    own_fault = code == 1 and any(line.startswith("Could not process ") for line in lines)
    if own_fault and not any(line.endswith(tuple(PASSING)) for line in lines):
        return FAILED, FAILED, words.last(lines)
    return STOPPED, "", words.last(lines)


def _result(plan, recording, before, status, state, message):
    return {
        "recording": recording.path,
        "text": recording.text,
        "options": plan["options"],
        "stamp": before,
        "status": status,
        "state": state,
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
