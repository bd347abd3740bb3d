# SPDX-License-Identifier: Apache-2.0
"""Three programs of every day, each in few statements, and what they do."""

from __future__ import annotations

import ast
import inspect
import textwrap
from pathlib import Path
from typing import Any, Callable

import oxaifc
import pytest
from oxaifc.util import get_decomposition, get_psets


def walls_by_storey(path: Path) -> list[Any]:
    """Walls by storey with their properties."""
    rows = []
    f = oxaifc.open(path)
    for storey in f.by_type("IfcBuildingStorey"):
        for wall in get_decomposition(storey, "IfcWall"):
            rows.append((storey.Name, wall.Name, get_psets(wall)))
    return rows


def property_on_all_walls(path: Path, out: Path) -> None:
    """A property on all walls, written back."""
    f = oxaifc.open(path)
    f.set_property("IfcWall", "Pset_WallCommon", "FireRating", "F 120")
    f.write(out)


def wall_from_nothing(out: Path) -> None:
    """A wall with placement, extruded solid and property set from nothing."""
    f = oxaifc.Model("IFC4")
    axes = f.createIfcAxis2Placement3D(f.createIfcCartesianPoint((0.0, 0.0, 0.0)))
    context = f.createIfcGeometricRepresentationContext(None, "Model", 3, 1e-5, axes)
    metre = f.createIfcSIUnit(UnitType="LENGTHUNIT", Name="METRE")
    f.createIfcProject(Name="P", RepresentationContexts=[context], UnitsInContext=f.createIfcUnitAssignment([metre]))
    profile = f.createIfcRectangleProfileDef("AREA", None, None, 4.0, 0.2)
    solid = f.createIfcExtrudedAreaSolid(profile, axes, f.createIfcDirection((0.0, 0.0, 1.0)), 3.0)
    body = f.createIfcShapeRepresentation(context, "Body", "SweptSolid", [solid])
    shape = f.createIfcProductDefinitionShape(None, None, [body])
    wall = f.createIfcWall(Name="W", ObjectPlacement=f.createIfcLocalPlacement(None, axes), Representation=shape)
    wall["Pset_WallCommon", "FireRating"] = "F 90"
    f.write(out)


def statements(function: Callable[..., Any]) -> int:
    """Statements of a function, without its docstring, the list that a test needs and what it returns."""
    tree = ast.parse(textwrap.dedent(inspect.getsource(function))).body[0]
    nodes = [n for n in ast.walk(tree) if isinstance(n, ast.stmt) and n is not tree and not isinstance(n, ast.Return)]
    plain = [n for n in nodes if not (isinstance(n, ast.Expr) and isinstance(n.value, ast.Constant))]
    return len([n for n in plain if not (isinstance(n, ast.Assign) and isinstance(n.value, ast.List))])


@pytest.mark.parametrize(
    "function, most", [(walls_by_storey, 5), (property_on_all_walls, 3), (wall_from_nothing, 12)]
)
def test_programs_are_short(function: Callable[..., Any], most: int) -> None:
    assert 0 < statements(function) <= most


def test_walls_by_storey(house_path: Path) -> None:
    assert walls_by_storey(house_path) == [
        ("EG", "South", {"Pset_WallCommon": {"FireRating": "F 90", "LoadBearing": True, "Status": ("NEW", "OLD"), "id": 11},
                         "Qto_WallBaseQuantities": {"Length": 4.5, "id": 21}}),
        ("EG", "N\u00f6rd", {"Pset_WallCommon": {"FireRating": "F 30", "id": 19}}),
    ]


def test_property_on_all_walls(house_path: Path, tmp_path: Path) -> None:
    property_on_all_walls(house_path, tmp_path / "out.ifc")
    f = oxaifc.open(tmp_path / "out.ifc")
    assert [wall["Pset_WallCommon", "FireRating"] for wall in f.by_type("IfcWall")] == ["F 120", "F 120"]
    assert f[17].HasPropertySets[0].HasProperties[0].NominalValue.wrappedValue == "F 30"


def test_a_wall_from_nothing_is_valid(tmp_path: Path) -> None:
    wall_from_nothing(tmp_path / "out.ifc")
    f = oxaifc.open(tmp_path / "out.ifc")
    assert f.by_type("IfcWall")[0]["Pset_WallCommon", "FireRating"] == "F 90"
    report = f.check(strict=True)
    assert [group for group in report.groups if group.weight == "failure"] == []
