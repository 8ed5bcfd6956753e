"""Many recordings as one Dask data frame. Needs dask[dataframe]."""

from __future__ import annotations

import os
from collections.abc import Iterable
from typing import TYPE_CHECKING, Any, Union

import pandas

from . import _recording
from ._schema import declared_fields
from ._table import Field

if TYPE_CHECKING:
    import dask.dataframe

_PANDAS_TYPES = {
    "bool": "boolean",
    "int32": "Int32",
    "int64": "Int64",
    "uint16": "UInt16",
    "uint32": "UInt32",
    "float32": "float32",
    "float64": "float64",
    "string": "string",
}


def _empty_column(field: Field) -> Any:
    if field.type == "enum":
        return pandas.Categorical([], categories=list(field.choices))
    return pandas.array([], dtype=_PANDAS_TYPES[field.type])


def _frame_of(path: str, table: str, options: dict[str, Any]) -> pandas.DataFrame:
    recording = _recording.read(path, **options)
    frame = recording.table(table).to_pandas()
    frame.insert(0, "recording", pandas.array([recording.name] * len(frame), dtype="string"))
    frame.attrs.clear()
    return frame


def read(
    paths: Union[_recording.Path, Iterable[_recording.Path]],
    table: str = "samples",
    **options: Any,
) -> dask.dataframe.DataFrame:
    """A table of recordings as a Dask data frame, a partition each, with a column `recording` in
    front. Takes the options of `gzdapi.read`; the group "all" differs between recordings and is
    refused."""
    import dask.dataframe

    chosen = [paths] if isinstance(paths, (str, os.PathLike)) else list(paths)
    columns: dict[str, Any] = {"recording": pandas.array([], dtype="string")}
    columns.update((f.name, _empty_column(f)) for f in declared_fields(table, options))
    return dask.dataframe.from_map(
        _frame_of,
        [os.fspath(path) for path in chosen],
        table=table,
        options=options,
        meta=pandas.DataFrame(columns),
        label=f"gzd-{table}",
    )
