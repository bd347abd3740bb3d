# SPDX-License-Identifier: Apache-2.0
"""The types of the package: strict, and true of the module."""

from __future__ import annotations

import os
import subprocess
import sys
from pathlib import Path

import oxaifc
import pytest
from conftest import ROOT

pytest.importorskip("mypy")
PACKAGE = Path(oxaifc.__file__).parent


def run(*words: str) -> subprocess.CompletedProcess[str]:
    """mypy, as it looks at an installed package."""
    cache = {**os.environ, "MYPY_CACHE_DIR": os.devnull}
    return subprocess.run(
        [sys.executable, "-m", *words], capture_output=True, text=True, check=False, cwd=ROOT, env=cache
    )


def test_the_stub_is_what_the_module_has() -> None:
    told = run("mypy.stubtest", "oxaifc", "--allowlist", str(ROOT / "python/tests/stubtest.allow"), "--concise")
    assert told.returncode == 0, told.stdout + told.stderr


def test_package_and_tests_are_typed() -> None:
    told = run("mypy", "--strict", "-p", "oxaifc")
    assert told.returncode == 0, told.stdout
    tests = run("mypy", "--strict", "--allow-untyped-decorators", "--disable-error-code", "misc", str(ROOT / "python/tests"))
    assert tests.returncode == 0, tests.stdout


def test_wrong_programs_are_found(tmp_path: Path) -> None:
    program = tmp_path / "program.py"
    rows = [
        ('f.by_type(12)', "arg-type"),
        ('f.by_tipe("IfcWall").append(1)', ""),
        ('oxaifc.diff(f, "x")', "arg-type"),
        ('n: int = f.by_type("IfcWall")[0].is_a()', "assignment"),
        ('oxaifc.opn("x")', "attr-defined"),
    ]
    for line, key in rows:
        program.write_text(f'import oxaifc\nf = oxaifc.Model("IFC4")\n{line}\n')
        told = run("mypy", "--strict", str(program))
        assert (told.returncode == 0) == (key == ""), (line, told.stdout)
        assert f"[{key}]" in told.stdout or not key


def test_everything_is_described() -> None:
    missing = [name for name in oxaifc.__all__ if not name.startswith("_") and not (getattr(oxaifc, name).__doc__ or "").strip()]
    for owner in (oxaifc.Model, oxaifc.Entity, oxaifc.TypedValue, oxaifc.Header, oxaifc.FileName, oxaifc.util):
        for name in dir(owner):
            if not name.startswith("_") and not (getattr(owner, name).__doc__ or "").strip():
                missing.append(f"{owner.__name__}.{name}")
    assert missing == ["Derived"] or missing == []
