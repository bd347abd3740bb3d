# SPDX-License-Identifier: Apache-2.0
"""Values set and got, and edits in any order against a plain model in Python."""

from __future__ import annotations

import io
import math
from typing import Any, Optional

import oxaifc
import pytest
from conftest import HOUSE
from hypothesis import given, settings
from hypothesis import strategies as st
from hypothesis.stateful import Bundle, RuleBasedStateMachine, invariant, rule
from oxaifc import TypedValue

TEXTS = st.text(st.characters(blacklist_categories=["Cs"], blacklist_characters="\0"), max_size=40)
REALS = st.floats(-1e300, 1e300)
INTEGERS = st.integers(-(2**31), 2**31 - 1)
SELECTED = st.one_of(
    TEXTS.map(lambda v: TypedValue("IfcText", v)),
    REALS.map(lambda v: TypedValue("IfcReal", v)),
    INTEGERS.map(lambda v: TypedValue("IfcInteger", v)),
    st.booleans().map(lambda v: TypedValue("IfcBoolean", v)),
    st.sampled_from([True, False, "UNKNOWN"]).map(lambda v: TypedValue("IfcLogical", v)),
)

# Entity, attribute, what it may hold.
PLACES: list[tuple[str, str, st.SearchStrategy[Any]]] = [
    ("IfcWall", "Name", st.none() | TEXTS),
    ("IfcDoor", "OverallHeight", st.none() | st.floats(1e-300, 1e300)),
    ("IfcDoor", "OperationType", st.none() | st.sampled_from(["REVOLVING", "NOTDEFINED"])),
    ("IfcPropertySingleValue", "NominalValue", st.none() | SELECTED),
    ("IfcPropertyEnumeratedValue", "EnumerationValues", st.none() | st.lists(SELECTED, min_size=1, max_size=5).map(tuple)),
    ("IfcCartesianPoint", "Coordinates", st.lists(REALS, min_size=1, max_size=3).map(tuple)),
    ("IfcCartesianPointList2D", "CoordList", st.lists(st.tuples(REALS, REALS), min_size=1, max_size=9).map(tuple)),
    ("IfcPresentationLayerWithStyle", "LayerOn", st.sampled_from([True, False, "UNKNOWN"])),
    ("IfcOrganization", "Addresses", st.none()),
]


def same(a: Any, b: Any) -> bool:
    """Equal, and of one type, a sign of zero included."""
    if isinstance(a, tuple):
        return isinstance(b, tuple) and len(a) == len(b) and all(map(same, a, b))
    if isinstance(a, TypedValue):
        return isinstance(b, TypedValue) and a.is_a() == b.is_a() and same(a.wrappedValue, b.wrappedValue)
    if isinstance(a, float):
        return isinstance(b, float) and a == b and math.copysign(1, a) == math.copysign(1, b)
    return type(a) is type(b) and a == b


def written(value: Any) -> Any:
    """A value as a file has it: reals have 16 digits there."""
    if isinstance(value, tuple):
        return tuple(map(written, value))
    if isinstance(value, TypedValue):
        return TypedValue(value.is_a(), written(value.wrappedValue))
    return float(f"{value:.16g}") if isinstance(value, float) else value


@pytest.mark.parametrize("type, name, values", PLACES, ids=[f"{place[0]}.{place[1]}" for place in PLACES])
def test_what_is_set_is_got(type: str, name: str, values: st.SearchStrategy[Any]) -> None:
    model = oxaifc.open(HOUSE.encode())
    entity = (model.by_type(type) or [model.create_entity(type, Name="x")])[0]

    @settings(max_examples=60, deadline=None)
    @given(values)
    def check(value: Any) -> None:
        setattr(entity, name, value)
        assert same(getattr(entity, name), value)
        file = io.BytesIO()
        model.write(file, threads=1)
        read = oxaifc.open(file.getvalue(), threads=1)
        assert read.errors == [] and same(getattr(read[entity.id()], name), written(value))

    check()


@settings(max_examples=150, deadline=None)
@given(st.binary(max_size=400), st.integers(0, len(HOUSE)), st.booleans())
def test_no_bytes_end_the_process(data: bytes, place: int, begins: bool) -> None:
    source = HOUSE.encode()[:place] + data + (b"" if begins else HOUSE.encode()[place:])
    try:
        model = oxaifc.open(source, threads=1)
    except oxaifc.FileError:
        return
    for entity in model:
        repr(entity)
        entity.get_info()
    model.check()


class Plain:
    """A wall and what it has, in Python alone."""

    def __init__(self, name: Optional[str]) -> None:
        self.name = name
        self.properties: dict[tuple[str, str], Any] = {}


class Edits(RuleBasedStateMachine):
    """Walls made, changed, put into a group and removed, in both."""

    walls: Bundle[int] = Bundle("walls")

    def __init__(self) -> None:
        super().__init__()
        self.model = oxaifc.Model("IFC4")
        self.plain: dict[int, Plain] = {}
        self.entities: dict[int, oxaifc.Entity] = {}
        self.grouped: set[int] = set()
        group = self.model.createIfcGroup(Name="G")
        first = self.model.createIfcProject(Name="P")
        self.relation = self.model.createIfcRelAssignsToGroup(RelatedObjects=[first], RelatingGroup=group)
        self.project = first

    @rule(target=walls, name=st.none() | TEXTS)
    def make(self, name: Optional[str]) -> int:
        wall = self.model.createIfcWall(Name=name)
        self.plain[wall.id()], self.entities[wall.id()] = Plain(name), wall
        return int(wall.id())

    @rule(wall=walls, name=st.none() | TEXTS)
    def rename(self, wall: int, name: Optional[str]) -> None:
        if wall in self.plain:
            self.plain[wall].name = self.entities[wall].Name = name
        else:
            with pytest.raises(oxaifc.RemovedError):
                self.entities[wall].Name = name

    @rule(wall=walls, name=st.sampled_from("ABC"), value=TEXTS)
    def set_property(self, wall: int, name: str, value: str) -> None:
        if wall in self.plain:
            self.entities[wall]["Pset_X", name] = value
            self.plain[wall].properties["Pset_X", name] = value

    @rule(walls=st.lists(walls, min_size=2, max_size=4), name=st.sampled_from("AB"), value=TEXTS)
    def set_properties(self, walls: list[int], name: str, value: str) -> None:
        there = [wall for wall in walls if wall in self.plain]
        self.model.set_property([self.entities[wall] for wall in there], "Pset_X", name, value)
        for wall in there:
            self.plain[wall].properties["Pset_X", name] = value

    @rule(wall=walls)
    def group(self, wall: int) -> None:
        if wall in self.plain:
            self.grouped.add(wall)
            self.relation.RelatedObjects = [self.project, *(self.entities[one] for one in sorted(self.grouped))]

    @rule(walls=st.lists(walls, min_size=1, max_size=3))
    def remove(self, walls: list[int]) -> None:
        there = {wall for wall in walls if wall in self.plain}
        self.model.remove([self.entities[wall] for wall in there])
        self.grouped -= there
        for wall in there:
            del self.plain[wall]

    def compare(self, model: oxaifc.Model) -> None:
        """The model against the plain one."""
        walls = model.by_type("IfcWall")
        assert [wall.id() for wall in walls] == sorted(self.plain)
        for wall in walls:
            plain = self.plain[wall.id()]
            assert wall.Name == plain.name
            told = oxaifc.util.get_psets(wall).get("Pset_X", {})
            assert {("Pset_X", k): v for k, v in told.items() if k != "id"} == plain.properties
            assert (wall.id() in self.grouped) == bool(wall.HasAssignments)
        (relation,) = model.by_type("IfcRelAssignsToGroup")
        assert {one.id() for one in relation.RelatedObjects} == {self.project.id(), *self.grouped}

    @invariant()
    def is_the_same(self) -> None:
        self.compare(self.model)

    def teardown(self) -> None:
        file = io.BytesIO()
        self.model.write(file, threads=1)
        self.compare(oxaifc.open(file.getvalue(), threads=1))


TestEdits = Edits.TestCase
TestEdits.settings = settings(max_examples=60, stateful_step_count=25, deadline=None)
