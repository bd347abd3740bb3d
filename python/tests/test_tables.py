# SPDX-License-Identifier: Apache-2.0
"""Tables over Arrow into pyarrow, polars, pandas and DuckDB; as rows; as a data frame of elements; and lists of numbers."""

from __future__ import annotations

import gc
import threading
import time
import weakref
from pathlib import Path
from typing import Any, Callable

import oxaifc
import pytest

from houses import house

WALLS = [
    ("", 100, "0000000000000000000009", "IfcWall", None, "Wall 0", None, None, "T1", None, 15, 15, 15),
    ("", 110, "0000000000000000000013", "IfcWall", None, "Wall 1", None, None, "T1", None, 15, 15, 15),
]


@pytest.fixture
def model() -> Any:
    return oxaifc.open(house().encode())


def test_a_table_tells_its_columns(model: oxaifc.Model) -> None:
    table = model.table("PROPERTY")
    assert repr(table) == "<oxaifc.Table property, 10 columns>"
    assert (table.name, table.description) == ("property", "A property of an element or type")
    assert table.model is model
    assert [column[:3] for column in table.columns][:6] == [
        ("file", "text", False),
        ("element_id", "integer", False),
        ("set_name", "text", False),
        ("name", "text", False),
        ("value_text", "text", True),
        ("value_number", "number", True),
    ]
    assert table.columns[0].description == "the file, as in the table file"
    points = model.table("IfcCartesianPointList3D").columns
    assert points[3][:3] == ("CoordList", "list of list of number", True)
    assert oxaifc.table_names()[:3] == ("file", "element", "property")
    with pytest.raises(oxaifc.UnknownNameError, match="there is no table propertie; did you mean property") as raised:
        model.table("propertie")
    assert raised.value.near[0] == "property"


def test_rows_are_tuples_and_columns_are_lists(model: oxaifc.Model) -> None:
    table = model.table("element")
    assert [row for row in table if row[3] == "IfcWall"] == WALLS
    assert [row for row in model.table("element", rows=1) if row[3] == "IfcWall"] == WALLS
    assert table.to_dict()["name"] == ["House 0", "House", "EG", "Wall 0", "Wall 1"]
    assert {row[0] for row in model.table("element", file="a.ifc")} == {"a.ifc"}
    rows = iter(table)
    assert len(list(rows)) == 5
    assert list(rows) == []
    values = model.table("property").to_dict()
    assert values["value_text"][:4] == ["F 0", "true", "0", None]
    assert values["value_boolean"][:4] == [None, True, None, None]
    assert values["value_number"][:4] == [None, None, 0.0, None]
    assert ("Own", "Märk", "小") in zip(values["set_name"], values["name"], values["value_text"])


def test_the_column_file_is_the_path(tmp_path: Path) -> None:
    path = tmp_path / "house.ifc"
    path.write_text(house())
    model = oxaifc.open(path)
    (row,) = model.table("file")
    assert row[:4] == (str(path), str(path), "IFC4", "house.ifc")
    assert (row[4], len(row[5])) == (path.stat().st_size, 64)


def test_a_table_that_is_read_keeps_its_model_alive() -> None:
    model = oxaifc.open(house().encode())
    gone = weakref.ref(model)
    rows = iter(model.table("element"))
    next(rows)
    del model
    assert gone() is not None
    assert len(list(rows)) == 4
    del rows
    assert gone() is None


def test_a_change_ends_rows(model: oxaifc.Model) -> None:
    rows = iter(model.table("element", rows=1))
    next(rows)
    model[100].Name = "other"
    with pytest.raises(oxaifc.Error, match="the model was changed while this table was read"):
        list(rows)
    assert "other" in model.table("element").to_dict()["name"]


class TestArrow:
    @pytest.fixture(autouse=True)
    def _installed(self) -> None:
        self.pyarrow = pytest.importorskip("pyarrow", reason="pyarrow is not installed")

    def test_every_table_is_what_its_rows_are(self, model: oxaifc.Model) -> None:
        classes = ("IfcRoot", "IfcWall", "IfcSIUnit", "IfcCartesianPointList3D", "IfcPropertySingleValue")
        for name in (*oxaifc.table_names(), *classes):
            table = model.table(name, file="a", rows=3)
            made = self.pyarrow.table(table)
            made.validate(full=True)
            assert [tuple(row.values()) for row in made.to_pylist()] == list(table), name
            assert self.pyarrow.schema(table) == made.schema
            assert [field.nullable for field in made.schema] == [column.nullable for column in table.columns]

    def test_what_was_taken_outlives_the_model(self) -> None:
        model = oxaifc.open(house(walls=300).encode())
        gone = weakref.ref(model)
        reader = self.pyarrow.RecordBatchReader.from_stream(model.table("element", rows=50))
        first = reader.read_next_batch()
        del model
        gc.collect()
        assert gone() is not None
        rest = reader.read_all()
        del reader
        gc.collect()
        assert gone() is None
        assert (first.num_rows, rest.num_rows) == (50, 253)
        assert first.column("name")[3].as_py() == "Wall 0"
        assert rest.column("name")[-1].as_py() == "Wall 299"

    def test_capsules_that_nobody_takes_let_the_model_go(self) -> None:
        model = oxaifc.open(house().encode())
        gone = weakref.ref(model)
        capsules = [model.table("element").__arrow_c_stream__(), model.table("element").__arrow_c_schema__()]
        assert [type(capsule).__name__ for capsule in capsules] == ["PyCapsule", "PyCapsule"]
        del model, capsules
        assert gone() is None

    def test_a_change_ends_a_stream(self, model: oxaifc.Model) -> None:
        reader = self.pyarrow.RecordBatchReader.from_stream(model.table("element", rows=1))
        reader.read_next_batch()
        model[100].Name = "other"
        with pytest.raises(self.pyarrow.ArrowException, match="the model was changed while this table was read"):
            reader.read_next_batch()

    def test_streams_are_read_on_many_threads(self) -> None:
        model = oxaifc.open(house(walls=500).encode())
        expected = self.pyarrow.table(model.table("property"))
        found = []

        def read() -> None:
            for _ in range(5):
                found.append(self.pyarrow.table(model.table("property", rows=100)).equals(expected))

        threads = [threading.Thread(target=read) for _ in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        assert found == [True] * 20

    def test_other_threads_run_while_batches_are_made(self) -> None:
        model = oxaifc.open(house(walls=20000).encode())
        ticks, done = [], threading.Event()

        def tick() -> None:
            while not done.wait(0.001):
                ticks.append(1)

        thread = threading.Thread(target=tick)
        thread.start()
        self.pyarrow.table(model.table("property", rows=1 << 30))
        during = len(ticks)
        done.set()
        thread.join()
        assert during > 5

    def test_batches_are_not_copied(self, model: oxaifc.Model) -> None:
        batch = self.pyarrow.RecordBatchReader.from_stream(model.table("element")).read_next_batch()
        polars = pytest.importorskip("polars", reason="polars is not installed")
        before = batch.column("id").buffers()[1].address
        assert polars.from_arrow(batch)["id"].to_arrow().buffers()[1].address == before


def test_polars_takes_a_table(model: oxaifc.Model) -> None:
    polars = pytest.importorskip("polars", reason="polars is not installed")
    frame = polars.DataFrame(model.table("property"))
    assert frame.height == 9
    assert frame.filter(polars.col("value_boolean"))["element_id"].to_list() == [100, 110]
    assert frame.schema["value_number"] == polars.Float64


def test_pandas_takes_a_table(model: oxaifc.Model) -> None:
    pandas = pytest.importorskip("pandas", reason="pandas is not installed")
    if not hasattr(pandas.DataFrame, "from_arrow"):
        pytest.skip("this pandas has no DataFrame.from_arrow")
    frame = pandas.DataFrame.from_arrow(model.table("element"))
    assert frame.loc[frame.type == "IfcWall", "name"].tolist() == ["Wall 0", "Wall 1"]


def test_duckdb_takes_a_table(model: oxaifc.Model) -> None:
    duckdb = pytest.importorskip("duckdb", reason="duckdb is not installed")
    property_ = duckdb.from_arrow(model.table("property"))
    counted = duckdb.sql("SELECT name, count(*) FROM property_ WHERE value_text IS NOT NULL GROUP BY 1 ORDER BY 1")
    assert counted.fetchall() == [("FireRating", 2), ("IsExternal", 2), ("Märk", 1), ("ThermalTransmittance", 2)]
    assert property_.filter("value_boolean").aggregate("count(*)").fetchall() == [(2,)]


class TestDataFrame:
    @pytest.fixture(autouse=True)
    def _installed(self) -> None:
        self.pandas = pytest.importorskip("pandas", reason="pandas is not installed")

    def test_one_row_an_element_with_its_properties(self, model: oxaifc.Model) -> None:
        frame = model.to_dataframe("IfcWall")
        assert frame.columns.tolist() == [
            "id", "type", "GlobalId", "OwnerHistory", "Name", "Description", "ObjectType", "ObjectPlacement",
            "Representation", "Tag", "PredefinedType", "Pset_WallCommon.FireRating", "Pset_WallCommon.IsExternal",
            "Pset_WallCommon.ThermalTransmittance", "Own.Märk", "Qto_WallBaseQuantities.NetVolume",
        ]  # fmt: skip
        assert frame["id"].tolist() == [100, 110]
        assert frame["Name"].tolist() == ["Wall 0", "Wall 1"]
        assert frame["Pset_WallCommon.FireRating"].tolist() == ["F 0", "F 0"]
        assert frame["Pset_WallCommon.IsExternal"].tolist() == [True, True]
        assert str(frame["Pset_WallCommon.IsExternal"].dtype) == "boolean"
        assert str(frame["Pset_WallCommon.ThermalTransmittance"].dtype) == "float64"
        assert frame["Own.Märk"].isna().tolist() == [True, False]
        assert frame["Qto_WallBaseQuantities.NetVolume"].fillna(-1).tolist() == [2.5, -1]
        assert frame["OwnerHistory"].isna().all()

    def test_without_properties(self, model: oxaifc.Model) -> None:
        assert len(model.to_dataframe("IfcWall", properties=False).columns) == 11

    def test_references_are_numbers(self, model: oxaifc.Model) -> None:
        frame = model.to_dataframe("IfcRelAggregates")
        assert frame["RelatingObject"].tolist() == [10, 14]
        assert frame["RelatedObjects"].tolist() == [[14], [15]]

    def test_what_a_query_selects(self, model: oxaifc.Model) -> None:
        frame = model.to_dataframe("IfcWall, Own.Märk!=NULL + IfcBuildingStorey")
        assert frame[["id", "type", "Name"]].values.tolist() == [
            [15, "IfcBuildingStorey", "EG"],
            [110, "IfcWall", "Wall 1"],
        ]
        assert frame["Elevation"].fillna(-1).tolist() == [0.0, -1]
        assert frame["Pset_WallCommon.FireRating"].isna().tolist() == [True, False]
        assert model.to_dataframe("IfcWall, Name=none").columns.tolist() == ["id", "type"]

    def test_values_of_several_kinds_are_texts(self, model: oxaifc.Model) -> None:
        model[110]["Own", "Mixed"] = 1.5
        model[100]["Own", "Mixed"] = "one"
        assert model.to_dataframe("IfcWall")["Own.Mixed"].tolist() == ["one", "1.5"]

    def test_a_fixed_table_is_itself(self, model: oxaifc.Model) -> None:
        assert model.to_dataframe("storey")["name"].tolist() == ["EG"]
        assert model.to_dataframe("storey").columns.tolist() == [column.name for column in model.table("storey").columns]

    def test_unknown_names(self, model: oxaifc.Model) -> None:
        with pytest.raises(oxaifc.UnknownNameError, match="IfcWall"):
            model.to_dataframe("IfcWal")
        with pytest.raises(oxaifc.QueryError):
            model.to_dataframe("IfcWall, =")


class TestArray:
    @pytest.fixture(autouse=True)
    def _installed(self) -> None:
        self.numpy = pytest.importorskip("numpy", reason="NumPy is not installed")

    def test_lists_of_numbers_are_arrays(self) -> None:
        model = oxaifc.Model("IFC4")
        points = model.create_entity("IfcCartesianPointList3D", CoordList=((0.0, 1.0, 2.0), (3.0, 4.0, 5.0)))
        mesh = model.create_entity("IfcTriangulatedFaceSet", Coordinates=points, CoordIndex=((1, 2, 1),))
        array = points.array("CoordList")
        assert (array.dtype, array.shape) == (self.numpy.float64, (2, 3))
        assert array.tolist() == [[0, 1, 2], [3, 4, 5]]
        assert array.flags.c_contiguous and array.flags.writeable
        assert memoryview(array).format == "d"
        index = mesh.array("CoordIndex")
        assert (index.dtype, index.tolist()) == (self.numpy.int64, [[1, 2, 1]])
        assert mesh.array("Normals") is None
        point = model.create_entity("IfcCartesianPoint", Coordinates=(1.0, 2.0))
        coordinates = point.array("Coordinates")
        del model, points, mesh, point
        gc.collect()
        assert coordinates.tolist() == [1, 2]
        assert array.sum() == 15

    def test_what_is_no_array(self, model: oxaifc.Model) -> None:
        with pytest.raises(oxaifc.ValueTypeError, match="Name is a text, and no list of numbers"):
            model[100].array("Name")
        with pytest.raises(oxaifc.ValueTypeError, match="HasProperties is a list of other values than numbers"):
            model[24].array("HasProperties")
        with pytest.raises(oxaifc.UnknownNameError):
            model[100].array("Nam")
        other = oxaifc.Model("IFC4")
        face = other.create_entity("IfcCartesianPointList3D", CoordList=((0.0, 1.0, 2.0), (3.0, 4.0, 5.0)))
        other.remove(face)
        with pytest.raises(oxaifc.RemovedError):
            face.array("CoordList")


def test_a_table_costs_no_more_than_dictionaries() -> None:
    polars = pytest.importorskip("polars", reason="polars is not installed")
    model = oxaifc.open(house(walls=5000).encode())
    walls = model.by_type("IfcWall")

    def cost(work: Callable[[], Any]) -> float:
        before = time.process_time()
        work()
        return time.process_time() - before

    rounds = range(3)
    frames = min(cost(lambda: polars.DataFrame(model.table("property"))) for _ in rounds)
    dictionaries = min(cost(lambda: [oxaifc.util.get_psets(wall) for wall in walls]) for _ in rounds)
    assert frames <= 1.4 * dictionaries
