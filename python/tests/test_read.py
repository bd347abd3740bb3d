# SPDX-License-Identifier: Apache-2.0
"""Models opened and looked at: sources, entities, values."""

from __future__ import annotations

import io
from pathlib import Path
from typing import Any, Callable

import oxaifc
import pytest
from conftest import HOUSE
from oxaifc import Derived, TypedValue


def test_every_source_gives_the_same_model(house_path: Path) -> None:
    data = HOUSE.encode()
    sources: list[Any] = [
        str(house_path), house_path, data, bytearray(data), memoryview(data), io.BytesIO(data), house_path.open("rb")
    ]
    for source in sources:
        model = oxaifc.open(source)
        assert (len(model), model.schema, model.whole, model.errors) == (26, "IFC4", True, [])
    assert oxaifc.open(house_path).path == str(house_path)
    assert oxaifc.open(data).path is None


def test_a_file_object_is_read_from_where_it_stands() -> None:
    file = io.BytesIO(b"before" + HOUSE.encode())
    file.seek(6)
    assert len(oxaifc.open(file)) == 26


@pytest.mark.parametrize(
    "source, errors, text",
    [
        ("nope.ifc", (FileNotFoundError, oxaifc.FileError, OSError), "nope.ifc: there is no such file"),
        (b"no model", (oxaifc.FileError, OSError), "buffer"),
        (12, (oxaifc.ValueTypeError, TypeError), "open() takes a path, bytes or a file"),
        (io.StringIO(HOUSE), (TypeError,), "open as binary"),
        ("/", (oxaifc.FileError,), "is a folder"),
        ("a\0b", (ValueError,), "null"),
    ],
)
def test_what_is_no_source_is_refused(source: Any, errors: tuple[type, ...], text: str) -> None:
    with pytest.raises(errors[0]) as caught:
        oxaifc.open(source)
    assert text in str(caught.value)
    for error in errors:
        assert isinstance(caught.value, error)


def test_what_a_file_object_raises_arrives() -> None:
    class Broken(io.BytesIO):
        def read(self, *_: Any) -> bytes:
            raise OverflowError("broken")

    with pytest.raises(OverflowError, match="broken"):
        oxaifc.open(Broken())


def test_entities_by_type_number_and_guid(house: oxaifc.Model) -> None:
    assert [e.id() for e in house.by_type("IfcWall")] == [3, 4]
    assert [e.id() for e in house.by_type("ifcbuildingelement")] == [3, 4, 5]
    assert house.by_type("IfcBuildingElement", include_subtypes=False) == []
    assert house.by_id(3) == house[3] == house["2YvctVUKr0kugbFTf53O9L"] == house.by_guid("2YvctVUKr0kugbFTf53O9L")
    assert [e.id() for e in house] == list(range(1, 27))
    assert len(house) == 26 and bool(house)
    assert 3 in house and 99 not in house and house[3] in house and "2YvctVUKr0kugbFTf53O9L" in house
    assert -1 not in house and "x" not in house and None not in house and oxaifc.open(HOUSE.encode())[3] not in house


@pytest.mark.parametrize(
    "ask, error, text",
    [
        (lambda f: f[99], KeyError, "there is no #99"),
        (lambda f: f[-1], KeyError, "there is no #-1"),
        (lambda f: f.by_id(99), oxaifc.NotFoundError, "there is no #99"),
        (lambda f: f["0000000000000000000000"], KeyError, "no element with the GlobalId 0000000000000000000000"),
        (lambda f: f["x"], ValueError, '"x" is no GlobalId'),
        (lambda f: f[1.5], TypeError, "by number"),
        (lambda f: f.by_type("IfcWal"), oxaifc.UnknownNameError, "did you mean IfcWall"),
        (lambda f: f[3].Nam, AttributeError, "IfcWall has no attribute Nam; did you mean Name"),
        (lambda f: f[3].is_a("IfcWal"), oxaifc.UnknownNameError, "IfcWall"),
        (lambda f: f[3][9], IndexError, "IfcWall has 9 attributes"),
        (lambda f: f[3]["x"], TypeError, "by set and property"),
        (lambda f: f[3]["Pset_WallCommon", "FireRatin"], KeyError, "did you mean FireRating?"),
        (lambda f: f[3]["Pset_WallComon", "FireRating"], oxaifc.NotFoundError, "did you mean Pset_WallCommon?"),
        (lambda f: f.nope, AttributeError, "nope"),
        (lambda f: f.select("IfcWall,"), oxaifc.QueryError, "column"),
        (lambda f: f.sql("SELECT nope FROM element"), oxaifc.Error, "nope"),
        (lambda f: f.sql("DROP TABLE element"), oxaifc.SqlError, ""),
        (lambda f: oxaifc.Model("IFC9"), oxaifc.UnknownNameError, "IFC9"),
    ],
)
def test_mistakes_are_told(
    house: oxaifc.Model, ask: Callable[[Any], Any], error: type[Exception], text: str
) -> None:
    with pytest.raises(error) as caught:
        ask(house)
    assert text in str(caught.value)


def test_near_names_are_told(house: oxaifc.Model) -> None:
    with pytest.raises(oxaifc.UnknownNameError) as caught:
        house.by_type("IfcWal")
    assert "IfcWall" in caught.value.near
    with pytest.raises(oxaifc.QueryError) as query:
        house.select("IfcWall, =")
    assert query.value.column == 10
    assert not hasattr(house[3], "Nope") and hasattr(house[3], "Name")


@pytest.mark.parametrize(
    "number, name, value",
    [
        (3, "GlobalId", "2YvctVUKr0kugbFTf53O9L"),
        (3, "Description", None),
        (3, "PredefinedType", "SOLIDWALL"),
        (4, "Name", "N\u00f6rd"),
        (5, "OverallHeight", 2.1),
        (13, "Coordinates", (1.0, 2.5, -0.0)),
        (14, "Dimensions", Derived),
        (8, "NominalValue", TypedValue("IfcLabel", "F 90")),
        (9, "NominalValue", TypedValue("IfcBoolean", True)),
        (10, "EnumerationValues", (TypedValue("IfcLabel", "NEW"), TypedValue("IfcLabel", "OLD"))),
        (24, "CoordList", ((0.0, 0.0), (1.0, 0.0))),
        (25, "Segments", (TypedValue("IfcLineIndex", (1, 2)),)),
        (25, "SelfIntersect", True),
        (26, "LayerOn", "UNKNOWN"),
        (26, "LayerFrozen", False),
        (26, "LayerStyles", ()),
    ],
)
def test_values_are_pythons_own(house: oxaifc.Model, number: int, name: str, value: Any) -> None:
    got = getattr(house[number], name)
    assert got == value and type(got) is type(value)


def test_references_and_inverse_attributes(house: oxaifc.Model) -> None:
    assert house[7].RelatedElements == (house[3], house[4], house[5])
    assert house[7].RelatingStructure == house[2]
    assert house[2].ContainsElements == (house[7],)
    assert house[13].StyledByItem == ()
    assert [e.id() for e in house[3].IsDefinedBy] == [12, 23]


def test_an_entity_is_a_row_of_attributes(house: oxaifc.Model) -> None:
    wall = house[3]
    assert len(wall) == 9 and wall[2] == wall[-7] == "South" and wall[1:4] == (None, "South", None)
    assert list(wall)[0] == "2YvctVUKr0kugbFTf53O9L"
    assert wall.id() == 3 and wall.is_a() == "IfcWall" and wall.is_a("IfcProduct") and not wall.is_a("IfcDoor")
    assert wall.file is house and {"Name", "IsDefinedBy", "is_a"} <= set(dir(wall))
    assert repr(wall) == "#3=IfcWall('2YvctVUKr0kugbFTf53O9L',$,'South',$,$,$,$,'T1','SOLIDWALL')"
    assert repr(house[14]) == "#14=IfcSIUnit(*,'LENGTHUNIT','MILLI','METRE')"
    assert repr(house[7]).endswith("(#3,#4,#5),#2)") and repr(house) == "<oxaifc.Model IFC4, 26 entities>"
    assert (repr(Derived), bool(Derived)) == ("Derived", False)


def test_long_values_are_cut_between_characters(house: oxaifc.Model) -> None:
    for before in range(4):
        house[3].Name = "x" * before + "\u20ac" * 40
        assert "\u20ac..." in repr(house[3])


def test_messages_quote_any_bytes(tmp_path: Path) -> None:
    with pytest.raises(oxaifc.FileError):
        oxaifc.open(HOUSE.replace("'IFC4'", "'IFC\udcff\udc80'").encode("utf-8", "surrogateescape"))


def test_info_is_a_dict(house: oxaifc.Model) -> None:
    info = house[16].get_info()
    assert list(info)[:3] == ["id", "type", "GlobalId"] and info["RelatingMaterial"] == house[15]
    deep = house[16].get_info(recursive=True, include_identifier=False)
    assert "id" not in deep and deep["RelatingMaterial"]["Name"] == "Brick" and len(deep["RelatedObjects"]) == 2
    assert "RelatingMaterial" not in house[16].get_info(scalar_only=True)


def test_entities_are_equal_by_instance(house: oxaifc.Model) -> None:
    other = oxaifc.open(HOUSE.encode())
    assert house[3] == house[3] and house[3] != house[4] and house[3] != other[3] and house[3] != "#3"
    assert len({house[3], house[3], house[4]}) == 2 and house[3] < house[4] >= house[4]
    assert sorted([house[5], house[3]]) == [house[3], house[5]]
    with pytest.raises(TypeError):
        _ = house[3] < other[4]


def test_the_header(house: oxaifc.Model) -> None:
    name, description = house.header.file_name, house.header.file_description
    assert (name.name, name.time_stamp, name.author, name.organization) == ("house.ifc", "2026-01-02T03:04:05", ["A", "B"], ["O"])
    assert (name.preprocessor_version, name.originating_system, name.authorization) == ("P", "S", "Z")
    assert (description.description, description.implementation_level) == (["ViewDefinition [ReferenceView]"], "2;1")
    assert house.header.file_schema.schema_identifiers == ["IFC4"]
    name.author = ["C"]
    assert house.header.file_name.author == ["C"]


def test_faults_are_records() -> None:
    model = oxaifc.open(HOUSE.replace("'South'", "12").encode())
    (record,) = model.errors
    assert (record.severity, record.line, record.id, record.type) == ("error", 10, 3, "IfcWall")
    assert record.key and record.message and not model.whole and model[3].Name == ""
    report = model.check()
    assert (report.verdict, report.valid, report.groups[0].count) == ("not valid", False, 1)
    assert report.groups[0].places[0].line == 10


def test_who_refers_and_what_is_led_to(house: oxaifc.Model) -> None:
    for _ in range(3):   # a look over the model, a table, the table
        assert [e.id() for e in house.get_inverse(house[3])] == [7, 12, 16, 23]
    assert house.get_inverse(house[26]) == []
    assert [e.id() for e in house.traverse(house[12])] == [12, 3, 11, 8, 9, 10]
    assert [e.id() for e in house.traverse(house[12], max_levels=1)] == [12, 3, 11]
    assert [e.id() for e in house.traverse(house[6], breadth_first=True)] == [6, 1, 2]
    with pytest.raises(oxaifc.RemovedError):
        house.get_inverse(oxaifc.open(HOUSE.encode())[3])


def test_queries(house: oxaifc.Model) -> None:
    assert [e.id() for e in house.select("IfcWall, Pset_WallCommon.FireRating=F 90")] == [3]
    rows = house.list("IfcWall", ["Name", "storey.Name", "Pset_WallCommon.LoadBearing"])
    assert rows.columns == ("Name", "storey.Name", "Pset_WallCommon.LoadBearing")
    assert rows == [("South", "EG", True), ("N\u00f6rd", "EG", None)]
    assert house.list("IfcDoor") == [(5, "IfcDoor", "0ZvctVUKr0kugbFTf53O9L", "D1")]
    groups = house.list("IfcBuildingElement", group_by=["class"], count=True)
    assert groups.dicts() == [{"class": "IfcDoor", "count": 1}, {"class": "IfcWall", "count": 2}]
    assert house.list("IfcDoor", sum=["OverallHeight"]) == [(2.1,)]
    with pytest.raises(oxaifc.RefusedError):
        house.list("IfcDoor", ["Name"], count=True)
    assert house.sql("SELECT id, name FROM element WHERE type = 'IfcWall' ORDER BY id") == [(3, "South"), (4, "N\u00f6rd")]
    assert house.sql("SELECT count(*) AS n FROM IfcWall").columns == ("n",)


def test_hints_are_warnings(house: oxaifc.Model) -> None:
    with pytest.warns(oxaifc.Hint, match="FireRatin"):
        assert house.select("IfcWall, Pset_WallCommon.FireRatin=F 90") == []
