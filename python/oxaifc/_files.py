# SPDX-License-Identifier: Apache-2.0
"""Many model files by path, folder, pattern and URI: for to_parquet() and the Spark data source.

A path without a scheme, or file:, is one of this machine. With another scheme, as s3:, gs: or hdfs:, it is a place that
pyarrow.fs knows.
"""

from __future__ import annotations

import fnmatch
import glob
import hashlib
import os
import re
from dataclasses import dataclass
from typing import Any, Iterable, Iterator, Union
from urllib.parse import quote, unquote, urlsplit

from . import _core
from ._errors import FileError, MissingFileError

Paths = Union[str, "os.PathLike[str]", Iterable[Union[str, "os.PathLike[str]"]]]

_ENDINGS = (".ifc", ".ifczip", ".ifcxml", ".ifc.gz", ".ifcxml.gz")
_SCHEME = re.compile(r"[A-Za-z][A-Za-z0-9+.-]+:")  # of two letters at least: C: is a drive
_WILD = re.compile(r"[*?\[]")


@dataclass(frozen=True)
class ModelFile:
    """A file that is there: its name, a path or a URI, and its size in bytes."""

    name: str
    size: int

    @property
    def local(self) -> bool:
        """Whether the name is a path of this machine."""
        return not elsewhere(self.name)

    def open(self, threads: int = 0) -> OpenFile:
        """Reads the model; FileError names the file."""
        if self.local:
            return OpenFile(self, _core.open(self.name, threads=threads), None)
        try:
            filesystem, path = _filesystem(self.name)
            with filesystem.open_input_stream(path, compression=None) as stream:
                content = stream.read()
        except OSError as error:
            raise FileError(f"{self.name}: {error}") from error
        try:
            return OpenFile(self, _core.open(content, threads=threads), hashlib.sha256(content).hexdigest())
        except FileError as error:
            raise FileError(f"{self.name}: {error}") from error


@dataclass(frozen=True)
class OpenFile:
    """A model with the file that it was read from; `sha256` where that file is not one of this machine."""

    file: ModelFile
    model: _core.Model
    sha256: Union[str, None]


def listed(paths: Paths, absolute: bool = False) -> list[ModelFile]:
    """The files that paths, folders (with all below them) and patterns name, each once, in the order of their names.

    Of a folder those that end in .ifc, .ifczip, .ifcxml, .ifc.gz or .ifcxml.gz. Raises MissingFileError for what names
    no file.
    """
    if isinstance(paths, (str, os.PathLike)):
        paths = [paths]
    found: dict[str, ModelFile] = {}
    for path in paths:
        text = os.fspath(path)
        if text.lower().startswith("file:"):
            text = unquote(urlsplit(text).path)
        some = _remote(text) if elsewhere(text) else _local(os.path.abspath(text) if absolute else text)
        before = len(found)
        for file in some:
            found.setdefault(file.name, file)
            before = -1
        if before == len(found):
            raise MissingFileError(f"{text}: there is no such file, and no model below it")
    return [found[name] for name in sorted(found)]


def _local(path: str) -> Iterator[ModelFile]:
    if not os.path.exists(path) and _WILD.search(path):
        found: Iterable[str] = (one for one in glob.iglob(path, recursive=True) if _file(one))
    elif os.path.isdir(path):
        found = _below(path)
    else:
        found = [path] if os.path.exists(path) else []
    for one in found:
        yield ModelFile(one, os.path.getsize(one) if os.path.exists(one) else 0)


def _file(path: str) -> bool:
    """Whether it is a file, or a link to what is not there: that is told when it is opened."""
    return os.path.isfile(path) or (os.path.islink(path) and not os.path.exists(path))


def _below(path: str) -> Iterator[str]:
    """The models below a folder, through links, each folder once."""

    def fail(error: OSError) -> None:
        raise FileError(f"{error.filename}: {error.strerror}") from error

    seen = set()
    for folder, folders, names in os.walk(path, onerror=fail, followlinks=True):
        real = os.path.realpath(folder)
        if real in seen:
            folders.clear()
            continue
        seen.add(real)
        for name in names:
            if name.lower().endswith(_ENDINGS) and _file(os.path.join(folder, name)):
                yield os.path.join(folder, name)


def elsewhere(path: str) -> bool:
    """Whether it is a URI, and no path of this machine."""
    return bool(_SCHEME.match(path))


def _filesystem(uri: str) -> Any:
    """The file system of pyarrow and the path in it."""
    try:
        import pyarrow
        from pyarrow import fs
    except ImportError as error:
        raise ImportError(f"{uri}: pyarrow reads from there, and is not installed: pip install pyarrow") from error
    try:
        return fs.FileSystem.from_uri(uri)
    except (OSError, pyarrow.ArrowException) as error:
        raise FileError(f"{uri}: {error}") from error


def _remote(uri: str) -> Iterator[ModelFile]:
    """Names are URIs, with % and two digits for what may not stand in one."""
    uri = unquote(uri)
    wild = _WILD.search(uri)
    base = quote(uri[: uri.rindex("/", 0, wild.start())] if wild else uri, safe=":/@")
    filesystem, start = _filesystem(base)
    end = quote(start.strip("/"))
    prefix = base.rstrip("/")[: -len(end)] if end else base.rstrip("/") + "/"
    wanted = re.compile(_pattern(uri)) if wild else None
    try:
        from pyarrow import fs

        info = filesystem.get_file_info(start)
        if info.type == fs.FileType.NotFound:
            return
        below = [info] if info.type == fs.FileType.File else filesystem.get_file_info(
            fs.FileSelector(start, recursive=True)
        )
        for one in below:
            name = prefix + quote(one.path.lstrip("/"))
            fits = wanted.fullmatch(unquote(name)) if wanted else one is info or name.lower().endswith(_ENDINGS)
            if one.type == fs.FileType.File and fits:
                yield ModelFile(name, one.size)
    except OSError as error:
        raise FileError(f"{uri}: {error}") from error


def _pattern(text: str) -> str:
    """A pattern of paths as a regular expression: * and ? stay within a folder, ** does not."""
    parts = re.split(r"(\*\*/|\*\*|\*|\?|\[[^\]]*\])", text)
    kinds = {"**/": "(?:.*/)?", "**": ".*", "*": "[^/]*", "?": "[^/]"}
    made = []
    for part in parts:
        if part in kinds:
            made.append(kinds[part])
        elif part.startswith("[") and part.endswith("]"):
            made.append(fnmatch.translate(part).replace(r"\Z", "").replace(r"\z", ""))
        else:
            made.append(re.escape(part))
    return "".join(made)
