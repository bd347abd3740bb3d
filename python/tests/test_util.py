# SPDX-License-Identifier: Apache-2.0
"""oxaifc.util, diff and check."""

from __future__ import annotations

import io
import os
import subprocess
import sys
from pathlib import Path
from typing import Any

import oxaifc
import pytest
from conftest import HOUSE
from oxaifc import util


def test_psets(house: oxaifc.Model) -> None:
    south, north = house[3], house[4]
    own = {"FireRating": "F 90", "LoadBearing": True, "Status": ("NEW", "OLD"), "id": 11}
    lengths = {"Length": 4.5, "id": 21}
    assert util.get_psets(south) == {"Pset_WallCommon": own, "Qto_WallBaseQuantities": lengths}
    assert util.get_psets(south, psets_only=True) == {"Pset_WallCommon": own}
    assert util.get_psets(south, qtos_only=True) == {"Qto_WallBaseQuantities": lengths}
    assert util.get_psets(north) == {"Pset_WallCommon": {"FireRating": "F 30", "id": 19}}
    assert util.get_psets(north, should_inherit=False) == {}
    assert util.get_psets(house[17], should_inherit=False) == {"Pset_WallCommon": {"FireRating": "F 30", "id": 19}}
    assert util.get_psets(house[15]) == {}


def test_other_kinds_of_properties() -> None:
    extra = """#30=IFCPROPERTYBOUNDEDVALUE('B',$,IFCREAL(2.),IFCREAL(1.),$,$);
#31=IFCPROPERTYTABLEVALUE('T',$,(IFCREAL(1.)),(IFCLABEL('x')),$,$,$,$);
#32=IFCCOMPLEXPROPERTY('C',$,'U',(#8));
#33=IFCPROPERTYREFERENCEVALUE('R',$,$,#15);
#34=IFCPROPERTYLISTVALUE('L',$,(IFCINTEGER(1),IFCINTEGER(2)),$);
#35=IFCPROPERTYSET('0cvctVUKr0kugbFTf53O9L',$,'Pset_Other',$,(#30,#31,#32,#33,#34));
#36=IFCRELDEFINESBYPROPERTIES('1cvctVUKr0kugbFTf53O9L',$,$,$,(#5),#35);
ENDSEC;
END-"""
    model = oxaifc.open(HOUSE.replace("ENDSEC;\nEND-", extra).encode())
    assert util.get_psets(model[5])["Pset_Other"] == {
        "B": {"LowerBoundValue": 1.0, "UpperBoundValue": 2.0, "SetPointValue": None},
        "T": {"DefiningValues": (1.0,), "DefinedValues": ("x",)},
        "C": {"FireRating": "F 90"},
        "R": model[15],
        "L": (1, 2),
        "id": 35,
    }


def test_what_is_related(house: oxaifc.Model) -> None:
    south, north, storey, project = house[3], house[4], house[2], house[1]
    assert util.get_type(north) == house[17] == util.get_type(house[17]) and util.get_type(south) is None
    assert util.get_container(south) == storey and util.get_container(south, "IfcBuilding") is None
    assert util.get_parent(storey) == project and util.get_parent(project) is None
    assert [e.id() for e in util.get_decomposition(project)] == [2, 3, 4, 5]
    assert [e.id() for e in util.get_decomposition(project, "IfcWall")] == [3, 4]
    assert [e.id() for e in util.get_decomposition(project, is_recursive=False)] == [2]
    assert util.get_material(south) == house[15] and util.get_materials(south) == [house[15]]
    assert util.get_material(house[5]) is None and util.get_materials(house[5]) == []
    assert util.get_predefined_type(south) == "SOLIDWALL" and util.get_predefined_type(north) == "PARTITIONING"
    assert util.get_predefined_type(house[5]) is None


def test_a_user_defined_type_is_told(house: oxaifc.Model) -> None:
    house[3].PredefinedType, house[3].ObjectType = "USERDEFINED", "Curtain"
    assert util.get_predefined_type(house[3]) == "Curtain"


def test_a_usage_and_its_set(house: oxaifc.Model) -> None:
    layers = house.createIfcMaterialLayerSet([house.createIfcMaterialLayer(house[15], 0.2)])
    usage = house.createIfcMaterialLayerSetUsage(layers, "AXIS2", "POSITIVE", 0.0)
    house.createIfcRelAssociatesMaterial(RelatedObjects=[house[5]], RelatingMaterial=usage)
    assert util.get_material(house[5]) == usage
    assert util.get_material(house[5], should_skip_usage=True) == layers
    assert util.get_materials(house[5]) == [house[15]]


def test_only_entities_are_asked(house: oxaifc.Model) -> None:
    asks: list[Any] = [util.get_psets, util.get_type, util.get_container, util.get_decomposition, util.get_material]
    for ask in asks:
        for what in ("x", None):
            with pytest.raises(TypeError, match="an Entity is wanted"):
                ask(what)
    with pytest.raises(oxaifc.UnknownNameError, match="IfcWall"):
        util.get_decomposition(house[3], "IfcWal")


def test_diff(house: oxaifc.Model) -> None:
    other = oxaifc.open(HOUSE.encode())
    assert oxaifc.diff(house, other).equal and oxaifc.diff(house, house).equal
    other[3]["Pset_WallCommon", "FireRating"] = "F 30"
    other.remove(other[5])
    wall = other.createIfcWall(Name="New")
    diff = oxaifc.diff(house, other)
    assert (diff.equal, diff.schema_old, diff.schema_new) == (False, "IFC4", "IFC4")
    assert [(e.id, e.type, e.name, e.storey) for e in diff.removed] == [(5, "IfcDoor", "D1", "EG")]
    assert [(e.id, e.guid, e.name) for e in diff.added] == [(wall.id(), wall.GlobalId, "New")]
    (change,) = diff.changed
    assert change.before.name == "South" and change.differences[0][:4] == ("property", "Pset_WallCommon.FireRating", "F 90", "F 30")
    assert oxaifc.diff(house, other, "IfcDoor").changed == []
    with pytest.raises(TypeError):
        oxaifc.diff(house, "x")  # type: ignore[arg-type]


def test_strict_checks(house: oxaifc.Model, house_path: Path) -> None:
    opened = oxaifc.open(house_path)
    report = opened.check(strict=True)
    assert report == oxaifc.check(house_path) == oxaifc.check(HOUSE.encode())   # of the file itself
    assert set(report.levels) == {"syntax", "header", "schema", "rules"} and report.levels["schema"].state == "done"
    lines = [place.line for group in report.groups for place in group.places]
    opened[3].Name = "x"
    assert [place.line for group in opened.check(strict=True).groups for place in group.places] != [] or lines == []
    only = opened.check(strict=True, levels=["syntax"])
    assert only.valid and only.levels["rules"].state == "not asked"
    with pytest.raises(ValueError, match="there is no level x"):
        opened.check(strict=True, levels=["x"])
    broken = oxaifc.check(HOUSE.replace("'South'", "12").encode(), levels=["schema"])
    (group,) = broken.groups
    assert (broken.verdict, group.level, group.count, group.places[0].line, group.places[0].id) == ("not valid", "schema", 1, 10, 3)
    assert oxaifc.check(HOUSE.replace("'South'", "12").encode(), levels=["schema"], most_places=0).places_left_out == 1


def test_a_packed_file_is_checked(house: oxaifc.Model, tmp_path: Path) -> None:
    for name in ("a.ifc.gz", "a.ifczip"):
        house.write(tmp_path / name)
        model = oxaifc.open(tmp_path / name)
        assert model.check(strict=True, levels=["syntax", "schema"]).levels["schema"].state == "done"
    with pytest.raises(OSError):
        oxaifc.check(tmp_path / "nope.ifc")


def test_python_m_is_the_program(house_path: Path, program: str) -> None:
    ways = [[sys.executable, "-m", "oxaifc"], [program], [os.path.join(os.path.dirname(sys.executable), "oxaifc")]]
    ways = [way for way in ways if os.path.exists(way[0])]
    told = {subprocess.run([*way, "show", str(house_path), "3"], capture_output=True, check=True).stdout for way in ways}
    assert len(told) == 1 and b"South" in told.pop()
    run = subprocess.run([*ways[0], "nope"], capture_output=True, text=True, check=False)
    assert (run.returncode, run.stdout) == (2, "") and run.stderr.startswith("oxaifc: there is no verb nope")


def test_the_version_is_that_of_the_program(program: str) -> None:
    told = subprocess.run([program, "--version"], capture_output=True, text=True, check=True).stdout
    assert told.strip() == f"oxaifc {oxaifc.__version__}"


def test_progress(house_path: Path) -> None:
    class Bar:
        made: "list[Bar]" = []

        def __init__(self, total: object = None, unit: str = "", **_: object) -> None:
            self.total, self.unit, self.n, self.closed = total, unit, 0, False
            self.made.append(self)

        def update(self, n: int = 1) -> None:
            self.n += n

        def close(self) -> None:
            self.closed = True

    model = oxaifc.open(house_path, progress=Bar)
    size = house_path.stat().st_size
    (bar,) = Bar.made
    assert (bar.total, bar.n, bar.unit, bar.closed) == (size, size, "B", True)
    given = Bar()
    model.write(io.BytesIO(), progress=given)
    assert (given.total, given.n, given.closed) == (26, 26, False)
    model.check(strict=True, progress=Bar)
    assert Bar.made[-1].closed


def test_what_progress_raises_ends_the_work(house: oxaifc.Model, tmp_path: Path) -> None:
    class Broken:
        def update(self, n: int) -> None:
            raise OverflowError("enough")

    with pytest.raises(OverflowError, match="enough"):
        oxaifc.open(HOUSE.encode(), progress=Broken())
    with pytest.raises(OverflowError, match="enough"):
        house.write(tmp_path / "a.ifc", progress=Broken())
    assert not (tmp_path / "a.ifc").exists()


def test_a_progress_function_may_not_change_what_is_written(house: oxaifc.Model) -> None:
    class Changing:
        def update(self, n: int) -> None:
            house[3].Name = "x"

    with pytest.raises(oxaifc.Error, match="in use"):
        house.write(io.BytesIO(), progress=Changing())
    house[3].Name = "y"   # and is free again


def test_tqdm(house_path: Path) -> None:
    tqdm = pytest.importorskip("tqdm")
    out = io.StringIO()
    oxaifc.open(house_path, progress=lambda **named: tqdm.tqdm(file=out, **named))
    assert "house.ifc" in out.getvalue() and "100%" in out.getvalue()
