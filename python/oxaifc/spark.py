# SPDX-License-Identifier: Apache-2.0
"""Model files as a source of PySpark 4, for portfolios that one machine is too slow for; docs/portfolio.md.

    from oxaifc.spark import IfcDataSource
    spark.dataSource.register(IfcDataSource)
    spark.read.format("ifc").option("table", "property").load("models/*.ifc")

Needs pyspark and pyarrow on the driver, and this package with both where the workers run.
"""

from __future__ import annotations

import difflib
import heapq
import json
import sys
from dataclasses import dataclass
from typing import Any, Iterator, Mapping, Optional, Sequence

import pyarrow
import pyarrow.compute
from pyspark.sql.datasource import DataSource, DataSourceReader, InputPartition
from pyspark.sql.pandas.types import from_arrow_schema, to_arrow_schema
from pyspark.sql.types import StructType

from ._errors import FileError, RefusedError
from ._files import ModelFile, listed
from ._portfolio import Added, batches, failure, schema_of

__all__ = ["IfcDataSource"]

_OPTIONS = ("table", "schema", "mode", "add", "partitionBytes", "minPartitions", "path", "paths")
_OPEN_BYTES = 1 << 20  # what it costs to open a file, in bytes of a larger one


@dataclass(frozen=True)
class _Options:
    """What was said by option(), checked."""

    table: str
    schema: str
    failfast: bool
    add: tuple[str, ...]
    partition_bytes: int
    min_partitions: int
    paths: tuple[str, ...]

    @staticmethod
    def of(given: Mapping[str, str]) -> _Options:
        options = {name.lower(): value for name, value in given.items()}
        known = {name.lower(): name for name in _OPTIONS}
        for name in options:
            near = difflib.get_close_matches(name, known, 1, 0.75)
            if near and name not in known:
                raise RefusedError(f"there is no option {name}; did you mean {known[near[0]]}?")
        if not options.get("table"):
            raise RefusedError('the option table is missing, as in option("table", "property")')
        mode = options.get("mode", "permissive").lower()
        if mode not in ("permissive", "failfast"):
            raise RefusedError(f"the option mode is permissive or failfast, and not {mode}")
        paths = json.loads(options["paths"]) if options.get("paths") else []
        if options.get("path"):
            paths.append(options["path"])
        return _Options(
            options["table"],
            options.get("schema", "IFC4"),
            mode == "failfast",
            tuple(name.strip() for name in options.get("add", "").split(",") if name.strip()),
            _number(options, "partitionBytes", 32 << 20),
            _number(options, "minPartitions", 1),
            tuple(paths),
        )


def _number(options: Mapping[str, str], name: str, usual: int) -> int:
    text = options.get(name.lower(), str(usual))
    if not text.isdecimal() or int(text) == 0:
        raise RefusedError(f"the option {name} is a number above 0, and not {text}")
    return int(text)


class IfcDataSource(DataSource):
    """Format "ifc": tables of IFC models (STEP, ifcXML, .ifczip, .gz), a task for each large file or some small ones.

    load() takes a path, a folder with all models below it, a pattern, a URI that pyarrow.fs knows, or a list of these.
    Options:

    table: one of oxaifc.table_names(), or a class, as in IfcWall. Has to be said.
    schema: whose columns the table of a class has; IFC4. What a file of another schema lacks is null.
    mode: permissive passes over a file that can't be read, and tells it in the table error; failfast ends the job with
        its name.
    add: columns that each row gets from its file, as in "schema, exporter"; also size, sha256, time_stamp, author,
        organization.
    partitionBytes: how many bytes of small files a task reads, one after the other; 33554432. A file is never parted.
    minPartitions: tasks at least, where there are as many files.

    No file is opened to know the schema. With spark.sql.python.filterPushdown.enabled, filters on texts (type, guid,
    set_name and the like), integers and truth values are answered where the file is read, those on file by not reading it.
    """

    @classmethod
    def name(cls) -> str:
        """The name of the format."""
        return "ifc"

    def schema(self) -> StructType:
        """The columns of the table."""
        options = _Options.of(self.options)
        return from_arrow_schema(Added(options.add).to(schema_of(options.table, options.schema)))

    def reader(self, schema: StructType) -> DataSourceReader:
        """Reads all columns, or those of a schema that was given to the reader."""
        options = _Options.of(self.options)
        columns = Added(options.add).to(schema_of(options.table, options.schema))
        for name in schema.fieldNames():
            if name not in columns.names:
                near = difflib.get_close_matches(name, columns.names, 1)
                hint = f"; did you mean {near[0]}?" if near else ""
                raise RefusedError(f"the table {options.table} has no column {name}{hint}")
        # Spark refuses a reader that takes filters while it has none to give.
        pushing = any("data_source_pushdown_filters" in name for name in _worker_names())
        return (_FilteringReader if pushing else _Reader)(options, to_arrow_schema(schema))


def _worker_names() -> Iterator[str]:
    yield from (name for name in sys.modules if name.startswith("pyspark.sql.worker."))
    spec = getattr(sys.modules.get("__main__"), "__spec__", None)
    if spec is not None:
        yield spec.name


@dataclass
class _Files(InputPartition):
    """What one task reads."""

    files: tuple[ModelFile, ...]


class _Reader(DataSourceReader):
    def __init__(self, options: _Options, schema: Any) -> None:
        self._options = options
        self._schema = schema
        self._filters: list[_Test] = []

    def partitions(self) -> Sequence[InputPartition]:
        if not self._options.paths:
            raise RefusedError('load() takes paths, as in load("models/*.ifc")')
        files = listed(self._options.paths, absolute=True)
        files = [file for file in files if all(test.may(file) for test in self._filters)]
        return [_Files(tuple(some)) for some in _shared_out(files, self._options)]

    def read(self, partition: InputPartition) -> Iterator[Any]:
        assert isinstance(partition, _Files)
        for file in partition.files:
            for batch in self._rows(file):
                for test in self._filters:
                    batch = batch.filter(test.mask(batch.column(batch.schema.get_field_index(test.column))))
                if batch.num_rows:
                    yield batch

    def _rows(self, file: ModelFile) -> Iterator[Any]:
        try:
            opened = file.open(threads=1)
        except FileError as error:
            if self._options.failfast:
                raise
            if self._options.table == "error":
                yield failure(file, error, self._schema)
            else:
                print(f"oxaifc: passed over: {error}", file=sys.stderr)
            return
        values = Added(self._options.add).values(opened)
        yield from batches(opened, self._options.table, self._schema, values)


def _shared_out(files: list[ModelFile], options: _Options) -> list[list[ModelFile]]:
    """Files for each task: the largest first, each to the task that has least to do."""
    total = sum(file.size + _OPEN_BYTES for file in files)
    count = max(-(-total // options.partition_bytes), options.min_partitions)
    count = max(1, min(count, len(files)))
    tasks: list[list[ModelFile]] = [[] for _ in range(count)]
    heap = [(0, place) for place in range(count)]
    for file in sorted(files, key=lambda one: (-one.size, one.name)):
        done, place = heap[0]
        tasks[place].append(file)
        heapq.heapreplace(heap, (done + file.size + _OPEN_BYTES, place))
    return [sorted(task, key=lambda one: one.name) for task in tasks]


class _FilteringReader(_Reader):
    def pushFilters(self, filters: list[Any]) -> Iterator[Any]:
        for one in filters:
            test = _Test.of(one, self._schema)
            if test is None:
                yield one
            else:
                self._filters.append(test)


@dataclass(frozen=True)
class _Test:
    """A filter of Spark that Arrow answers alike."""

    column: str
    kind: str
    value: Any
    negated: bool = False

    @staticmethod
    def of(given: Any, schema: Any) -> Optional[_Test]:
        kind = type(given).__name__
        if kind == "Not":
            test = _Test.of(given.child, schema)
            return None if test is None or test.negated else _Test(test.column, test.kind, test.value, True)
        if kind not in _KINDS or len(given.attribute) != 1:
            return None
        (column,) = given.attribute
        value: Any = getattr(given, "value", None)
        values: Sequence[Any] = value if kind == "In" else (value,)
        place = schema.get_field_index(column)
        if place < 0 or not _alike(schema.field(place).type, values):
            return None
        return _Test(column, kind, value)

    def mask(self, cells: Any) -> Any:
        """Which rows are wanted: a null is none, as in a WHERE."""
        found = _KINDS[self.kind](cells, self.value)
        return pyarrow.compute.invert(found) if self.negated else found

    def may(self, file: ModelFile) -> bool:
        """Whether rows of a file can be wanted at all."""
        if self.column != "file":
            return True
        return bool(self.mask(pyarrow.array([file.name]))[0].as_py())


def _alike(kind: Any, values: Sequence[Any]) -> bool:
    """Whether these are values of a type for which Arrow and Spark compare alike: of floating point, NaN is not."""
    wanted = {pyarrow.string(): str, pyarrow.int64(): int, pyarrow.bool_(): bool}.get(kind)
    return wanted is not None and all(value is None or type(value) is wanted for value in values)


def _is_in(cells: Any, values: Sequence[Any]) -> Any:
    some = [value for value in values if value is not None]
    found = pyarrow.compute.is_in(cells, value_set=pyarrow.array(some, cells.type))
    # In SQL, x IN (..) is null where x is, or where no value is equal and one is null.
    known = found if len(some) < len(values) else pyarrow.compute.is_valid(cells)
    return pyarrow.compute.if_else(known, found, pyarrow.scalar(None, pyarrow.bool_()))


def _same(cells: Any, value: Any) -> Any:
    if value is None:
        return pyarrow.compute.is_null(cells)
    return pyarrow.compute.fill_null(pyarrow.compute.equal(cells, value), False)


def _compared(name: str) -> Any:
    return lambda cells, value: getattr(pyarrow.compute, name)(cells, pyarrow.scalar(value, cells.type))


_KINDS: dict[str, Any] = {
    "EqualTo": _compared("equal"),
    "EqualNullSafe": _same,
    "GreaterThan": _compared("greater"),
    "GreaterThanOrEqual": _compared("greater_equal"),
    "LessThan": _compared("less"),
    "LessThanOrEqual": _compared("less_equal"),
    "In": _is_in,
    "IsNull": lambda cells, _: pyarrow.compute.is_null(cells),
    "IsNotNull": lambda cells, _: pyarrow.compute.is_valid(cells),
    "StringStartsWith": lambda cells, value: pyarrow.compute.starts_with(cells, pattern=value),
    "StringEndsWith": lambda cells, value: pyarrow.compute.ends_with(cells, pattern=value),
    "StringContains": lambda cells, value: pyarrow.compute.match_substring(cells, pattern=value),
}
