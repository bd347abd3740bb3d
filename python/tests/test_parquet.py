# SPDX-License-Identifier: Apache-2.0
"""to_parquet(): many models as Parquet, and which files it finds."""

from __future__ import annotations

import os
from pathlib import Path
from typing import Any, Iterable
from urllib.parse import unquote

import oxaifc
import pytest
from oxaifc._files import listed
from oxaifc._portfolio import exporter

from houses import house, portfolio

pyarrow = pytest.importorskip("pyarrow", reason="pyarrow is not installed")
dataset = pytest.importorskip("pyarrow.dataset", reason="pyarrow is not installed")


def read(folder: Path, table: str, **how: Any) -> Any:
    return dataset.dataset(os.path.join(folder, table), **how).to_table()


@pytest.fixture(scope="module")
def models(tmp_path_factory: pytest.TempPathFactory) -> Path:
    folder = portfolio(tmp_path_factory.mktemp("models"), 8)
    (folder / "notes.txt").write_text("no model")
    (folder / "broken.ifc").write_text("no model")
    return folder


def one_by_one(files: Iterable[Path], table: str) -> Any:
    parts = [pyarrow.table(oxaifc.open(file).table(table, file=str(file))) for file in sorted(files)]
    return pyarrow.concat_tables(parts)


def test_all_usual_tables_with_the_rows_of_each_model(models: Path, tmp_path: Path) -> None:
    result = oxaifc.to_parquet(models, tmp_path / "out", workers=3)
    good = [path for path in models.rglob("*.ifc*") if path.stem != "broken"]
    assert sorted(path.name for path in (tmp_path / "out").iterdir()) == sorted(
        set(oxaifc.table_names()) - {"reference"}
    )
    for table in ("element", "property", "quantity", "unit", "file"):
        assert read(tmp_path / "out", table).equals(one_by_one(good, table)), table
        assert result.rows[table] == one_by_one(good, table).num_rows
    assert result.files == 8
    assert list(result.failed) == [str(models / "broken.ifc")]
    errors = read(tmp_path / "out", "error").to_pylist()
    assert errors[1:] == one_by_one(good, "error").to_pylist()
    assert errors[0] == {
        "file": str(models / "broken.ifc"),
        "severity": "fatal",
        "category": "file",
        "key": "Error_FileNotRead",
        "line": None,
        "entity_id": None,
        "message": result.failed[str(models / "broken.ifc")],
    }
    assert read(tmp_path / "out", "classification").column_names == ["file", "element_id", "system", "code", "name"]
    assert repr(result).endswith(f"out: 8 files, 1 not read, {sum(result.rows.values())} rows>")
    assert not [path for path in (tmp_path / "out").rglob("*") if path.name.startswith(".")]


@pytest.mark.parametrize("workers", [1, 4])
def test_partitions_are_folders(models: Path, tmp_path: Path, workers: int) -> None:
    oxaifc.to_parquet(
        models, tmp_path, ["file", "property", "error"], ["schema", "exporter"], workers=workers
    )
    rows = read(tmp_path, "property", partitioning="hive")
    found = {row["schema"] + " " + row["exporter"] for row in rows.select(["schema", "exporter"]).to_pylist()}
    assert found == {
        "IFC4 Plan Studio",
        "IFC4 unknown",
        "IFC4 Bau",
        "IFC2X3 Plan Studio",
        "IFC2X3 unknown",
        "IFC4X3_ADD2 Plan Studio",
        "IFC4X3_ADD2 Bau",
    }
    assert rows.num_rows == one_by_one([p for p in models.rglob("*.ifc*") if p.stem != "broken"], "property").num_rows
    assert (tmp_path / "property/schema=IFC4/exporter=Plan%20Studio/part-00000.parquet").is_file()
    assert (tmp_path / "error/schema=__HIVE_DEFAULT_PARTITION__").is_dir()


def test_a_class_has_the_columns_of_one_schema(models: Path, tmp_path: Path) -> None:
    result = oxaifc.to_parquet(models, tmp_path, ["IfcWall"])
    rows = read(tmp_path, "IfcWall")
    assert rows.column_names == oxaifc_columns("IFC4", "IfcWall")
    assert (rows.num_rows, rows["PredefinedType"].null_count) == (result.rows["IfcWall"], rows.num_rows)
    assert result.rows["IfcWall"] == sum(1 + number % 5 for number in range(8))


def oxaifc_columns(schema: str, table: str) -> Any:
    return [column.name for column in oxaifc.Model(schema).table(table).columns]


def test_nothing_is_replaced_unless_it_is_said(models: Path, tmp_path: Path) -> None:
    oxaifc.to_parquet(models / "project0", tmp_path, "element".split())
    with pytest.raises(oxaifc.FileError, match="element: stands there already"):
        oxaifc.to_parquet(models / "project1", tmp_path, ["file", "element"])
    assert sorted(path.name for path in tmp_path.iterdir()) == ["element"]
    before = read(tmp_path, "element").num_rows
    oxaifc.to_parquet(models / "project1", tmp_path, ["element"], overwrite=True)
    assert read(tmp_path, "element").num_rows != before


def test_failfast_leaves_nothing(models: Path, tmp_path: Path) -> None:
    with pytest.raises(oxaifc.FileError, match="broken.ifc"):
        oxaifc.to_parquet(models, tmp_path, mode="failfast")
    assert list(tmp_path.iterdir()) == []


def test_mistakes_are_told(models: Path, tmp_path: Path) -> None:
    rows: list[tuple[dict[str, Any], type[Exception], str]] = [
        (dict(tables=["propertie"]), oxaifc.UnknownNameError, "did you mean property"),
        (dict(partition="shema"), oxaifc.UnknownNameError, "there is no column shema"),
        (dict(folder="far://box/out"), oxaifc.RefusedError, "writes to a folder of this machine"),
        (dict(mode="strict"), oxaifc.RefusedError, "mode is permissive or failfast"),
        (dict(schema="IFC5"), oxaifc.UnknownNameError, "IFC5"),
    ]
    for how, error, message in rows:
        with pytest.raises(error, match=message):
            oxaifc.to_parquet(models, **{"folder": tmp_path / "new", **how})
        assert not (tmp_path / "new").exists()
    with pytest.raises(oxaifc.MissingFileError, match="nowhere"):
        oxaifc.to_parquet(models / "nowhere", tmp_path)


def test_progress_counts_files(models: Path, tmp_path: Path) -> None:
    class Bar:
        told = 0

        def update(self, count: int) -> None:
            self.told += count

    bar = Bar()
    oxaifc.to_parquet(models / "project0", tmp_path, ["file"], progress=bar)
    assert bar.told == 3


def test_files_by_path_folder_and_pattern(models: Path) -> None:
    def names(*paths: Any) -> list[str]:
        return [os.path.relpath(file.name, models) for file in listed(paths)]

    everything = names(models)
    assert (len(everything), everything[0], everything[-1]) == (9, "broken.ifc", "project2/house05.ifc")
    assert "project1/house07.ifczip" in everything
    assert names(models / "project0") == [f"project0/house0{i}.ifc" for i in (0, 3, 6)]
    assert names(models / "*/house0[03].ifc", models / "project0") == names(models / "project0")
    assert names(models / "**/*.ifczip") == ["project1/house07.ifczip"]
    assert names(f"file://{models}/notes.txt") == ["notes.txt"]
    assert listed([models / "notes.txt"])[0].size == 8
    with pytest.raises(oxaifc.MissingFileError, match="there is no such file, and no model below it"):
        listed([models, models / "*.xyz"])


def test_links_are_followed_and_dead_ones_told(tmp_path: Path) -> None:
    models = portfolio(tmp_path / "models", 2)
    (models / "again").symlink_to(models)
    (models / "other").symlink_to(models / "project0")
    (models / "gone.ifc").symlink_to(tmp_path / "nowhere.ifc")
    files = listed(models)
    assert [os.path.relpath(file.name, models) for file in files if "other" not in file.name][0] == "gone.ifc"
    assert len(files) == 3
    result = oxaifc.to_parquet(models, tmp_path / "out", ["file", "error"])
    assert (result.files, list(result.failed)) == (2, [str(models / "gone.ifc")])


def test_files_elsewhere(models: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    from oxaifc import _files
    from pyarrow import fs

    there = fs.SubTreeFileSystem(str(models), fs.LocalFileSystem())
    monkeypatch.setattr(_files, "_filesystem", lambda uri: (there, unquote(uri).removeprefix("far://box").strip("/")))

    def names(path: str) -> list[str]:
        return [file.name for file in listed([path])]

    assert names("far://box/project0") == [f"far://box/project0/house0{i}.ifc" for i in (0, 3, 6)]
    assert names("far://box/*/house0[03].ifc") == ["far://box/project0/house00.ifc", "far://box/project0/house03.ifc"]
    assert names("far://box/**/*.ifczip") == ["far://box/project1/house07.ifczip"]
    (file,) = listed("far://box/project1/house07.ifczip")
    opened = file.open()
    (row,) = _files_row(opened)
    here = oxaifc.open(models / "project1/house07.ifczip").table("file").to_dict()
    assert (row["path"], row["name"], row["size"]) == (file.name, "house07.ifczip", here["size"][0])
    assert row["sha256"] == here["sha256"][0]
    with pytest.raises(oxaifc.FileError, match="far://box/broken.ifc"):
        listed("far://box/broken.ifc")[0].open()
    with pytest.raises(oxaifc.MissingFileError):
        listed("far://box/nowhere")
    (models / "project0" / "größe 1.ifc").write_text(house())
    try:
        (file,) = listed("far://box/project0/grö*")
        assert file.name == "far://box/project0/gr%C3%B6%C3%9Fe%201.ifc"
        assert listed(file.name) == [file]
        assert file.open().model.schema == "IFC4"
    finally:
        (models / "project0" / "größe 1.ifc").unlink()


def _files_row(opened: Any) -> Any:
    from oxaifc._portfolio import file_rows

    return file_rows(opened).to_pylist()


def test_the_exporter_is_a_program_without_its_version() -> None:
    rows = [
        ("Plan Studio 2024 (DEU)", "Plan Studio"),
        ("Bau v3.1", "Bau"),
        ("Bau - 7.0", "Bau"),
        ("3D Haus 12", "3D Haus"),
        ("Bau/Plan 64", "Bau Plan"),
        ("", "unknown"),
    ]
    for maker, expected in rows:
        assert exporter(oxaifc.open(house(maker=maker).encode())) == expected
