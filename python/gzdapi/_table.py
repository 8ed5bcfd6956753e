"""Tables: columns with names, types, units and descriptions."""

from __future__ import annotations

from collections.abc import Iterator
from typing import TYPE_CHECKING, Any, NamedTuple, Optional

import numpy as np

from . import _core

if TYPE_CHECKING:
    import pandas
    import polars
    import pyarrow


class Field(NamedTuple):
    """What a column is. Its type is one of those that `gzdtool schema` tells; `choices` are the texts
    of an `enum`."""

    name: str
    type: str
    unit: str
    description: str
    choices: tuple[str, ...]


def _choice_array(choices: tuple[str, ...], codes: Any, valid: Any) -> np.ndarray[Any, Any]:
    texts = np.array([*choices, None], dtype=object)
    taken: np.ndarray[Any, Any] = texts[np.where(valid, codes, len(choices))]
    return taken


class Table:
    """A table in memory. `table["time"]` is a column; `fields` tells what the columns are.

    Every library that reads Arrow takes a table as it is, without a copy: `pyarrow.table(table)`,
    `polars.DataFrame(table)`, and DuckDB by the name of the variable.
    """

    def __init__(self, name: str, frame: _core.Frame) -> None:
        self.name = name
        self.fields = tuple(Field(*field) for field in frame.fields())
        self._frame = frame
        self._index = {field.name: i for i, field in enumerate(self.fields)}

    def __len__(self) -> int:
        return len(self._frame)

    @property
    def columns(self) -> list[str]:
        """The names of the columns."""
        return list(self._index)

    @property
    def units(self) -> dict[str, str]:
        """The unit of each column that has one."""
        return {field.name: field.unit for field in self.fields if field.unit}

    def keys(self) -> list[str]:
        """The names of the columns, so that `dict(table)` has them all."""
        return self.columns

    def __iter__(self) -> Iterator[str]:
        return iter(self._index)

    def __contains__(self, name: object) -> bool:
        return name in self._index

    def __getitem__(self, name: str) -> np.ndarray[Any, Any]:
        """A column as an array of numpy.

        Floats are read-only views of the table, NaN where null. Integers and bools are masked arrays
        over such views, masked where null. Texts and enums are arrays of `str`, None where null.
        """
        if name not in self._index:
            raise KeyError(f"the table '{self.name}' has no column '{name}'")
        field = self.fields[self._index[name]]
        values, valid = self._frame.column(self._index[name])
        if field.type == "string":
            return np.array(values, dtype=object)
        if valid is None:
            return np.asarray(values)
        if field.type == "enum":
            return _choice_array(field.choices, values, valid)
        mask = ~valid.view(bool)
        values = values.view(bool) if field.type == "bool" else values
        return np.ma.MaskedArray(values, mask if mask.any() else np.ma.nomask)

    def _pandas_column(self, index: int, copy: bool) -> Any:
        import pandas

        field = self.fields[index]
        values, valid = self._frame.column(index)
        if field.type == "string":
            return pandas.array(values, dtype="string")
        if valid is None:
            return values.copy() if copy else values
        null = ~valid.view(bool)
        if field.type == "enum":
            codes = np.where(null, np.int8(-1), values.view(np.int8))
            return pandas.Categorical.from_codes(codes, categories=list(field.choices))
        if field.type == "bool":
            return pandas.arrays.BooleanArray(values.view(bool), null, copy=copy)
        return pandas.arrays.IntegerArray(values, null, copy=copy)

    def to_pandas(self, copy: bool = True) -> pandas.DataFrame:
        """The table as a pandas data frame; `attrs["units"]` has the units.

        Integers, bools and texts have pandas' nullable types, enums are categories, so the types do
        not depend on the recording. With `copy=False` numbers are read-only views of this table.
        """
        import pandas

        series = {
            name: pandas.Series(self._pandas_column(i, copy), copy=False)
            for name, i in self._index.items()
        }
        frame = pandas.DataFrame(series, copy=False)
        frame.attrs["units"] = self.units
        return frame

    def to_polars(self) -> polars.DataFrame:
        """The table as a polars data frame; enums are categories."""
        import polars

        return polars.DataFrame(self)

    def to_arrow(self) -> pyarrow.Table:
        """The table as an Arrow table over the same memory. Fields have `unit` and `description` as
        metadata; enums are dictionaries."""
        import pyarrow

        # pyarrow.table() would import pandas first, to see whether this is a frame of it.
        return pyarrow.RecordBatchReader.from_stream(self).read_all()

    def __arrow_c_schema__(self) -> object:
        return self._frame.arrow_schema(False)

    def __arrow_c_stream__(self, requested_schema: Optional[object] = None) -> object:
        """One record batch. A requested schema may ask for enums as plain texts."""
        return self._frame.arrow_stream(requested_schema)

    def __repr__(self) -> str:
        return f"<gzdapi.Table {self.name}: {len(self)} rows, {len(self.fields)} columns>"

    def _repr_html_(self) -> str:
        from ._html import table_html

        return table_html(self)


class Stream:
    """A table that is read in batches, in memory that does not grow with it.

    `for batch in stream` gives tables of some rows each. Libraries that read Arrow streams take it as
    it is: `pyarrow.RecordBatchReader.from_stream(stream)`. Each loop and each such reader reads the
    file anew, so several may be under way.
    """

    def __init__(
        self,
        path: bytes,
        name: str,
        options: _core.Options,
        request: _core.Request,
        first: Optional[_core.Stream] = None,
    ) -> None:
        self.name = name
        self._source = (path, options, request)
        # The first one is at hand, so that the file need not be open twice.
        self._first: Optional[_core.Stream] = first or _core.Stream(*self._source)
        self._schema = self._first.arrow_schema(False)
        self.fields = tuple(Field(*field) for field in self._first.fields())

    def __iter__(self) -> Iterator[Table]:
        stream, self._first = self._first or _core.Stream(*self._source), None
        while (frame := stream.next()) is not None:
            yield Table(self.name, frame)

    def __arrow_c_stream__(self, requested_schema: Optional[object] = None) -> object:
        """Record batches as they are read. A requested schema may ask for enums as plain texts."""
        self._first = None
        return _core.arrow_stream(*self._source, requested_schema)

    def __repr__(self) -> str:
        return f"<gzdapi.Stream {self.name}: {len(self.fields)} columns>"
