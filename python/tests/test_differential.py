# SPDX-License-Identifier: Apache-2.0
"""The package against the program's JSON, on real models."""

from __future__ import annotations

import json
import re
import subprocess
from pathlib import Path
from typing import Any, Iterator

import oxaifc
import pytest
from conftest import MODELS, small_models
from oxaifc import Derived, TypedValue

FILES = small_models(400_000)

TOKEN = re.compile(
    r"\s*(?:(?P<text>'(?:[^']|'')*')|(?P<enum>\.\w+\.)|(?P<ref>#\d+)|(?P<binary>\"[0-9A-F]*\")"
    r"|(?P<number>[-+]?\d+(?:\.\d*)?(?:[eE][-+]?\d+)?)|(?P<name>[A-Z]\w*)|(?P<mark>[(),$*]))",
    re.DOTALL,
)
TRUTHS: dict[str, Any] = {"T": True, "F": False, "U": "UNKNOWN"}


def parsed(text: str) -> Any:
    """A parameter of a statement (ISO 10303-21, 10) as the package tells it, its references as ("#", number)."""
    if not text:   # a parameter that the file leaves out
        return None
    tokens = TOKEN.finditer(text)
    value = parsed_value(next(tokens), tokens)
    assert next(tokens, None) is None
    return value


def parsed_value(token: "re.Match[str]", tokens: "Iterator[re.Match[str]]") -> Any:
    """The value that begins with this token."""
    word, kind = token.group().strip(), token.lastgroup
    if kind == "text":
        return word[1:-1].replace("''", "'")
    if kind == "enum":
        return TRUTHS.get(word[1:-1], word[1:-1])
    if kind == "ref":
        return ("#", int(word[1:]))
    if kind == "number":
        return float(word) if "." in word else int(word)
    if kind == "name":
        return ("typed", word, parsed_value(next(tokens), tokens)[0])
    if kind == "mark" and word in "$*":
        return None if word == "$" else "*"
    items: list[Any] = []
    for inner in tokens:
        if inner.group().strip() == ")":
            break
        if inner.group().strip() != ",":
            items.append(parsed_value(inner, tokens))
    return tuple(items)


def shown(value: Any) -> Any:
    """A value of the package in the same shape."""
    if isinstance(value, oxaifc.Entity):
        return ("#", value.id())
    if isinstance(value, TypedValue):
        return ("typed", value.is_a().upper(), shown(value.wrappedValue))
    if isinstance(value, tuple):
        return tuple(shown(item) for item in value)
    return "*" if value is Derived else value


def told(program: str, *words: str) -> Any:
    """The program's JSON."""
    run = subprocess.run([program, *words], capture_output=True, check=False)
    return json.loads(run.stdout)


@pytest.mark.skipif(not FILES, reason=f"{MODELS} is not there")
@pytest.mark.parametrize("path", FILES, ids=[path.name for path in FILES])
def test_the_package_tells_what_the_program_tells(path: Path, program: str) -> None:
    model = oxaifc.open(path)
    columns = "id,class,Name,storey.Name,material"
    rows = told(program, "list", str(path), "-f", "json", "-c", columns)
    assert [tuple(row.values()) for row in rows] == model.list(columns=columns.split(","))
    compared = 0
    for name in ("IfcRoot", "IfcProperty", "IfcPhysicalQuantity", "IfcGeometricRepresentationItem", "IfcNamedUnit"):
        for row in told(program, "show", str(path), name, "--subtypes", "--json"):
            entity = model[row["id"]]
            assert entity.is_a().upper() == row["type"]
            for attribute in row["attributes"]:
                if attribute["type"] == "IfcGloballyUniqueId":
                    continue
                value = getattr(entity, attribute["name"])
                assert shown(value) == parsed(attribute["value"]), (entity, attribute)
                compared += 1
            for inverse in row["inverses"]:
                assert {e.id() for e in getattr(entity, inverse["name"])} == set(inverse["entities"])
    assert compared > 20
    assert [record.line for record in model.errors] == read_faults(program, path)


def read_faults(program: str, path: Path) -> list[Any]:
    """The lines of what the program's check reports."""
    return [record["line"] or None for record in told(program, "check", str(path), "--all", "--json")["records"]]
