"""Recordings as a data set of Parquet files, partitioned by recording. Needs pyarrow.

    DIRECTORY/samples/recording=NAME/part.parquet

A part holds what it was made from and with, so that a run goes on where an earlier one stopped.
"""

from __future__ import annotations

import json
import multiprocessing
import os
import pathlib
from collections.abc import Callable, Iterable, Iterator, Sequence
from concurrent.futures import Future, ProcessPoolExecutor, as_completed
from functools import partial
from typing import Any, Optional
from urllib.parse import quote

import pyarrow
import pyarrow.parquet

from . import _core, _errors
from ._recording import Path, Recording, name_of, read
from ._table import Table

TABLES = tuple(
    name for name in _core.table_names() if name not in ("fixations", "saccades", "blinks")
)
"""What is written unless told otherwise: every table once."""

_SOURCE = b"gzdapi.source"
_GROUP_ROWS = 1 << 18


def _source(path: str, options: dict[str, Any]) -> bytes:
    """What a part is made from and with."""
    facts = os.stat(path)
    source = {
        "bytes": facts.st_size,
        "modified": facts.st_mtime_ns,
        "library": _core.library_version,
        "options": options,
    }
    return json.dumps(source, sort_keys=True).encode()


def _is_done(part: pathlib.Path, source: bytes) -> bool:
    try:
        return bool(pyarrow.parquet.read_schema(part).metadata.get(_SOURCE) == source)
    except (OSError, pyarrow.ArrowInvalid):
        return False


def _batches(recording: Recording, table: str) -> Iterable[Table]:
    """The rows in pieces; only samples are too many to be had at once."""
    if table == "samples":
        return recording._pieces(table, _GROUP_ROWS)
    return [recording.table(table)]


def _write_part(recording: Recording, table: str, part: pathlib.Path, source: bytes) -> None:
    part.parent.mkdir(parents=True, exist_ok=True)
    unfinished = part.with_name(f".{part.name}.{os.getpid()}")
    writer: Optional[pyarrow.parquet.ParquetWriter] = None
    try:
        for batch in _batches(recording, table):
            rows = batch.to_arrow()
            if writer is None:
                metadata = {**rows.schema.metadata, _SOURCE: source}
                schema = rows.schema.with_metadata(metadata)
                writer = _writer(unfinished, schema)
            writer.write_table(rows, row_group_size=_GROUP_ROWS)
        if writer is None:
            return
        writer.close()
        os.replace(unfinished, part)
    finally:
        if writer is not None:
            writer.close()
        unfinished.unlink(missing_ok=True)


def _writer(path: pathlib.Path, schema: pyarrow.Schema) -> pyarrow.parquet.ParquetWriter:
    """Of floats the bytes of like weight go together, which compresses better and faster than a
    dictionary. What positions lie between tells no reader which rows to skip."""
    positions = [field.name for field in schema if field.type == pyarrow.float32()]
    times = [field.name for field in schema if field.type == pyarrow.float64()]
    others = [field.name for field in schema if field.name not in {*positions, *times}]
    return pyarrow.parquet.ParquetWriter(
        path,
        schema,
        compression="zstd",
        use_dictionary=others,
        use_byte_stream_split=positions + times,
        write_statistics=times + others,
    )


def write_recording(
    path: str, directory: str, tables: Sequence[str], options: dict[str, Any]
) -> int:
    """Writes those tables of a recording that are not there yet, and returns their number."""
    source = _source(path, options)
    parts = {table: _part(directory, table, path) for table in tables}
    missing = [table for table, part in parts.items() if not _is_done(part, source)]
    if missing:
        recording = read(path, **options)
        for table in missing:
            _write_part(recording, table, parts[table], source)
    return len(missing)


def _part(directory: str, table: str, path: str) -> pathlib.Path:
    return pathlib.Path(
        directory, table, f"recording={quote(name_of(path), safe=' ')}", "part.parquet"
    )


def _without_doubles(paths: Iterable[str], failures: dict[str, str]) -> list[str]:
    """The recordings whose name is not that of one before."""
    by_name: dict[str, str] = {}
    for path in paths:
        first = by_name.setdefault(name_of(path), path)
        if first != path:
            failures[path] = f"{path}: has the name of {first}"
    return list(by_name.values())


def _finished(
    paths: list[str], workers: int, arguments: tuple[Any, ...]
) -> Iterator[tuple[str, Callable[[], int]]]:
    """Each recording when it is done, with what raises or returns its result."""
    if workers <= 1:
        for path in paths:
            yield path, partial(write_recording, path, *arguments)
        return
    context = multiprocessing.get_context("spawn")
    with ProcessPoolExecutor(workers, mp_context=context) as pool:
        running: dict[Future[int], str] = {
            pool.submit(write_recording, path, *arguments): path for path in paths
        }
        for future in as_completed(running):
            yield running[future], future.result


def write_dataset(
    paths: Iterable[Path],
    directory: Path,
    *,
    tables: Sequence[str] = TABLES,
    workers: int = 1,
    progress: Callable[[str, int], None] = lambda path, written: None,
    **options: Any,
) -> dict[str, str]:
    """Writes tables of recordings below a directory, with the options of `gzdapi.read`.

    `workers` processes share the work; `progress` is told each recording and how many tables of it
    were written. Recordings that fail do not stop the others: the result is why, by path.
    """
    failures: dict[str, str] = {}
    chosen = _without_doubles([os.fspath(path) for path in paths], failures)
    for path, result in _finished(chosen, workers, (os.fspath(directory), list(tables), options)):
        try:
            progress(path, result())
        except (OSError, ValueError, RuntimeError, MemoryError, _errors.Error) as error:
            failures[path] = str(error)
            progress(path, 0)
    return failures
