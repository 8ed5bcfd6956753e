"""Cuts what needs work into chunks."""

import os
import shlex
import shutil
import subprocess
import tempfile

from recordings import ConfigError, find_recordings
from state import FAILED, STOPPED, latest_results, load, plan_path, plans, result_path, save
from state import still_true


def make_plan(settings):
    """Number of the plan whose chunks bring all up to date: a new one when there is work."""
    program = _find_program("gzdconv", settings.gzdconv)
    tool = _find_program("gzdtool", settings.gzdtool) if settings.gzdtool else ""
    recordings = find_recordings(settings)
    results = latest_results(settings.output)
    pending = [one for one in recordings if _needs_work(one, results.get(one.path), settings)]
    rows = [[one.path, one.text] for one in recordings]
    if not pending:
        finished = _finished_plan(settings, rows)
        if finished:
            return finished
    else:
        _try_options(program, settings.options)
    newest = next(iter(plans(settings.output)), "0")
    number = f"{int(newest) + 1:06}"
    save(
        plan_path(settings.output, number),
        {
            "number": number,
            "gzdconv": program,
            "gzdtool": tool,
            "options": settings.options,
            "output": settings.output,
            "recordings": rows,
            "chunks": _chunks(pending, settings.chunk),
        },
    )
    return number


def planned_results(output, number):
    """The result files of a plan's chunks."""
    chunks = load(plan_path(output, number))["chunks"]
    return [result_path(output, number, chunk) for chunk in chunks]


def _needs_work(recording, row, settings):
    if not still_true(row, recording, settings.output, settings.options):
        return True
    return row["status"] == STOPPED or (settings.retry and row["status"] == FAILED)


def _finished_plan(settings, rows):
    for number in plans(settings.output):
        plan = load(plan_path(settings.output, number))
        if plan["recordings"] == rows and plan["options"] == settings.options:
            if all(map(os.path.exists, planned_results(settings.output, number))):
                return number
    return None


def _chunks(pending, size):
    """Chunks of about equal size, none above the one asked for."""
    count = -(-len(pending) // size)
    parts = [pending[i::count] for i in range(count)]
    return {f"{i:03}": [[one.path, one.text] for one in part] for i, part in enumerate(parts, 1)}


def _find_program(key, name):
    path = shutil.which(name)
    if path is None:
        raise ConfigError(f"{key}: cannot run {name}; give its path with the key {key}")
    return os.path.abspath(path)


def _try_options(program, options):
    """A run without recordings fails on a missing value, and on a word taken for a recording."""
    with tempfile.TemporaryDirectory() as folder:
        command = [program, "-y", "-p", os.path.join(folder, "none"), *shlex.split(options)]
        run = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, check=False)
    if run.returncode != 0:
        told = (run.stdout + run.stderr).decode(errors="replace").strip()
        raise ConfigError(f"options: gzdconv does not take {options!r}: {told}")
