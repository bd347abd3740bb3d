# SPDX-License-Identifier: Apache-2.0
"""examples/questions.ipynb: thirteen questions, answered for the house among the examples, and two plots."""

from __future__ import annotations

import re
from typing import Any

import pytest
from conftest import ROOT

NOTEBOOK = ROOT / "examples" / "questions.ipynb"


@pytest.fixture(scope="module")
def answers() -> list[Any]:
    """The cells of each question, with what they printed and showed; the first is what stands before the first one."""
    nbformat = pytest.importorskip("nbformat", reason="nbformat is not installed")
    nbclient = pytest.importorskip("nbclient", reason="nbclient is not installed")
    for name in ("ipykernel", "pandas", "matplotlib"):
        pytest.importorskip(name, reason=f"{name} is not installed")
    notebook = nbformat.read(NOTEBOOK, as_version=4)
    assert not [cell for cell in notebook.cells if cell.get("outputs")], "it stands in the repository without output"
    nbclient.NotebookClient(
        notebook, timeout=120, kernel_name="python3", resources={"metadata": {"path": str(ROOT / "examples")}}
    ).execute()
    questions: list[Any] = [[]]
    for cell in notebook.cells:
        if cell.cell_type == "markdown" and re.match(r"## \d+\. ", cell.source):
            questions.append([])
        elif cell.cell_type == "code":
            questions[-1] += cell.outputs
    return questions


def texts(outputs: Any) -> str:
    """All that was printed and shown as text."""
    return "\n".join(out.text if out.output_type == "stream" else out.data.get("text/plain", "") for out in outputs)


def test_thirteen_questions_have_answers(answers: Any) -> None:
    rows = [
        (0, r"<oxaifc.Model IFC4, \d+ entities, .*house-ifc4.ifc>"),
        (1, r"Name +OverallWidth +Pset_DoorCommon.FireRating\n0 +Haustür +1.010 +None"),
        (2, r"IfcWall Wand Süd in Erdgeschoss 一階 of type Außenwand 36,5\nmaterials: \['Kalkputz', [\s\S]*'FireRating': 'F 90-A'"),
        (3, r"Kellergeschoß"),
        (4, r"\['#\d+ "),
        (5, r"Stahlbeton C25/30 +NaN +48.0"),
        (6, r"0 removed, 0 added, 12 changed\n[\s\S]*Wand Süd +Pset_WallCommon.FireRating +F 90-A +F 120"),
        (7, r"OverallWidth', '1.01', '1.26'"),
        (8, r"done\n\n?done\n\n?\(399, 1\d\d\)"),
        (9, r"\['Kellergeschoß', 'Dachgeschoss 🏠'\]"),
        (10, r"OverallWidth"),
        (11, r"Pset_WallCommon +FireRating +6[\s\S]*Pset_WindowCommon +9"),
        (12, r"^valid\n\n?\[\('Header_OriginatingSystem'"),
        (13, r"IFC4 by \['Jörg Hofmann'\] with OxaIfc examples\n.*True \[\]\n[\s\S]*IfcWall +11"),
    ]
    assert len(answers) == 14
    for number, pattern in rows:
        assert re.search(pattern, texts(answers[number])), f"{number}: {texts(answers[number])}"


def test_two_plots_are_drawn(answers: Any) -> None:
    plots = {n: [out for out in outputs if "image/png" in out.get("data", {})] for n, outputs in enumerate(answers)}
    assert {number: len(found) for number, found in plots.items() if found} == {3: 1, 5: 1}
