# SPDX-License-Identifier: Apache-2.0
"""Many models as Parquet, a folder a table: to_parquet().

Rows of many files stand in one Parquet file, as far as memory allows: a portfolio of small models would make tens of
thousands of small files otherwise. All of it is written beside the place where it belongs and moved there at the end.
"""

from __future__ import annotations

import os
import shutil
import tempfile
from collections import deque
from concurrent.futures import Future, ThreadPoolExecutor
from dataclasses import dataclass, field
from typing import Any, Iterator, Optional, Sequence, Union
from urllib.parse import quote

from . import _core
from ._errors import FileError, RefusedError
from ._files import ModelFile, Paths, elsewhere, listed
from ._portfolio import Added, batches, failure, required, schema_of
from ._progress import Bar

_PART = 128 << 20  # bytes of rows that wait to become one Parquet file
_WAITING = 512 << 20  # of all of them
_READING = 1 << 30  # bytes of model files that are read at one time
_NO_VALUE = "__HIVE_DEFAULT_PARTITION__"

_Values = tuple[Optional[str], ...]


@dataclass
class ParquetResult:
    """What to_parquet() did."""

    folder: str
    files: int = 0  # that were read
    rows: dict[str, int] = field(default_factory=dict)  # by table
    failed: dict[str, str] = field(default_factory=dict)  # why, by the name of each file that could not be read

    def __repr__(self) -> str:
        rows = sum(self.rows.values())
        failed = f", {len(self.failed)} not read" if self.failed else ""
        return f"<oxaifc.ParquetResult {self.folder}: {self.files} files{failed}, {rows} rows>"


def to_parquet(
    paths: Paths,
    folder: Union[str, os.PathLike[str]],
    tables: Optional[Sequence[str]] = None,
    partition: Union[str, Sequence[str]] = (),
    *,
    schema: str = "IFC4",
    mode: str = "permissive",
    overwrite: bool = False,
    workers: Optional[int] = None,
    progress: Any = None,
) -> ParquetResult:
    """Writes tables of models as Parquet, with pyarrow: folder/property/part-00000.parquet and so on.

    paths: a path, a folder with all models below it, a pattern such as "models/**/*.ifc", a URI that pyarrow.fs knows;
        or several of these.
    tables: names of oxaifc.table_names(), or classes, as in ["element", "IfcWall"]; all fixed ones but "reference".
    partition: folders by a value of the file, in the manner of Hive: "schema", "exporter" (the program that a model comes
        from, without its version), "author", "organization", "time_stamp"; or several of these.
    schema: whose columns tables of classes have. What a file of another schema lacks is without value.
    mode: "permissive" goes on where a file can't be read: result.failed names it, and a row of the table error.
        "failfast" raises FileError.
    overwrite: replaces tables that stand in the folder; else they are a FileError.
    workers: how many files are read at one time, as far as memory allows; as many as the machine has cores.
    progress: tqdm.tqdm or what is like it; counts files.

    Nothing stands in the folder before everything is written. Raises MissingFileError for a path that names no file,
    UnknownNameError for a table or a partition that there is none of, ImportError without pyarrow.
    """
    required("pyarrow.parquet", "Parquet")
    if mode not in ("permissive", "failfast"):
        raise RefusedError(f"mode is permissive or failfast, and not {mode}")
    if elsewhere(os.fspath(folder)):
        raise RefusedError(f"{folder}: to_parquet() writes to a folder of this machine")
    names = [name for name in _core.table_names() if name != "reference"] if tables is None else list(tables)
    files = listed(paths)
    target = os.fspath(folder)
    added = Added([partition] if isinstance(partition, str) else partition)
    schemas = {name: schema_of(name, schema) for name in names}
    standing = [name for name in names if os.path.exists(os.path.join(target, name))]
    if standing and not overwrite:
        raise FileError(f"{os.path.join(target, standing[0])}: stands there already; overwrite=True replaces it")
    os.makedirs(target, exist_ok=True)
    workers = max(1, workers if workers is not None else os.cpu_count() or 1)
    result = ParquetResult(target, rows={name: 0 for name in names})
    with tempfile.TemporaryDirectory(prefix=".oxaifc-", dir=target) as work:
        parts = _Parts(work, schemas, added.names)
        bar = Bar(progress, "file", "to_parquet") if progress is not None else None
        try:
            for count, loaded in enumerate(_all_loaded(files, schemas, added, workers), 1):
                if loaded.error is not None:
                    if mode == "failfast":
                        raise loaded.error
                    result.failed[loaded.file.name] = str(loaded.error)
                else:
                    result.files += 1
                for name, found in loaded.batches.items():
                    result.rows[name] += sum(batch.num_rows for batch in found)
                    parts.add(name, loaded.values, found)
                if bar is not None:
                    bar.to(count, len(files))
        finally:
            if bar is not None:
                bar.close()
        parts.end()
        for name in names:
            _move(os.path.join(work, name), os.path.join(target, name), os.path.join(work, name + ".old"))
    return result


@dataclass
class _Loaded:
    """One file: its rows by table, the values of its partition; or why there are none."""

    file: ModelFile
    values: _Values
    batches: dict[str, list[Any]]
    error: Optional[FileError] = None


def _loaded(file: ModelFile, schemas: dict[str, Any], added: Added, threads: int) -> _Loaded:
    try:
        opened = file.open(threads)
    except FileError as error:
        found = {"error": [failure(file, error, schemas["error"])]} if "error" in schemas else {}
        return _Loaded(file, tuple(None for _ in added.names), found, error)
    values = added.values(opened)
    found = {name: list(batches(opened, name, schema, values)) for name, schema in schemas.items()}
    return _Loaded(file, tuple(None if value is None else str(value) for value in values.values()), found)


def _all_loaded(files: list[ModelFile], schemas: dict[str, Any], added: Added, workers: int) -> Iterator[_Loaded]:
    """All files in their order, several at one time."""
    if workers == 1 or len(files) == 1:
        for file in files:
            yield _loaded(file, schemas, added, 0)
        return
    waiting: deque[tuple[int, Future[_Loaded]]] = deque()
    with ThreadPoolExecutor(workers) as pool:
        try:
            for file in files:
                while waiting and (len(waiting) > workers or sum(size for size, _ in waiting) + file.size > _READING):
                    yield waiting.popleft()[1].result()
                waiting.append((file.size, pool.submit(_loaded, file, schemas, added, 1)))
            while waiting:
                yield waiting.popleft()[1].result()
        finally:
            for _, future in waiting:
                future.cancel()


class _Parts:
    """Rows on their way into Parquet files: those of one table and one partition stand together."""

    def __init__(self, folder: str, schemas: dict[str, Any], partition: Sequence[str]) -> None:
        self._folder = folder
        self._partition = tuple(partition)
        self._schemas = schemas
        self._waiting: dict[tuple[str, _Values], list[Any]] = {}
        self._bytes: dict[tuple[str, _Values], int] = {}
        self._counts: dict[tuple[str, _Values], int] = {}

    def add(self, table: str, values: _Values, found: list[Any]) -> None:
        some = [batch for batch in found if batch.num_rows]
        if not some:
            return
        key = (table, values)
        self._waiting.setdefault(key, []).extend(some)
        self._bytes[key] = self._bytes.get(key, 0) + sum(batch.nbytes for batch in some)
        if self._bytes[key] > _PART:
            self._write(key)
        while sum(self._bytes.values()) > _WAITING:
            self._write(max(self._bytes, key=lambda one: self._bytes[one]))

    def end(self) -> None:
        for key in list(self._waiting):
            self._write(key)
        written = {table for table, _ in self._counts}
        for table in self._schemas:
            if table not in written:  # whoever reads finds its columns
                self._write((table, tuple(None for _ in self._partition)))

    def _write(self, key: tuple[str, _Values]) -> None:
        import pyarrow
        from pyarrow import parquet

        table, values = key
        folder = os.path.join(self._folder, table)
        for name, value in zip(self._partition, values):
            folder = os.path.join(folder, f"{name}={_NO_VALUE if value is None else quote(value, safe='')}")
        os.makedirs(folder, exist_ok=True)
        number = self._counts.get(key, 0)
        self._counts[key] = number + 1
        rows = pyarrow.Table.from_batches(self._waiting.pop(key, []), self._schemas[table])
        self._bytes.pop(key, None)
        own = [name for name in rows.column_names if name not in self._partition]
        parquet.write_table(rows.select(own), os.path.join(folder, f"part-{number:05}.parquet"), compression="zstd")


def _move(made: str, target: str, old: str) -> None:
    if os.path.exists(target):
        os.rename(target, old)
    shutil.move(made, target)
