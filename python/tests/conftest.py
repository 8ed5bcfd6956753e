"""Recordings to test with, made by the programs of a build (GZD_BIN, build/release)."""

import os
import pathlib
import shlex
import subprocess

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BIN = pathlib.Path(os.environ.get("GZD_BIN", ROOT / "build/release"))
GOLDEN = sorted(path.stem for path in (ROOT / "tests/golden/recordings").glob("*.txt"))


def run(program, *arguments):
    subprocess.run([BIN / program, *arguments], check=True, capture_output=True)


def synth(path, options=""):
    """Makes a recording and returns its path."""
    run("gzdsynth/gzdsynth", *shlex.split(options), path)
    return path


@pytest.fixture(scope="session")
def golden(tmp_path_factory):
    """Folder of the small recordings."""
    folder = tmp_path_factory.mktemp("golden")
    for name in GOLDEN:
        run("tests/golden/golden_recordings", name, folder / f"{name}.gzd")
    return folder


@pytest.fixture(scope="session")
def trial(tmp_path_factory):
    """A made recording with trials, gaps and blinks."""
    path = tmp_path_factory.mktemp("made") / "trial.gzd"
    return synth(path, "--duration 20 --trials 5 --gap 20 --unpaired-blinks")
