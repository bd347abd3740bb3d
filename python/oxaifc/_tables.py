# SPDX-License-Identifier: Apache-2.0
"""What tables are made of, and elements as a data frame of pandas."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, NamedTuple

from . import _core
from ._portfolio import required

if TYPE_CHECKING:
    import pandas


class Column(NamedTuple):
    """A column of a table."""

    name: str  # as in element_id
    type: str  # boolean, integer, number, text, json; or list of one of them
    nullable: bool  # whether a cell may be without a value
    description: str  # in a few words


Column.__module__ = "oxaifc"

_DTYPES = {"boolean": "boolean", "integer": "Int64", "number": "float64"}


def to_dataframe(model: _core.Model, query: str = "IfcElement", *, properties: bool = True) -> pandas.DataFrame:
    """Elements as a pandas.DataFrame: one row an element, by number.

    query: a class, as in "IfcWall", with its subtypes; what select() takes; or one of oxaifc.table_names(), which is taken
    as it is.

    The columns are id, type, the attributes of the class (of what a query selects, those of all of its classes); then
    properties and quantities, those of the type too, as Pset_WallCommon.FireRating, in the order in which they come.
    References are numbers of entities. A property is a column of truth values or of numbers, where all of its values are.

    Raises UnknownNameError for a class that there is none of, QueryError for what is no query, ImportError without pandas.
    """
    pandas = required("pandas", "A data frame")
    if query.strip().isidentifier():
        table = model.table(query.strip())
        data = _frame(pandas, table)
        properties = properties and table.name not in _core.table_names()
    else:
        data = _selected(pandas, model, query)
    if not properties:
        return data
    return pandas.concat([data, _properties(pandas, model, data["id"].tolist())], axis=1)


def _text(pandas: Any) -> str:
    return "str" if int(pandas.__version__.split(".")[0]) >= 3 else "object"


def _frame(pandas: Any, table: _core.Table) -> Any:
    cells = table.to_dict()
    fixed = table.name in _core.table_names()
    text = _text(pandas)
    columns = {}
    for column in table.columns:
        if column.name == "file" and not fixed:
            continue
        dtype: Any = "object" if column.type.startswith("list") else _DTYPES.get(column.type, text)
        if column.type == "integer" and not column.nullable:
            dtype = "int64"
        columns[column.name] = pandas.Series(cells[column.name], dtype=dtype)
    return pandas.DataFrame(columns)


def _selected(pandas: Any, model: _core.Model, query: str) -> Any:
    """The table of each class that there is an element of, one below the other, by number."""
    elements = model.select(query)
    numbers = [element.id() for element in elements]
    classes = dict.fromkeys(element.is_a() for element in elements)
    frames = []
    for name in classes:
        data = _frame(pandas, model.table(name))
        frames.append(data[(data["type"] == name) & data["id"].isin(numbers)])
    if not frames:
        return pandas.DataFrame({"id": pandas.Series(dtype="int64"), "type": pandas.Series(dtype="str")})
    return pandas.concat(frames).sort_values("id", ignore_index=True)


def _properties(pandas: Any, model: _core.Model, numbers: list[int]) -> Any:
    """What the elements of these numbers have, a column a property."""
    places = {number: place for place, number in enumerate(numbers)}
    texts: dict[str, dict[int, str]] = {}
    values: dict[str, dict[int, Any]] = {}
    for _, number, group, name, text, real, truth, *_ in model.table("property"):
        place = places.get(number)
        if place is None or text is None:
            continue
        column = f"{group}.{name}"
        texts.setdefault(column, {})[place] = text
        values.setdefault(column, {})[place] = truth if real is None else real
    made = {}
    for column, cells in texts.items():
        kinds = {type(value) for value in values[column].values()}
        dtype = "boolean" if kinds == {bool} else "float64" if kinds == {float} else _text(pandas)
        made[column] = _series(pandas, cells if dtype == _text(pandas) else values[column], len(places), dtype)
    quantities: dict[str, dict[int, float]] = {}
    for _, number, group, name, real, *_ in model.table("quantity"):
        place = places.get(number)
        if place is not None and real is not None and f"{group}.{name}" not in texts:
            quantities.setdefault(f"{group}.{name}", {})[place] = real
    for column, reals in quantities.items():
        made[column] = _series(pandas, reals, len(places), "float64")
    return pandas.DataFrame(made, index=range(len(places)))


def _series(pandas: Any, cells: dict[int, Any], length: int, dtype: str) -> Any:
    return pandas.Series([cells.get(place) for place in range(length)], dtype=dtype)
