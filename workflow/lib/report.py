"""Tells what became of every recording: report.py write PLAN | report.py verdict PLAN"""

import glob
import os
import shutil
import sys

from recordings import Recording
from state import CONVERTED, FAILED, LOSSY, PENDING, STOPPED, WHOLE, latest_results, load, plan_path
from state import plans, state_folder, still_true

COLUMNS = ("status", "state", "recording", "text", "time", "message")


def report_rows(plan):
    """A row of COLUMNS for each recording, in the order of the list."""
    results = latest_results(plan["output"])
    for recording in (Recording(*one) for one in plan["recordings"]):
        row = results.get(recording.path)
        if not still_true(row, recording, plan["output"], plan["options"]):
            row = {"status": PENDING, "state": "", "time": "", "message": ""}
        text = os.path.join(plan["output"], recording.text) if row["status"] == CONVERTED else ""
        state = row.get("state", "")
        yield (row["status"], state, recording.path, text, row["time"], row["message"])


def summary(rows):
    """Counts, then a line for each recording that has no text or a lossy one."""
    counts = [
        f"{sum(row[0] == status for row in rows)} {status}"
        for status in (CONVERTED, FAILED, STOPPED, PENDING)
        if status in (CONVERTED, FAILED) or any(row[0] == status for row in rows)
    ]
    lossy = sum(row[1] == LOSSY for row in rows)
    if lossy:
        counts[0] += f" ({lossy} lossy)"
    lines = [f"{len(rows)} recordings: {', '.join(counts)}"]
    for status, state, recording, _, _, message in rows:
        if state != WHOLE:
            lines.append(f"{state or status}: {recording}: {message}")
    return lines


def write_report(plan):
    rows = list(report_rows(plan))
    _write(os.path.join(plan["output"], "report.tsv"), map("\t".join, [COLUMNS, *rows]))
    _write(os.path.join(plan["output"], "summary.txt"), summary(rows))
    _tidy(plan)


def _tidy(plan):
    """Removes what interrupted runs left, and the plans before this one."""
    for stage in glob.glob(os.path.join(glob.escape(state_folder(plan["output"])), "stage-*")):
        shutil.rmtree(stage, ignore_errors=True)
    for number in plans(plan["output"]):
        if number < plan["number"]:
            os.remove(plan_path(plan["output"], number))


def verdict(plan):
    """0 when every recording has its text, else 1; the summary on standard error but when all is
    whole."""
    rows = list(report_rows(plan))
    if all(row[1] == WHOLE for row in rows):
        return 0
    text = "\n".join([*summary(rows), f"see {plan['output']}/report.tsv", ""])
    sys.stderr.buffer.write(text.encode(errors="surrogateescape"))
    return 0 if all(row[0] == CONVERTED for row in rows) else 1


def _write(path, lines):
    with open(path + ".part", "w", encoding="utf-8", errors="surrogateescape") as file:
        file.writelines(line + "\n" for line in lines)
    os.replace(path + ".part", path)


def main(action, path):
    plan = load(path)
    return verdict(plan) if action == "verdict" else write_report(plan)


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
