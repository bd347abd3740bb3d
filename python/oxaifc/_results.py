# SPDX-License-Identifier: Apache-2.0
"""What calls hand back: plain records, equal by value, to be pickled and printed."""

from __future__ import annotations

from typing import TYPE_CHECKING, Iterable, NamedTuple, Optional, Union

if TYPE_CHECKING:
    from ._core import Entity

__all__ = [
    "Change",
    "CheckGroup",
    "CheckLevel",
    "CheckPlace",
    "CheckReport",
    "Detail",
    "Diff",
    "Difference",
    "ElementName",
    "EntityName",
    "IdsFailure",
    "IdsFault",
    "IdsReport",
    "IdsSpecification",
    "OtherChange",
    "Others",
    "Record",
    "Removed",
    "Rows",
]

#: One value of a table.
Cell = Union[None, bool, int, float, str]


class Record(NamedTuple):
    """One thing that was wrong with a file."""

    key: str  #: the same in all languages, as in Error_UnknownEntityType
    severity: str  #: "error": the work went on; "fatal": the file was given up
    category: str  #: syntax, header, value, null, reference, model, identifier or schema
    message: str  #: for people
    line: Optional[int]  #: from 1
    id: Optional[int]  #: of the instance
    type: Optional[str]  #: of the instance, as in IfcWall
    text: Optional[str]  #: of the file, that it is about


class Removed(NamedTuple):
    """What a removal did."""

    count: int  # type: ignore[assignment]  #: entities that are gone, relationships too
    incomplete: list[Entity]  #: that stay, and now lack a value which the schema wants


class Rows(list[tuple[Cell, ...]]):
    """The rows of a table, tuples of values; `columns` has their names. `dicts()` gives a dict a row."""

    columns: tuple[str, ...]

    def __init__(self, columns: Iterable[str] = (), rows: Iterable[tuple[Cell, ...]] = ()) -> None:
        super().__init__(rows)
        self.columns = tuple(columns)

    def dicts(self) -> list[dict[str, Cell]]:
        """A dict a row; of columns of one name the last counts."""
        return [dict(zip(self.columns, row)) for row in self]


class CheckPlace(NamedTuple):
    """Where something fails."""

    line: Optional[int]  #: from 1; None where it is about the file as a whole
    column: Optional[int]  #: in bytes, from 1
    id: Optional[int]  #: the number of the instance
    found: Optional[str]  #: what stands there


class CheckGroup(NamedTuple):
    """What all failures that are equal but for their place have in common."""

    level: str  #: read, syntax, header, schema or rules
    weight: str  #: "failure", or "note", which takes no validity away
    key: str  #: the same in all versions, as in Schema_ReferenceType
    rule: Optional[str]  #: what says that it is wrong, as in IfcRoot.UR1
    type: Optional[str]  #: of the instance, as in IfcWall
    attribute: Optional[str]  #: as in GlobalId
    message: str  #: one sentence
    expected: Optional[str]  #: what would be right
    count: int  # type: ignore[assignment]  #: of all its places, also of those that are not kept
    places: list[CheckPlace]  #: in the order of the file


class CheckLevel(NamedTuple):
    """What became of one level."""

    state: str  #: "done", "not asked" or "not possible"
    reason: Optional[str]  #: of the last
    failures: int
    notes: int


class CheckReport(NamedTuple):
    """What a check found."""

    verdict: str  #: "valid"; "not valid"; "undecided": nothing fails, and not all could be done
    groups: list[CheckGroup]
    levels: dict[str, CheckLevel]
    places_left_out: int  #: that are counted in their groups, and not in their places

    @property
    def valid(self) -> bool:
        """Whether the verdict is "valid"."""
        return self.verdict == "valid"


class IdsFault(NamedTuple):
    """Something that is wrong with a file of requirements."""

    line: Optional[int]  #: from 1
    message: str  #: one sentence
    found: Optional[str]  #: what stands there
    key: str  #: the same in all versions, as in Ids_UnknownClass
    path: str  #: of the element, as in /ids/specifications/specification[2]/applicability


class IdsFailure(NamedTuple):
    """A requirement that an entity does not meet."""

    entity: Entity
    requirement: str  #: what is wanted, one sentence
    kind: str  #: not-allowed, class, predefined-type, missing, value, data-type, system, whole or prohibited
    reason: str  #: why it is not met, one sentence
    found: Optional[str]  #: the values that are there


class IdsSpecification(NamedTuple):
    """What came of one specification."""

    name: str
    status: str  #: "passed", "failed"; "other-schema": not checked, it is for other schemas
    reason: str  #: the status in words
    applicable: int  #: entities that it speaks of
    passed: int  #: those of them that meet all requirements
    failures: list[IdsFailure]  #: by number, then by requirement


class IdsReport(NamedTuple):
    """Whether a model holds the information that a file of requirements asks for. True where it does."""

    verdict: str  #: "passed", "failed"; "undecided": no specification is for the model's schema
    specifications: list[IdsSpecification]  #: in the order of the file
    notes: list[IdsFault]  #: what is valid in the file, and hardly what was meant

    @property
    def passed(self) -> bool:
        """Whether the verdict is "passed"."""
        return self.verdict == "passed"

    def __bool__(self) -> bool:
        return self.passed


class ElementName(NamedTuple):
    """An element, as a comparison names it."""

    id: int
    type: str  #: as in IfcWall
    guid: str
    name: str  #: empty where it has none
    storey: str  #: the name of the storey above it; empty where there is none


class EntityName(NamedTuple):
    """An entity that is no element."""

    id: int
    type: str  #: in upper case
    guid: str  #: empty where it has none
    text: str  #: its Name, or what it holds


class Detail(NamedTuple):
    """One value that differs."""

    path: str  #: as in Representation.Representations[1].Items[2].Depth
    old: Optional[str]
    new: Optional[str]
    more: bool  #: the attribute has more differences, which are not listed


class Difference(NamedTuple):
    """One thing that is told of an element."""

    about: str  #: class, attribute, placement, geometry, type, place, material, classification, group, property, quantity
    what: str  #: as in Pset_WallCommon.FireRating
    old: Optional[str]  #: as people read it
    new: Optional[str]
    details: list[Detail]


class Change(NamedTuple):
    """An element that is in both models and not the same."""

    before: ElementName
    after: ElementName
    differences: list[Difference]


class OtherChange(NamedTuple):
    """An entity that is no element, and differs."""

    before: EntityName
    after: EntityName
    differences: list[Detail]


class Others(NamedTuple):
    """What differs and no element tells."""

    removed: list[EntityName]
    added: list[EntityName]
    changed: list[OtherChange]


class Diff(NamedTuple):
    """How two models differ."""

    equal: bool  #: both say the same
    schema_old: str
    schema_new: str
    removed: list[ElementName]
    added: list[ElementName]
    changed: list[Change]
    others: Others


for _name in __all__:
    globals()[_name].__module__ = "oxaifc"
