# SPDX-License-Identifier: Apache-2.0
"""The package against the program's JSON, on real models."""

from __future__ import annotations

import json
import subprocess
from pathlib import Path
from typing import Any

import oxaifc
import pytest
from conftest import MODELS, small_models
from oxaifc import Derived, TypedValue

FILES = small_models(400_000)


def shown(value: Any) -> Any:
    """A value as the program's JSON has it."""
    if isinstance(value, oxaifc.Entity):
        return {"ref": value.id()}
    if isinstance(value, TypedValue):
        return {"type": value.is_a(), "value": shown(value.wrappedValue)}
    if isinstance(value, tuple):
        return [shown(item) for item in value]
    if isinstance(value, bytes):
        return value.hex().upper()
    return {"derived": True} if value is Derived else value


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
    faulty = {record.id for record in model.errors if "Guid" in record.key}
    for name in ("IfcRoot", "IfcProperty", "IfcPhysicalQuantity", "IfcGeometricRepresentationItem", "IfcNamedUnit"):
        for row in told(program, "show", str(path), name, "--subtypes", "--json"):
            entity = model[row["id"]]
            assert entity.is_a() == row["type"]
            values = {key: shown(value) for key, value in entity.get_info(False).items() if key != "type"}
            if entity.id() in faulty:   # a GlobalId that could not be read is dealt by chance
                values["GlobalId"] = row["attributes"]["GlobalId"]
            assert values == row["attributes"]
            for inverse, numbers in row["inverses"].items():
                assert sorted(e.id() for e in getattr(entity, inverse)) == sorted(one["ref"] for one in numbers)
            compared += len(row["attributes"])
    assert compared > 20
    assert sorted((record.line or 0, record.key) for record in model.errors) == read_faults(program, path)


def read_faults(program: str, path: Path) -> list[Any]:
    """The lines and keys of what the program's check reports."""
    return sorted((record["line"] or 0, record["key"]) for record in told(program, "check", str(path), "--all", "--json")["records"])
