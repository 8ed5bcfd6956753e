"""What notebooks show of recordings and tables."""

from __future__ import annotations

import html
from collections.abc import Iterable, Sequence
from typing import TYPE_CHECKING, Any, Optional

import numpy as np

if TYPE_CHECKING:
    from ._recording import Recording
    from ._table import Table

_MOST_ROWS = 8


def _cell(value: Any, tag: str = "td") -> str:
    if (
        value is None
        or value is np.ma.masked
        or (isinstance(value, (float, np.floating)) and np.isnan(value))
    ):
        return f"<{tag}></{tag}>"
    text = f"{value:.10g}" if isinstance(value, (float, np.floating)) else str(value)
    return f"<{tag}>{html.escape(text)}</{tag}>"


def _rows(head: Sequence[str], rows: Iterable[Sequence[Any]]) -> str:
    lines = ["".join(_cell(name, "th") for name in head)]
    lines += ["".join(_cell(value) for value in row) for row in rows]
    return "<table>" + "".join(f"<tr>{line}</tr>" for line in lines) + "</table>"


def _first_rows(table: Table, columns: Sequence[str], most: int) -> str:
    arrays = [table[name][:most] for name in columns]
    more = len(table) - most
    rest = f"<p>and {more:,} rows more</p>" if more > 0 else ""
    return _rows(columns, zip(*arrays)) + rest


def table_html(table: Table) -> str:
    """The first rows of a table."""
    title = f"<p><b>{table.name}</b>: {len(table):,} rows, {len(table.fields)} columns</p>"
    return title + _first_rows(table, table.columns, _MOST_ROWS)


def _share(lost: Any, samples: Any) -> Optional[str]:
    if lost is np.ma.masked or not samples:
        return None
    return f"{100 * lost / samples:.1f} %"


def _block_rows(blocks: Table) -> Iterable[list[Any]]:
    names = ("block", "start", "end", "rate", "eyes", "samples", "filled")
    arrays = [blocks[name][:_MOST_ROWS] for name in names]
    for row, left, right in zip(zip(*arrays), blocks["left_lost"], blocks["right_lost"]):
        samples = row[names.index("samples")]
        yield [*row, _share(left, samples), _share(right, samples)]


def recording_html(recording: Recording) -> str:
    """Facts, blocks with what each eye lost, and findings of a recording."""
    info = recording.info
    counts = ", ".join(f"{count:,} {kind}" for kind, count in info["elements"].items() if count)
    seconds = f"{(info['duration'] or 0) / 1000:,.1f} s"
    facts = [
        ("recorded", info["date"]),
        ("length", seconds),
        ("tracker generation", info["generation"]),
        ("holds", counts),
        ("damaged at byte", info["damaged_at"]),
    ]
    head = ("block", "start", "end", "Hz", "eyes", "samples", "filled", "left lost", "right lost")
    findings = "".join(f"<li>{html.escape(f.text)}</li>" for f in recording.findings[:_MOST_ROWS])
    more = len(recording.findings) - _MOST_ROWS
    rest = f"<li>and {more:,} more</li>" if more > 0 else ""
    return "".join(
        [
            f"<p><b>{html.escape(info['file'])}</b></p>",
            _rows(("", ""), [fact for fact in facts if fact[1] is not None]),
            _rows(head, _block_rows(recording.blocks)),
            f"<ul>{findings}{rest}</ul>" if findings else "<p>no findings</p>",
        ]
    )
