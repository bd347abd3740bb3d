# SPDX-License-Identifier: Apache-2.0
"""Model.ids: requirements for what a model says (IDS 1.0)."""

from __future__ import annotations

import io
import pickle
from pathlib import Path
from typing import Any

import oxaifc
import pytest
from conftest import ROOT, many_walls

CASES = ROOT.parent / "shared" / "ids" / "testcases"

HEAD = """<?xml version="1.0" encoding="UTF-8"?>
<ids xmlns="http://standards.buildingsmart.org/IDS" xmlns:xs="http://www.w3.org/2001/XMLSchema">
<info><title>T</title></info>
<specifications>
"""
TAIL = "</specifications>\n</ids>\n"


def value(name: str, text: str) -> str:
    """A parameter that has to be a text."""
    return f"<{name}><simpleValue>{text}</simpleValue></{name}>"


def specification(name: str, entity: str, requirement: str, schemas: str = "IFC4", occurs: str = 'minOccurs="0" maxOccurs="unbounded"') -> str:
    """One of a class, with one requirement, on five lines."""
    return (
        f'<specification name="{name}" ifcVersion="{schemas}">\n'
        f'<applicability {occurs}><entity>{value("name", entity)}</entity></applicability>\n'
        f"<requirements>\n{requirement}\n</requirements></specification>\n"
    )


def required(name: str, wanted: str = "") -> str:
    """A property of walls."""
    of_value = value("value", wanted) if wanted else ""
    return f'<property dataType="IFCLABEL">{value("propertySet", "Pset_WallCommon")}{value("baseName", name)}{of_value}</property>'


NAMED = f'<attribute>{value("name", "Name")}</attribute>'
FIRE = specification("Fire", "IFCWALL", required("FireRating", "F 90"))
DOORS = specification("Doors", "IFCDOOR", NAMED)


def requirements(*specifications: str) -> bytes:
    """A whole file."""
    return (HEAD + "".join(specifications) + TAIL).encode()


def test_each_specification_tells_what_it_found(house: oxaifc.Model) -> None:
    report = house.ids(requirements(FIRE, DOORS, specification("Old", "IFCWALL", NAMED, "IFC2X3")))
    assert not report and not report.passed and report.verdict == "failed" and report.notes == []
    found = [(one.name, one.status, one.applicable, one.passed, len(one.failures)) for one in report.specifications]
    assert found == [("Fire", "failed", 2, 1, 1), ("Doors", "passed", 1, 1, 0), ("Old", "other-schema", 0, 0, 0)]
    failure = report.specifications[0].failures[0]
    assert (failure.entity, failure.entity.Name, failure.kind, failure.found) == (house[4], "N\u00f6rd", "value", "F 30")
    assert "FireRating" in failure.requirement and failure.reason
    assert bool(house.ids(requirements(DOORS)))


def test_a_file_has_many_ways_in(house: oxaifc.Model, tmp_path: Path) -> None:
    data = requirements(FIRE, DOORS)
    path = tmp_path / "r.ids"
    path.write_bytes(data)
    reports = [house.ids(source) for source in (data, bytearray(data), memoryview(data), path, str(path), io.BytesIO(data))]
    with open(path, "rb") as file:
        reports.append(house.ids(file, threads=1))
    assert all(report == reports[0] for report in reports)


def test_other_schemas(house: oxaifc.Model) -> None:
    old, new = specification("Old", "IFCDOOR", NAMED, "IFC2X3"), specification("New", "IFCDOOR", NAMED)
    rows: list[tuple[tuple[str, ...], Any, list[str], str]] = [
        ((old, new), None, ["other-schema", "passed"], "passed"),
        ((old,), None, ["passed"], "passed"),
        ((old,), "skip", ["other-schema"], "undecided"),
        ((old, new), "check", ["passed", "passed"], "passed"),
    ]
    for specifications, word, statuses, verdict in rows:
        report = house.ids(requirements(*specifications), other_schemas=word)
        assert ([one.status for one in report.specifications], report.verdict) == (statuses, verdict)
    with pytest.raises(oxaifc.RefusedError, match="other_schemas"):
        house.ids(requirements(old), other_schemas="x")  # type: ignore[arg-type]


def test_there_may_be_none(house: oxaifc.Model) -> None:
    walls = specification("No walls", "IFCWALL", "", occurs='minOccurs="0" maxOccurs="0"').replace("<requirements>\n\n</requirements>", "")
    specifications = house.ids(requirements(walls)).specifications
    assert [(one.entity.id(), one.kind) for one in specifications[0].failures] == [(3, "not-allowed"), (4, "not-allowed")]
    assert specifications[0].failures[0].requirement.startswith("not allowed: ")


def test_faults_are_told_with_their_lines(house: oxaifc.Model) -> None:
    wrong = specification("Teapots", "IFCTEAPOT", NAMED).replace("<attribute>", "<atribute>").replace("</attribute>", "</atribute>")
    with pytest.raises(oxaifc.IdsError) as caught:
        house.ids(requirements(DOORS, wrong))
    error = caught.value
    assert isinstance(error, (oxaifc.Error, ValueError)) and len(error.faults) >= 2
    assert [fault.line for fault in error.faults][:2] == [11, 13]
    assert str(error).startswith("the text is no valid IDS\n  line 11: ")
    assert all(fault.message in str(error) and fault.key.startswith("Ids_") for fault in error.faults)
    copy = pickle.loads(pickle.dumps(error))
    assert (str(copy), copy.faults) == (str(error), error.faults)


def test_what_is_no_file(house: oxaifc.Model, tmp_path: Path) -> None:
    with pytest.raises(FileNotFoundError, match="there is no such file"):
        house.ids(tmp_path / "nope.ids")
    for wrong in (None, 12, io.StringIO("x")):
        with pytest.raises(TypeError, match="ids\\(\\) takes a path, bytes or a file"):
            house.ids(wrong)  # type: ignore[arg-type]
    for nothing in (b"", b"ISO-10303-21;", b"<ids"):
        with pytest.raises(oxaifc.IdsError):
            house.ids(nothing)


def test_progress_ends_it_too() -> None:
    class Bar:
        def update(self, n: int) -> None:
            raise KeyboardInterrupt

    model = oxaifc.open(many_walls(2000))
    with pytest.raises(KeyboardInterrupt):
        model.ids(requirements(FIRE), progress=Bar())
    assert len(model.ids(requirements(FIRE)).specifications[0].failures) == 2000


@pytest.mark.parametrize("folder", sorted(path.name for path in CASES.iterdir()) if CASES.is_dir() else [])
def test_published_cases(folder: str) -> None:
    wrong = []
    for path in sorted((CASES / folder).glob("*.ids")):
        wanted = path.name.split("-")[0]
        try:
            told = "pass" if oxaifc.open(path.with_suffix(".ifc")).ids(path) else "fail"
        except oxaifc.IdsError:
            told = "invalid"
        if told != wanted:
            wrong.append(f"{path.name}: {told}")
    assert wrong == []
