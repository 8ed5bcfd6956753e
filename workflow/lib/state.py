"""What is known of each recording: kept in small files below the output folder.

    plan-000007.json        all recordings, and the chunks of those that need work
    result-000007-003.json  what became of chunk 003 of that plan
    stage-000007-003/       its texts, until they are whole

A result counts as long as the recording, the options and the text are those that it tells of.
"""

import glob
import json
import os

CONVERTED = "converted"
FAILED = "failed"  # the recording's fault: not tried again before it changes
STOPPED = "stopped"  # something else's fault: tried again at the next run
PENDING = "pending"

# What a text holds of its recording; FAILED has none.
WHOLE = "whole"
LOSSY = "lossy"

UNREADABLE = "-"


def state_folder(output):
    return os.path.join(output, ".gzdconv")


def plan_path(output, number):
    return os.path.join(state_folder(output), f"plan-{number}.json")


def result_path(output, number, chunk):
    return os.path.join(state_folder(output), f"result-{number}-{chunk}.json")


def load(path):
    with open(path, encoding="ascii") as file:
        return json.load(file)


def save(path, value):
    """Writes the file whole or not at all."""
    os.makedirs(os.path.dirname(path), exist_ok=True)
    unfinished = f"{path}.{os.getpid()}.part"
    with open(unfinished, "w", encoding="ascii") as file:
        json.dump(value, file, indent=0)
    os.replace(unfinished, path)


def stamp(path):
    """Changes whenever the recording does, also to an older copy."""
    try:
        status = os.stat(path)
    except OSError:
        return UNREADABLE
    return f"{status.st_size} {status.st_mtime_ns}" if os.access(path, os.R_OK) else UNREADABLE


def plans(output):
    """Numbers of all plans, the newest first."""
    found = glob.glob("plan-*.json", root_dir=state_folder(output))
    return sorted((name[len("plan-") : -len(".json")] for name in found), reverse=True)


def latest_results(output):
    """The newest result of each recording, by its path."""
    newest = {}
    for name in sorted(glob.glob("result-*.json", root_dir=state_folder(output))):
        rows = load(os.path.join(state_folder(output), name))
        newest.update((row["recording"], row) for row in rows)
    return newest


def still_true(row, recording, output, options):
    """Whether the result tells of the recording as it is now."""
    if row is None or row["text"] != recording.text or row["options"] != options:
        return False
    if row["status"] == CONVERTED and not os.path.isfile(os.path.join(output, recording.text)):
        return False
    return row["stamp"] == stamp(recording.path)
