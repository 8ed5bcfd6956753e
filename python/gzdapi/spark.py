"""Recordings as a data source of Spark. Needs PySpark 4 and pyarrow.

    spark.dataSource.register(gzdapi.spark.GzdDataSource)
    spark.read.format("gzd").option("table", "events").load("folder/*.gzd")

Options: `table` (samples), `groups` with commas between, `trial_start`, `trial_end`, `repair`,
`failsafe`, `message_log`, `message_offsets`. A column `recording` stands in front. A schema given to
the reader (`.schema("time double, left_x float")`) chooses columns; nothing else is sent to Spark.
"""

from __future__ import annotations

import glob
import json
import os
from collections.abc import Iterable, Iterator
from typing import Any

import pyarrow
from pyspark.sql import datasource
from pyspark.sql import types as spark_types

from ._recording import name_of, open_stream
from ._schema import declared_fields

_PARTITION_BYTES = 32 << 20  # small recordings share a partition up to this
_FLAGS = ("repair", "failsafe", "message_log", "message_offsets")
_TEXTS = ("groups", "trial_start", "trial_end")
_TYPES = {
    "bool": spark_types.BooleanType,
    "int32": spark_types.IntegerType,
    "int64": spark_types.LongType,
    "uint16": spark_types.IntegerType,
    "uint32": spark_types.LongType,
    "float32": spark_types.FloatType,
    "float64": spark_types.DoubleType,
    "string": spark_types.StringType,
    "enum": spark_types.StringType,
}
_ARROW_TYPES = {
    "boolean": pyarrow.bool_(),
    "integer": pyarrow.int32(),
    "long": pyarrow.int64(),
    "float": pyarrow.float32(),
    "double": pyarrow.float64(),
    "string": pyarrow.string(),
}


def _reading_options(options: dict[str, str]) -> dict[str, Any]:
    """Spark's options, all texts, as those of `gzdapi.read`."""
    reading: dict[str, Any] = {name: options[name] for name in _TEXTS if name in options}
    for name in _FLAGS:
        if name in options:
            reading[name] = options[name].strip().lower() in ("true", "1", "yes")
    return reading


def _files_of(options: dict[str, str]) -> list[str]:
    patterns = json.loads(options["paths"]) if "paths" in options else [options.get("path", "")]
    names: list[str] = []
    for pattern in patterns:
        pattern = pattern[len("file:") :] if pattern.startswith("file:/") else pattern
        folder = os.path.join(glob.escape(pattern), "*.gzd") if os.path.isdir(pattern) else pattern
        found = sorted(glob.glob(folder))
        if not found:
            raise FileNotFoundError(f"no recordings at {pattern!r}")
        names += found
    return names


class _Files(datasource.InputPartition):
    """Recordings that one task reads."""

    def __init__(self, paths: list[str]) -> None:
        super().__init__(paths)
        self.paths = paths


def _grouped(paths: Iterable[str]) -> list[datasource.InputPartition]:
    groups: list[list[str]] = []
    room = 0
    for path in paths:
        size = os.path.getsize(path)
        if size > room:
            groups.append([])
            room = _PARTITION_BYTES
        groups[-1].append(path)
        room -= size
    return [_Files(group) for group in groups]


class GzdReader(datasource.DataSourceReader):
    """Reads the chosen columns of one table of many recordings."""

    def __init__(self, schema: spark_types.StructType, options: dict[str, str]) -> None:
        self._table = options.get("table", "samples")
        self._reading = _reading_options(options)
        self._paths = _files_of(options)
        self._columns = [(field.name, field.dataType.typeName()) for field in schema.fields]

    def pushFilters(self, filters: list[Any]) -> Iterable[Any]:
        """Takes what is asked of `recording`; Spark sees to the rest."""
        for condition in filters:
            values = _wanted_recordings(condition)
            if values is None:
                yield condition
            else:
                self._paths = [path for path in self._paths if name_of(path) in values]

    def partitions(self) -> list[datasource.InputPartition]:
        return _grouped(self._paths)

    def read(self, partition: datasource.InputPartition) -> Iterator[pyarrow.RecordBatch]:
        for path in getattr(partition, "paths", ()):
            for batch in open_stream(path, self._table, **self._reading):
                yield from self._batches(name_of(path), batch.to_arrow())

    def _batches(self, recording: str, rows: pyarrow.Table) -> Iterator[pyarrow.RecordBatch]:
        arrays = [
            pyarrow.repeat(pyarrow.scalar(recording), rows.num_rows)
            if name == "recording"
            else rows.column(name).combine_chunks().cast(_ARROW_TYPES[kind])
            for name, kind in self._columns
        ]
        table = pyarrow.table(arrays, names=[name for name, _ in self._columns])
        yield from table.to_batches()


def _wanted_recordings(condition: Any) -> Any:
    """The values that a filter allows `recording`, or None when it is another filter."""
    if getattr(condition, "attribute", None) != ("recording",):
        return None
    kind = type(condition).__name__
    if kind == "EqualTo":
        return {condition.value}
    return set(condition.value) if kind == "In" else None


class GzdDataSource(datasource.DataSource):
    """The data source `gzd`."""

    @classmethod
    def name(cls) -> str:
        return "gzd"

    def schema(self) -> spark_types.StructType:
        table = self.options.get("table", "samples")
        schema = spark_types.StructType().add("recording", spark_types.StringType())
        for field in declared_fields(table, _reading_options(dict(self.options))):
            schema.add(field.name, _TYPES[field.type]())
        return schema

    def reader(self, schema: spark_types.StructType) -> datasource.DataSourceReader:
        return GzdReader(schema, dict(self.options))
