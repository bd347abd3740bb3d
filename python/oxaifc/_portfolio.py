# SPDX-License-Identifier: Apache-2.0
"""One of many files as Arrow batches: what to_parquet() and the Spark data source have in common.

What the rows of a file that can't be read are, which columns are added to each row, and how the table of a class, which
differs from schema to schema, is brought to the columns that are wanted.
"""

from __future__ import annotations

import re
from typing import Any, Iterator, Sequence

from ._errors import RefusedError, UnknownNameError
from ._files import ModelFile, OpenFile

_UNKNOWN = "unknown"
_ADDED = ("schema", "exporter", "size", "sha256", "time_stamp", "author", "organization")


def exporter(model: Any) -> str:
    """The program that a model comes from, without its version: to sort files by.

    The ApplicationFullName of the first IfcApplication, else what the header calls the originating system; up to the
    first word that begins with a digit, or with a bracket, a dash or v and a digit. "unknown" where a file says nothing.
    """
    applications = model.by_type("IfcApplication")
    name = applications[0].ApplicationFullName if applications else None
    if not name:
        name = model.table("file").to_dict()["originating_system"][0]
    words = re.split(r"[\s/]+", (name or "").strip())
    kept: list[str] = []
    for word in words:
        if kept and re.match(r"[\d(\[\-\u2013]|[vV]\.?\d|[vV]ersion", word):
            break
        kept.append(word)
    return " ".join(kept).rstrip(",;: ") or _UNKNOWN


class Added:
    """Columns that each row gets from its file, by the names of the table file; and "exporter"."""

    def __init__(self, names: Sequence[str]) -> None:
        for name in names:
            if name not in _ADDED:
                raise UnknownNameError(f"there is no column {name} to add; there are {', '.join(_ADDED)}", _ADDED)
        self.names = tuple(dict.fromkeys(names))

    def to(self, schema: Any) -> Any:
        """A schema with them behind its own columns; what it has stays, as schema in the table file."""
        import pyarrow

        for name in self.names:
            if name not in schema.names:
                kind = pyarrow.int64() if name == "size" else pyarrow.string()
                schema = schema.append(pyarrow.field(name, kind))
        return schema

    def values(self, opened: OpenFile) -> dict[str, Any]:
        """Their values for one file."""
        model, found = opened.model, {}
        if set(self.names) - {"schema", "exporter"}:
            (row,) = file_rows(opened).to_pylist()
            found.update(row)
        if "schema" in self.names:
            found["schema"] = model.schema
        if "exporter" in self.names:
            found["exporter"] = exporter(model)
        return {name: found[name] for name in self.names}


def file_rows(opened: OpenFile) -> Any:
    """The table file of one file, a pyarrow.Table; of a file elsewhere with what this machine knows of it."""
    import pyarrow

    table = pyarrow.table(opened.model.table("file", file=opened.file.name))
    if opened.file.local:
        return table
    known = {
        "path": opened.file.name,
        "name": opened.file.name.rsplit("/", 1)[-1],
        "size": opened.file.size,
        "sha256": opened.sha256,
    }
    for name, value in known.items():
        place = table.schema.get_field_index(name)
        field = table.schema.field(place)
        table = table.set_column(place, field, pyarrow.array([value], field.type))
    return table


def batches(opened: OpenFile, table: str, schema: Any, added: dict[str, Any]) -> Iterator[Any]:
    """The rows of a table with the columns of `schema`, in batches; none where the schema of the file has no such class."""
    import pyarrow

    if table == "file":
        found: Any = file_rows(opened).to_batches()
    else:
        try:
            found = pyarrow.RecordBatchReader.from_stream(opened.model.table(table, file=opened.file.name))
        except UnknownNameError:
            return
    for batch in found:
        yield fitted(batch, schema, added)


def fitted(batch: Any, schema: Any, added: dict[str, Any]) -> Any:
    """A batch with the columns of `schema`, by their names: what the file does not have is without value."""
    import pyarrow

    columns = []
    for field in schema:
        place = batch.schema.get_field_index(field.name)
        if place >= 0:
            column = batch.column(place)
            if column.type != field.type:
                try:
                    column = column.cast(field.type)
                except (pyarrow.ArrowInvalid, pyarrow.ArrowNotImplementedError) as error:
                    raise RefusedError(f"the column {field.name} is of another type in the schema of this file: {error}") from error
        elif added.get(field.name) is not None:
            column = pyarrow.repeat(pyarrow.scalar(added[field.name], field.type), batch.num_rows)
        else:
            column = pyarrow.nulls(batch.num_rows, field.type)
        columns.append(column)
    return pyarrow.RecordBatch.from_arrays(columns, schema=schema)


def failure(file: ModelFile, error: BaseException, schema: Any) -> Any:
    """The row of the table error for a file that could not be read."""
    import pyarrow

    row = {
        "file": file.name,
        "severity": "fatal",
        "category": "file",
        "key": "Error_FileNotRead",
        "message": str(error),
    }
    return pyarrow.RecordBatch.from_pylist([{name: row.get(name) for name in schema.names}], schema=schema)


def schema_of(table: str, schema: str) -> Any:
    """The columns of a table as a pyarrow.Schema: of a class as an IFC schema has it. No file is opened."""
    import pyarrow

    from . import _core

    return pyarrow.schema(_core.Model(schema).table(table))


def required(name: str, what: str) -> Any:
    """A module that is not part of this package; ImportError tells what it is for."""
    import importlib

    try:
        return importlib.import_module(name)
    except ImportError as error:
        top = name.split(".")[0]
        raise ImportError(f"{what} is made with {top}, which is not installed: pip install {top}") from error

