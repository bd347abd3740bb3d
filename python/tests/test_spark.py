# SPDX-License-Identifier: Apache-2.0
"""The data source for PySpark: forty models over two local executors give the rows of one process.

One session for all of it: to start two executors takes as long as everything else here.
"""

from __future__ import annotations

import os
import re
import shutil
import sys
from pathlib import Path
from typing import Any

import oxaifc
import pytest

from houses import portfolio

pyarrow = pytest.importorskip("pyarrow", reason="pyarrow is not installed")
pytest.importorskip("pyspark.sql.datasource", reason="PySpark 4 is not installed")
pytestmark = pytest.mark.filterwarnings("ignore")


@pytest.fixture(scope="module")
def models(tmp_path_factory: pytest.TempPathFactory) -> Any:
    folder = portfolio(tmp_path_factory.mktemp("models"), 40)
    (folder / "broken.ifc").write_text("no model")
    return folder


@pytest.fixture(scope="module")
def spark() -> Any:
    if shutil.which("java") is None and "JAVA_HOME" not in os.environ:
        pytest.skip("Java is not installed")
    import pyspark
    from oxaifc.spark import IfcDataSource
    from pyspark.sql import SparkSession

    os.environ["SPARK_HOME"] = os.path.dirname(pyspark.__file__)
    os.environ["PYSPARK_PYTHON"] = sys.executable
    session = (
        SparkSession.builder.master("local-cluster[2,1,640]")
        .config("spark.executor.memory", "640m")
        .config("spark.driver.host", "127.0.0.1")
        .config("spark.driver.bindAddress", "127.0.0.1")
        .config("spark.ui.enabled", "false")
        .config("spark.sql.shuffle.partitions", "2")
        .config("spark.sql.python.filterPushdown.enabled", "true")
        .getOrCreate()
    )
    session.sparkContext.setLogLevel("OFF")
    session.dataSource.register(IfcDataSource)
    yield session
    session.stop()


def source(spark: Any, models: Path, table: str, **options: Any) -> Any:
    reader = spark.read.format("ifc").option("table", table)
    for name, value in options.items():
        reader = reader.option(name, value)
    return reader.load(str(models))


def one_process(models: Path, table: str) -> Any:
    rows = []
    for path in sorted(models.rglob("house*")):
        rows += pyarrow.table(oxaifc.open(path).table(table, file=str(path))).to_pylist()
    return rows


def as_set(rows: Any) -> Any:
    return sorted(map(repr, map(sorted_items, rows)))


def sorted_items(row: Any) -> Any:
    return sorted(row.items(), key=lambda item: item[0])


def test_two_executors_give_the_rows_of_one_process(spark: Any, models: Path) -> None:
    data = source(spark, models, "property", minPartitions=4)
    found = data.toArrow().to_pylist()
    assert as_set(found) == as_set(one_process(models, "property"))
    assert data.rdd.getNumPartitions() == 4
    executors = spark.sparkContext._jsc.sc().getExecutorMemoryStatus().size()
    assert executors == 3  # the driver is one


def test_filters_are_answered_where_files_are_read(spark: Any, models: Path) -> None:
    walls = source(spark, models, "element").where("type = 'IfcWall' AND guid IS NOT NULL")
    some = one_process(models, "element")
    assert as_set(walls.toArrow().to_pylist()) == as_set([row for row in some if row["type"] == "IfcWall"])
    plan = walls._jdf.queryExecution().executedPlan().toString()
    assert not re.search(r"\bFilter\b", plan), plan
    one = source(spark, models, "element").where(f"guid IN ('{some[0]['guid']}', 'x')")
    assert one.toArrow().to_pylist() == some[:1]


def test_what_can_not_be_read_is_a_row_or_ends_the_job(spark: Any, models: Path) -> None:
    (row,) = source(spark, models, "error").where("severity = 'fatal'").collect()
    assert (row.file, row.severity, row.key) == (str(models / "broken.ifc"), "fatal", "Error_FileNotRead")
    with pytest.raises(Exception, match="broken.ifc"):
        source(spark, models, "file", mode="failfast").collect()


def test_schema_and_exporter_are_added(spark: Any, models: Path) -> None:
    data = source(spark, models, "IfcWall", add="schema, exporter")
    assert data.columns[-3:] == ["PredefinedType", "schema", "exporter"]
    counts = data.groupBy("schema", "exporter").count().collect()
    assert sum(row["count"] for row in counts) == sum(1 + number % 5 for number in range(40))
    assert {row.schema for row in counts} == {"IFC2X3", "IFC4", "IFC4X3_ADD2"}
    assert {row.exporter for row in counts} == {"Plan Studio", "Bau", "unknown"}


class TestWithoutASession:
    """What is decided on the driver: options, partitions and filters."""

    def reader(self, models: Path, filters: bool = False, columns: Any = None, **options: str) -> Any:
        from oxaifc import spark
        from pyspark.sql.pandas.types import to_arrow_schema

        made = spark.IfcDataSource({"path": str(models), **options})
        schema = made.schema()
        if columns is not None:
            schema = type(schema)([schema[name] for name in columns])
        if not filters:
            return made.reader(schema)
        return spark._FilteringReader(spark._Options.of(made.options), to_arrow_schema(schema))

    def test_no_file_is_opened_for_the_schema(self) -> None:
        from oxaifc.spark import IfcDataSource

        schema = IfcDataSource({"path": "/nowhere", "table": "property", "add": "exporter"}).schema()
        assert schema.simpleString() == (
            "struct<file:string,element_id:bigint,set_name:string,name:string,value_text:string,value_number:double,"
            "value_boolean:boolean,value_type:string,unit:string,source:string,exporter:string>"
        )
        assert [field.nullable for field in schema][:5] == [False, False, False, False, True]
        points = IfcDataSource({"table": "IfcCartesianPointList3D"}).schema()["CoordList"]
        assert points.dataType.simpleString() == "array<array<double>>"

    def test_wrong_options(self) -> None:
        from oxaifc.spark import IfcDataSource

        rows = [
            ({}, "the option table is missing"),
            ({"tabel": "file"}, "there is no option tabel; did you mean table"),
            ({"table": "propertie"}, "did you mean property"),
            ({"table": "file", "mode": "strict"}, "permissive or failfast"),
            ({"table": "file", "partitionBytes": "x"}, "partitionBytes is a number above 0"),
            ({"table": "file", "schema": "IFC5"}, "IFC5"),
            ({"table": "file", "add": "shema"}, "there is no column shema"),
        ]
        for options, message in rows:
            with pytest.raises(oxaifc.Error, match=message):
                IfcDataSource(options).schema()

    def test_large_files_stand_alone_and_small_ones_together(self, models: Path) -> None:
        reader = self.reader(models, table="file")
        assert [len(part.files) for part in reader.partitions()] == [21, 20]
        parts = self.reader(models, table="file", minPartitions="7").partitions()
        assert sorted(len(part.files) for part in parts) == [5, 6, 6, 6, 6, 6, 6]
        alone = self.reader(models, table="file", partitionBytes="1").partitions()
        assert [len(part.files) for part in alone] == [1] * 41

    def test_a_given_schema_chooses_columns(self, models: Path) -> None:
        reader = self.reader(models / "project0", table="element", columns=["name", "file"])
        batch = next(reader.read(reader.partitions()[0]))
        assert batch.schema.names == ["name", "file"]
        assert batch.column("name")[0].as_py() == "House 0"
        from oxaifc.spark import IfcDataSource
        from pyspark.sql.types import StringType, StructField, StructType

        with pytest.raises(oxaifc.Error, match="the table element has no column names; did you mean name"):
            IfcDataSource({"table": "element"}).reader(StructType([StructField("names", StringType())]))

    def test_filters_as_sql_has_them(self, models: Path) -> None:
        filters = pytest.importorskip("pyspark.sql.datasource", reason="PySpark 4.1 has filters")
        if not hasattr(filters, "EqualTo"):
            pytest.skip("this PySpark has no filters")
        f = filters
        table: list[tuple[Any, Any]] = [
            (f.EqualTo(("type",), "IfcWall"), lambda row: row["type"] == "IfcWall"),
            (f.Not(f.EqualTo(("tag",), "T1")), lambda row: row["tag"] not in (None, "T1")),
            (f.EqualNullSafe(("tag",), None), lambda row: row["tag"] is None),
            (f.Not(f.EqualNullSafe(("tag",), "T1")), lambda row: row["tag"] != "T1"),
            (f.In(("id",), (100, 110)), lambda row: row["id"] in (100, 110)),
            (f.Not(f.In(("tag",), ("x",))), lambda row: row["tag"] not in (None, "x")),
            (f.Not(f.In(("tag",), ("x", None))), lambda row: False),
            (f.In(("tag",), ("T1", None)), lambda row: row["tag"] == "T1"),
            (f.GreaterThan(("id",), 100), lambda row: row["id"] > 100),
            (f.GreaterThanOrEqual(("id",), 100), lambda row: row["id"] >= 100),
            (f.LessThan(("name",), "House"), lambda row: (row["name"] or "~") < "House"),
            (f.LessThanOrEqual(("name",), "House"), lambda row: (row["name"] or "~") <= "House"),
            (f.IsNull(("tag",)), lambda row: row["tag"] is None),
            (f.IsNotNull(("tag",)), lambda row: row["tag"] is not None),
            (f.StringStartsWith(("name",), "Wa"), lambda row: (row["name"] or "").startswith("Wa")),
            (f.StringEndsWith(("name",), "1"), lambda row: (row["name"] or "").endswith("1")),
            (f.StringContains(("name",), "al"), lambda row: "al" in (row["name"] or "")),
        ]
        rows = one_process(models / "project0", "element")
        for one, wanted in table:
            reader = self.reader(models / "project0", True, table="element")
            assert list(reader.pushFilters([one])) == []
            found = [row for part in reader.partitions() for batch in reader.read(part) for row in batch.to_pylist()]
            assert as_set(found) == as_set([row for row in rows if wanted(row)]), one

    def test_filters_that_spark_answers_itself(self, models: Path) -> None:
        filters = pytest.importorskip("pyspark.sql.datasource")
        if not hasattr(filters, "EqualTo"):
            pytest.skip("this PySpark has no filters")
        rest = [
            filters.EqualTo(("value_number",), 1.5),
            filters.GreaterThan(("value_number",), float("nan")),
            filters.EqualTo(("element_id",), 1.5),
        ]
        reader = self.reader(models, True, table="property")
        assert list(reader.pushFilters(rest)) == rest

    def test_a_filter_on_files_opens_no_other(self, models: Path) -> None:
        filters = pytest.importorskip("pyspark.sql.datasource")
        if not hasattr(filters, "EqualTo"):
            pytest.skip("this PySpark has no filters")
        reader = self.reader(models, True, table="element")
        name = str(models / "project0" / "house00.ifc")
        assert list(reader.pushFilters([filters.EqualTo(("file",), name)])) == []
        assert [[file.name for file in part.files] for part in reader.partitions()] == [[name]]
