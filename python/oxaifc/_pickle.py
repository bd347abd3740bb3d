# SPDX-License-Identifier: Apache-2.0
"""Pickled models and entities: a model is its path, an entity its model and its number."""

from __future__ import annotations

import os
import pickle
from typing import Any, Callable

from . import _core
from ._errors import FileError


def reduce(model: _core.Model) -> tuple[Callable[..., _core.Model], tuple[Any, ...]]:
    """How a model is pickled. PicklingError for one that its file does not hold."""
    if model.path is None:
        raise pickle.PicklingError("a model is pickled as its path, and this one was opened from none: write() it first")
    if model._changed:
        raise pickle.PicklingError("a model is pickled as its path, and this one was changed: write() and open() it first")
    return reopen, (model.path, model._stamp)


def reopen(path: str, stamp: tuple[int, int]) -> _core.Model:
    """Opens the file again. FileError where it is another one by now."""
    if os.path.exists(path) and _core.stamp(path) != stamp:
        raise FileError(f"{path}: was changed since the model was pickled")
    return _core.open(path)


def entity(model: _core.Model, number: int) -> _core.Entity:
    """The entity of that number."""
    return model.by_id(number)
