# SPDX-License-Identifier: Apache-2.0
"""What the package raises. Every exception is an oxaifc.Error, and one of Python's own as well."""

from __future__ import annotations

from typing import TYPE_CHECKING, Iterable

if TYPE_CHECKING:
    from ._results import IdsFault

__all__ = [
    "Error",
    "FileError",
    "Hint",
    "IdsError",
    "MissingFileError",
    "NotFoundError",
    "QueryError",
    "RefusedError",
    "RemovedError",
    "SqlError",
    "UnknownNameError",
    "ValueTypeError",
]


class Error(Exception):
    """Everything that the package raises on purpose."""


class UnknownNameError(Error, AttributeError):
    """A type, an attribute or a schema by a name that there is none of; `near` has those that may have been meant."""

    def __init__(self, message: str, near: Iterable[str] = ()) -> None:
        super().__init__(message)
        self.near: tuple[str, ...] = tuple(near)


class NotFoundError(Error, KeyError):
    """An entity, a set or a property that is not there."""

    def __str__(self) -> str:
        return Exception.__str__(self)


class ValueTypeError(Error, TypeError):
    """A value of another type than is wanted."""


class RefusedError(Error, ValueError):
    """A value that can't be taken: the schema does not allow it."""


class RemovedError(Error, ReferenceError):
    """An entity that was removed, or that is of another model."""


class FileError(Error, OSError):
    """A file that can't be opened, read as a model, or written."""


class MissingFileError(FileError, FileNotFoundError):
    """A file that is not there."""


class Hint(UserWarning):
    """A query that is right and may not mean what was meant: what no element has, with near names."""


class QueryError(Error, ValueError):
    """A text that is no query; `column` tells where, in characters, from 1."""

    def __init__(self, message: str, column: int = 0) -> None:
        super().__init__(message)
        self.column = column


class IdsError(Error, ValueError):
    """A file of requirements that is no valid IDS; `faults` has all that is wrong with it, the message tells them."""

    def __init__(self, message: str, faults: Iterable[IdsFault] = ()) -> None:
        super().__init__(message)
        self.faults: tuple[IdsFault, ...] = tuple(faults)

    def __str__(self) -> str:
        lines = [f"line {fault.line}: {fault.message}" if fault.line else fault.message for fault in self.faults]
        return "\n  ".join([Exception.__str__(self), *lines])


class SqlError(Error, ValueError):
    """An SQL statement that is wrong, not allowed, or out of its bounds."""


for _name in __all__:
    globals()[_name].__module__ = "oxaifc"
