# SPDX-License-Identifier: Apache-2.0
"""Checks: what reading a file found, and whether it is valid."""

from __future__ import annotations

import os
from typing import Any, Iterable, Optional, Union

from . import _core
from ._results import CheckGroup, CheckLevel, CheckPlace, CheckReport, Record

_STEP = b"ISO-10303-21"
_PACKED = (b"\x1f\x8b", b"PK\x03\x04")


def check(
    source: Union[str, "os.PathLike[str]", bytes, bytearray, memoryview],
    *,
    levels: Iterable[str] = (),
    most_places: int = 100_000,
    threads: int = 0,
    progress: Any = None,
) -> CheckReport:
    """Whether a STEP file is valid: by ISO 10303-21, by its header, by its schema and by the rules of that.

    source: a path, or the bytes of a file. levels: some of "syntax", "header", "schema", "rules"; else all.
    most_places: of failures that are kept; those behind them are counted. progress: as for open().

    No model is made for the first three levels, and nothing is forgiven. Raises FileError where it can't be read,
    KeyboardInterrupt at Ctrl-C. Other threads run meanwhile.
    """
    if isinstance(source, (bytes, bytearray, memoryview)):
        return _core.check_bytes(bytes(source), list(levels), most_places, threads, progress)
    return _core.check_path(source, list(levels), most_places, threads, progress)


def of_model(
    model: _core.Model,
    strict: bool = False,
    *,
    levels: Iterable[str] = (),
    most_places: int = 100_000,
    threads: int = 0,
    progress: Any = None,
) -> CheckReport:
    """Model.check."""
    if not strict:
        return _of_read(model.errors, model.whole, most_places)
    path = _file_of(model)
    if path is not None:
        return check(path, levels=levels, most_places=most_places, threads=threads, progress=progress)
    return _core.check_model(model, list(levels), most_places, threads, progress)


def _file_of(model: _core.Model) -> Optional[str]:
    """The STEP file that says what the model says."""
    path = model.path
    if path is None or model._changed or not os.path.exists(path) or _core.stamp(path) != model._stamp:
        return None
    with open(path, "rb") as file:
        first = file.read(4096)
    if first.startswith(_PACKED):
        return None if ".ifcxml" in path.lower() or ".xml" in path.lower() else path
    return path if _STEP in first else None


def _of_read(records: list[Record], whole: bool, most: int) -> CheckReport:
    groups: dict[tuple[str, Optional[str]], CheckGroup] = {}
    left_out = 0
    for number, record in enumerate(records):
        group = groups.get((record.key, record.type))
        if group is None:
            group = CheckGroup(
                "read", "failure", record.key, None, record.type, None, record.message, None, 0, []
            )
        if number < most:
            group.places.append(CheckPlace(record.line, None, record.id, record.text))
        else:
            left_out += 1
        groups[record.key, record.type] = group._replace(count=group.count + 1)
    verdict = "not valid" if records else "valid" if whole else "undecided"
    level = CheckLevel("done", None, len(records), 0)
    return CheckReport(verdict, list(groups.values()), {"read": level}, left_out)
