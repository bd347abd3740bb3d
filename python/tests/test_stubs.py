# SPDX-License-Identifier: Apache-2.0
"""The types of the package: strict, and true of the module."""

from __future__ import annotations

import ast
import os
import re
import subprocess
import sys
from pathlib import Path
from typing import Any

import oxaifc
import pytest
from conftest import ROOT

PACKAGE = Path(oxaifc.__file__).parent

# Of Python's own, or not in the form that both tell them.
NOT_COMPARED = {"__init__", "__reduce__", "__repr__", "__dir__", "__iter__", "__getattr__", "__len__", "check", "_changed", "_stamp"}


def run(*words: str) -> "subprocess.CompletedProcess[str]":
    """A module of Python's as a program."""
    surroundings = {**os.environ, "MYPY_CACHE_DIR": os.devnull, "MYPYPATH": str(ROOT / "python")}
    return subprocess.run(
        [sys.executable, "-m", *words], capture_output=True, text=True, check=False, cwd=ROOT, env=surroundings
    )


def shape(function: ast.FunctionDef) -> "tuple[list[str], list[str], int]":
    """Names of arguments by place, by name alone, and how many may be left out."""
    names = function.args
    optional = len(names.defaults) + sum(default is not None for default in names.kw_defaults)
    return [a.arg for a in names.posonlyargs + names.args], [a.arg for a in names.kwonlyargs], optional


def is_setter(function: ast.FunctionDef) -> bool:
    """Of a property."""
    return any(isinstance(one, ast.Attribute) and one.attr == "setter" for one in function.decorator_list)


def functions(stub: str) -> "dict[str, set[tuple[tuple[str, ...], tuple[str, ...], int]]]":
    """The shapes of all functions and methods of a stub, of overloaded ones each."""
    found: dict[str, set[tuple[tuple[str, ...], tuple[str, ...], int]]] = {}

    def collect(body: "list[ast.stmt]", prefix: str) -> None:
        for node in body:
            if isinstance(node, ast.ClassDef):
                collect(node.body, f"{node.name}.")
            elif isinstance(node, ast.FunctionDef) and node.name not in NOT_COMPARED and not is_setter(node):
                places, names, optional = shape(node)
                found.setdefault(prefix + node.name, set()).add((tuple(places), tuple(names), optional))

    collect(ast.parse(stub).body, "")
    return found


def test_the_stub_is_what_the_module_has() -> None:
    stubgen = pytest.importorskip("nanobind.stubgen").StubGen(oxaifc._core)
    stubgen.put(oxaifc._core)
    made = functions(stubgen.get())
    written = functions((PACKAGE / "_core.pyi").read_text())
    own = [f"Entity.__{word}__" for word in ("ne", "delitem", "delattr", "getattribute")]   # of the same slots
    assert {name for name in made if name not in written and name not in own} == set()
    slots = {f"Entity.{name}" for name in dir(oxaifc.Entity) if name.startswith("__")}   # that are told by no signature
    assert {name for name in written if name not in made} <= slots
    for name, shapes in made.items():
        if name in slots or name in own or name.rsplit(".", 1)[-1] in ("is_a", "__getitem__", "__eq__", "__contains__"):
            continue
        assert {(places, names) for places, names, _ in shapes} == {(places, names) for places, names, _ in written[name]}, name
        assert {optional for _, _, optional in shapes} == {optional for _, _, optional in written[name]}, name


def test_package_and_tests_are_typed() -> None:
    pytest.importorskip("mypy")
    told = run("mypy", "--strict", "--disable-error-code", "misc", "python/oxaifc", *map(str, (ROOT / "python/tests").glob("*.py")))
    assert told.returncode == 0, told.stdout + told.stderr


def test_wrong_programs_are_found(tmp_path: Path) -> None:
    pytest.importorskip("mypy")
    program = tmp_path / "program.py"
    rows = [
        ('f.by_type(12)', "arg-type"),
        ('f.createIfcWall(Name="x").Name.upper()', ""),
        ('oxaifc.diff(f, "x")', "arg-type"),
        ('n: int = f.by_type("IfcWall")[0].is_a()', "assignment"),
        ('oxaifc.opn("x")', "attr-defined"),
        ('f.write("x", formt="step")', "call-arg"),
        ('f.check(strict=True).groups[0].places[0].line.upper()', "union-attr"),
        ('f.ids(12)', "arg-type"),
        ('f.ids(b"").specifications[0].failures[0].entity.Name.upper()', ""),
    ]
    head = 'import oxaifc\nf = oxaifc.Model("IFC4")\n'
    program.write_text(head + "\n".join(line for line, _ in rows) + "\n")
    told = run("mypy", "--strict", str(program))
    found = re.findall(r"program.py:(\d+): error: .*\[([\w-]+)\]", told.stdout)
    wanted = [(str(number), key) for number, (_, key) in enumerate(rows, 3) if key]
    assert list(dict.fromkeys(found))[: len(wanted)] == wanted


def test_everything_is_described() -> None:
    owners: list[Any] = [oxaifc, oxaifc.Model, oxaifc.Entity, oxaifc.TypedValue, oxaifc.Header, oxaifc.FileName, oxaifc.util]
    missing = [
        f"{owner.__name__}.{name}"
        for owner in owners
        for name in dir(owner)
        if not name.startswith("_") and not (getattr(owner, name).__doc__ or "").strip()
    ]
    assert missing == []
