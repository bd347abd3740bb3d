# SPDX-License-Identifier: Apache-2.0
"""Models changed and written: attributes, entities, properties."""

from __future__ import annotations

import io
from pathlib import Path
from typing import Any, Callable

import oxaifc
import pytest
from conftest import HOUSE
from oxaifc import Derived, TypedValue


def again(model: oxaifc.Model) -> oxaifc.Model:
    """The model as it is read after it was written."""
    file = io.BytesIO()
    model.write(file)
    return oxaifc.open(file.getvalue())


@pytest.mark.parametrize(
    "number, name, value, held",
    [
        (3, "Name", "\u00e4\U0001f600'\\", "\u00e4\U0001f600'\\"),
        (3, "Name", None, None),
        (3, "PredefinedType", "parapet", "PARAPET"),
        (5, "OverallHeight", 2, 2.0),
        (13, "Coordinates", [1, 2.5], (1.0, 2.5)),
        (13, "Coordinates", (c / 4 for c in range(3)), (0.0, 0.25, 0.5)),
        (8, "NominalValue", TypedValue("IfcReal", 1), TypedValue("IfcReal", 1.0)),
        (8, "NominalValue", TypedValue("IfcLogical", "UNKNOWN"), TypedValue("IfcLogical", "UNKNOWN")),
        (25, "SelfIntersect", False, False),
        (26, "LayerOn", True, True),
        (26, "LayerFrozen", "UNKNOWN", "UNKNOWN"),
        (24, "CoordList", [[1, 2], [3, 4]], ((1.0, 2.0), (3.0, 4.0))),
        (1, "RepresentationContexts", None, None),
    ],
)
def test_attributes_are_set_and_written(house: oxaifc.Model, number: int, name: str, value: Any, held: Any) -> None:
    setattr(house[number], name, value)
    assert getattr(house[number], name) == held
    assert getattr(again(house)[number], name) == held


@pytest.mark.parametrize(
    "change, error, text",
    [
        (lambda f: setattr(f[3], "Name", 12), ValueError, "IfcWall #3: Name takes a text"),
        (lambda f: setattr(f[3], "Nam", "x"), AttributeError, "did you mean Name"),
        (lambda f: setattr(f[3], "IsDefinedBy", ()), ValueError, "inverse attribute"),
        (lambda f: setattr(f[3], "PredefinedType", "SOLID"), ValueError, "enumerator"),
        (lambda f: setattr(f[3], "GlobalId", None), ValueError, "GlobalId"),
        (lambda f: setattr(f[5], "OverallHeight", float("nan")), ValueError, "OverallHeight"),
        (lambda f: setattr(f[3], "Name", object()), TypeError, "and no object"),
        (lambda f: setattr(f[3], "Name", {"a": 1}), TypeError, "and no dict"),
        (lambda f: setattr(f[3], "Name", "\ud800"), UnicodeEncodeError, "surrogates"),
        (lambda f: setattr(f[15], "Name", f[3]), ValueError, "an element"),
        (lambda f: setattr(f[7], "RelatingStructure", f[3]), ValueError, "IfcSpatialElement"),
        (lambda f: setattr(f[7], "RelatingStructure", oxaifc.Model()), TypeError, "Model"),
        (lambda f: f[3].__setitem__(9, 1), IndexError, "9 attributes"),
        (lambda f: f[3].__delattr__("GlobalId"), ValueError, "GlobalId"),
        (lambda f: f.create_entity("IfcWal"), oxaifc.UnknownNameError, "did you mean IfcWall"),
        (lambda f: f.create_entity("IfcProduct"), ValueError, "abstract"),
        (lambda f: f.createIfcWall(Nam="x"), AttributeError, "Nam"),
        (lambda f: f.createIfcWall(*range(10)), TypeError, "9 attributes"),
        (lambda f: f.createIfcWall("0000000000000000000000", GlobalId="x"), TypeError, "given twice"),
        (lambda f: f.createIfcLabel(), TypeError, "takes one value"),
        (lambda f: f.remove(12), TypeError, ""),
        (lambda f: f.write(12), TypeError, "a path or a file"),
        (lambda f: f.write("x.txt"), oxaifc.FileError, "x.txt"),
        (lambda f: f.write("/nope/x.ifc"), OSError, "/nope/x.ifc"),
        (lambda f: f.write("x.ifc", format="json"), ValueError, "step, ifcxml, simple"),
        (lambda f: f.set_property(f[13], "A", "B", 1), ValueError, "no property sets"),
        (lambda f: f[3].__setitem__(("Pset_WallCommon", "Status"), 1), ValueError, ""),
    ],
)
def test_what_can_not_be_is_refused(
    house: oxaifc.Model, change: Callable[[Any], Any], error: type[Exception], text: str
) -> None:
    before = io.BytesIO()
    house.write(before)
    with pytest.raises(error) as caught:
        change(house)
    assert text in str(caught.value)
    after = io.BytesIO()
    house.write(after)
    assert after.getvalue() == before.getvalue()


def test_entities_are_made(house: oxaifc.Model) -> None:
    wall = house.create_entity("IfcWall", Name="W", PredefinedType="PARAPET")
    assert (wall.id(), wall.Name, wall.PredefinedType, len(wall.GlobalId)) == (27, "W", "PARAPET", 22)
    point = house.createIfcCartesianPoint((0.0, 1.0))
    assert point.Coordinates == (0.0, 1.0) and point.id() == 28
    assert house.createIfcSIUnit(UnitType="LENGTHUNIT", Name="METRE").Dimensions is Derived
    label = house.createIfcLabel("x")
    assert label == TypedValue("IfcLabel", "x") and label.is_a("IfcLabel") and label[0] == "x"
    assert house.createIfcPropertySingleValue("P", None, label, None).NominalValue == label
    assert len(again(house)) == 30


def test_a_wrapped_value_is_set_in_place(house: oxaifc.Model) -> None:
    value = house[8].NominalValue
    value.wrappedValue = "F 60"
    assert house[8].NominalValue == value == TypedValue("IfcLabel", "F 60")
    with pytest.raises(ValueError):
        value.wrappedValue = 12
    house[8].NominalValue = TypedValue("IfcText", "x")
    with pytest.raises(oxaifc.RemovedError):
        value.wrappedValue = "y"
    assert house[8].NominalValue.wrappedValue == "x"


def test_removed_entities_are_told(house: oxaifc.Model) -> None:
    wall, door, relation = house[3], house[5], house[12]
    removed = house.remove(wall)
    assert (removed.count, [e.id() for e in removed.incomplete]) == (3, [])   # with what related it alone
    for ask in (lambda: wall.Name, lambda: wall.id(), lambda: wall[0], lambda: len(wall), lambda: relation.is_a()):
        with pytest.raises(oxaifc.RemovedError, match="was removed"):
            ask()
    assert repr(wall) == "<removed oxaifc.Entity>" and wall == wall and wall in {wall}
    assert house.remove([house[4], door]).count >= 3 and house.by_type("IfcElement") == []
    assert house.remove("IfcMaterial").count == 1 and house.remove([]).count == 0
    again(house)


def test_an_entity_keeps_its_model() -> None:
    wall = oxaifc.open(HOUSE.encode())[3]
    assert wall.Name == "South" and len(wall.file) == 26
    value = oxaifc.open(HOUSE.encode())[8].NominalValue
    value.wrappedValue = "F 30"
    header = oxaifc.open(HOUSE.encode()).header.file_name
    assert header.name == "house.ifc"


def test_properties(house: oxaifc.Model) -> None:
    south, north, door = house[3], house[4], house[5]
    south["Pset_WallCommon", "FireRating"] = "F 120"
    north["Pset_WallCommon", "FireRating"] = "F 60"      # beside that of the type
    door["Pset_WallCommon", "LoadBearing"] = False       # with the type that the file has for it
    door["Pset_Mine", "Number"] = 12
    door["Pset_Mine", "Texts"] = ["a", "b"]
    assert south["Pset_WallCommon", "FireRating"] == "F 120" and north["Pset_WallCommon", "FireRating"] == "F 60"
    assert house[17].HasPropertySets[0].HasProperties[0].NominalValue.wrappedValue == "F 30"
    assert door["Pset_Mine", "Texts"] == ("a", "b") and door["Pset_Mine", "Number"] == 12
    read = again(house)
    assert read[5]["Pset_WallCommon", "LoadBearing"] is False
    types = [p.NominalValue.is_a() for p in read.by_type("IfcPropertySingleValue") if p.Name in ("LoadBearing", "Number")]
    assert types == ["IfcBoolean", "IfcBoolean", "IfcInteger"]
    house.set_property("IfcWall", "Pset_All", "Mark", TypedValue("IfcIdentifier", "M"))
    (mark,) = [p for p in house.by_type("IfcPropertySingleValue") if p.Name == "Mark"]   # one for both
    assert mark.NominalValue == TypedValue("IfcIdentifier", "M")


def test_the_type_of_a_new_property_is_that_of_the_files_others(house: oxaifc.Model) -> None:
    house[8].NominalValue = TypedValue("IfcIdentifier", "F 90")
    house[5]["Pset_WallCommon", "FireRating"] = "F 30"
    (made,) = [p for p in house.by_type("IfcPropertySingleValue") if p.id() > 26]
    assert made.NominalValue == TypedValue("IfcIdentifier", "F 30")
    with pytest.raises(oxaifc.RefusedError):
        house[4].__setitem__(("Pset_WallCommon", "LoadBearing"), "yes")


def test_files_are_written(house: oxaifc.Model, tmp_path: Path) -> None:
    for name in ("a.ifc", "a.ifc.gz", "a.ifczip", "a.ifcxml", "a.ifcsimple.gz"):
        path = tmp_path / name
        records = house.write(path, format="simple" if "simple" in name else None)
        keys = {"Error_EntityNotConnected"} if name == "a.ifcxml" else set()   # it holds what the project reaches
        assert {record.key for record in records} == keys
        assert len(oxaifc.open(path)) == 26 - len(records), name
    assert house.write(tmp_path / "b.ifc", threads=1) == house.write(io.BytesIO())


def test_what_write_raises_arrives(house: oxaifc.Model) -> None:
    class Broken(io.BytesIO):
        def write(self, *_: Any) -> int:
            raise OverflowError("broken")

    with pytest.raises(OverflowError, match="broken"):
        house.write(Broken())


def test_a_raw_file_may_take_parts(house: oxaifc.Model) -> None:
    class Slow(io.RawIOBase):
        taken = b""

        def write(self, data: Any) -> int:
            self.taken += bytes(data[:100])
            return min(100, len(data))

    slow, whole = Slow(), io.BytesIO()
    house.write(slow)  # type: ignore[arg-type]
    house.write(whole)
    assert slow.taken == whole.getvalue()


def test_numbers_of_numpy_are_numbers(house: oxaifc.Model) -> None:
    numpy = pytest.importorskip("numpy")
    house[13].Coordinates = numpy.array([1.5, 2.5], dtype=numpy.float32)
    assert house[13].Coordinates == (1.5, 2.5)
    house[24].CoordList = numpy.arange(6).reshape(3, 2)
    assert house[24].CoordList == ((0.0, 1.0), (2.0, 3.0), (4.0, 5.0))
    house[5].OverallHeight = numpy.float32(2.5)
    assert house[5].OverallHeight == 2.5
