"""What a table's columns are, without a recording at hand."""

from __future__ import annotations

from typing import Any

from . import _core
from ._recording import group_names
from ._table import Field


def declared_fields(table: str, options: dict[str, Any]) -> tuple[Field, ...]:
    """The columns of a table of every recording read with these options of `gzdapi.read`. Raises
    ValueError for the group "all", which stands for other columns in each recording."""
    names = group_names(options.get("groups", ()))
    if "all" in names:
        raise ValueError('name the groups of columns: "all" differs between recordings')
    known = _core.groups_of(table)
    chosen = [name for name in names if name in known]
    if table == "messages" and options.get("message_log"):
        chosen.append("source")
    fields = [Field(*field) for field in _core.fields_of(table, chosen)]
    if table == "trials":
        for name in options.get("trial_variables") or {}:
            fields.append(Field(name, "string", "", "", ()))
    return tuple(fields)
