"""`python -m gzdapi`: what recordings hold, and recordings as Parquet files."""

from __future__ import annotations

import argparse
import contextlib
import json
import logging
import sys
from collections.abc import Callable, Iterator
from typing import Any, Optional

from ._errors import Error
from ._recording import Recording, read


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog="python -m gzdapi", description=__doc__)
    verbs = parser.add_subparsers(dest="verb", required=True)
    info = verbs.add_parser("info", help="tell what recordings hold")
    info.add_argument("files", nargs="+", metavar="FILE")
    info.add_argument("--json", action="store_true", help="all facts, a JSON object a line")
    parquet = verbs.add_parser("parquet", help="write tables as a partitioned data set")
    parquet.add_argument("files", nargs="+", metavar="FILE")
    parquet.add_argument("-o", "--output", required=True, metavar="DIR", help="folder to write to")
    parquet.add_argument("-j", "--jobs", type=int, default=1, metavar="N", help="processes")
    parquet.add_argument("--tables", metavar="NAMES", help="only these, with commas between")
    parquet.add_argument("--groups", default="", metavar="NAMES", help="further groups of columns")
    parquet.add_argument("--trial-start", metavar="TEXT", help="messages that open a trial")
    parquet.add_argument("--trial-end", metavar="TEXT", help="messages that end the trial")
    for name, help_text in (
        ("failsafe", "read damaged recordings up to the damage"),
        ("message-log", "merge the experiment's log"),
        ("message-offsets", "a number at the start of a message is an offset of its time"),
    ):
        parquet.add_argument(f"--{name}", action="store_true", help=help_text)
    parquet.add_argument("--no-repair", dest="repair", action="store_false", help="as it is")
    return parser


def _facts(recording: Recording) -> str:
    info = recording.info
    counts = ", ".join(f"{count:,} {kind}" for kind, count in info["elements"].items() if count)
    seconds = (info["duration"] or 0) / 1000
    lines = [f"{info['file']}: {info['bytes']:,} bytes, {seconds:,.1f} s", f"  {counts}"]
    return "\n".join(lines + [f"  {finding.text}" for finding in recording.findings])


@contextlib.contextmanager
def _no_warnings() -> Iterator[None]:
    """Findings tell the same."""
    logger = logging.getLogger("gzdapi")
    before = logger.level
    logger.setLevel(logging.ERROR)
    try:
        yield
    finally:
        logger.setLevel(before)


@_no_warnings()
def _info(arguments: argparse.Namespace) -> int:
    status = 0
    for path in arguments.files:
        try:
            recording = read(path, failsafe=True)
            print(json.dumps(recording.info) if arguments.json else _facts(recording))
        except (Error, OSError) as error:
            print(error, file=sys.stderr)
            status = 1
    return status


def _progress_of(total: int) -> Callable[[str, int], None]:
    """A bar on a terminal, where tqdm is; nothing elsewhere."""
    if not sys.stderr.isatty():
        return lambda path, written: None
    try:
        from tqdm import tqdm
    except ImportError:
        return lambda path, written: print(path, file=sys.stderr)
    bar = tqdm(total=total, unit="recording")

    def told(path: str, written: int) -> None:
        bar.update()

    return told


def _parquet(arguments: argparse.Namespace) -> int:
    from .parquet import TABLES, write_dataset

    tables = arguments.tables.split(",") if arguments.tables else TABLES
    names = ("trial_start", "trial_end", "failsafe", "message_log", "message_offsets", "repair")
    options: dict[str, Any] = {name: getattr(arguments, name) for name in names}
    failures = write_dataset(
        arguments.files,
        arguments.output,
        tables=tables,
        workers=arguments.jobs,
        progress=_progress_of(len(arguments.files)),
        groups=[name for name in arguments.groups.split(",") if name],
        **options,
    )
    for reason in failures.values():
        print(reason, file=sys.stderr)
    return 1 if failures else 0


def main(words: Optional[list[str]] = None) -> int:
    """Runs a command line; returns 0, 1 when a recording failed, or exits with 2 for a wrong one."""
    arguments = _parser().parse_args(words)
    return _info(arguments) if arguments.verb == "info" else _parquet(arguments)


if __name__ == "__main__":
    sys.exit(main())
