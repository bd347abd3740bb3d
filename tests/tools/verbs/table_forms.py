# SPDX-License-Identifier: Apache-2.0
"""The same tables in all forms: JSON lines, CSV, SQLite, XLSX and Arrow, read back with what Python has of them.

For table_counts.py and by itself, over FOLDER with json/ and any of csv/, model.sqlite, model.xlsx:

Usage: table_forms.py FOLDER [MODEL LIBRARY]

LIBRARY makes Arrow streams of MODEL (TableStream.cpp). Prints a line for each difference, and "checked" with what was
compared; what needs a package that is not there is told as skipped.
"""
import csv
import ctypes
import json
import math
import os
import shutil
import sqlite3
import subprocess
import sys

csv.field_size_limit(1 << 30)
SHELL_ROWS = 2000   # of a table; all of them are compared by the module
differences = []


def tell(what, expected, told):
    if expected == told:
        return
    if isinstance(expected, list) and isinstance(told, list):
        at = next((i for i, (a, b) in enumerate(zip(expected, told)) if a != b), min(len(expected), len(told)))
        what += f" (of {len(expected)} and {len(told)}, the one at {at})"
        expected, told = expected[at:at + 1], told[at:at + 1]
    differences.append(f"{what}: expected {expected}, told {told}")


def json_tables(folder):
    tables = {}
    for name in sorted(os.listdir(os.path.join(folder, "json"))):
        with open(os.path.join(folder, "json", name), encoding="utf-8") as file:
            tables[name.removesuffix(".ndjson")] = [json.loads(line) for line in file]
    return tables


def number(value):
    """What JSON has as a number, and "inf" that it has not."""
    return float(value) if value in ("inf", "-inf", "nan") else value


def check_csv(folder, tables):
    for name, rows in tables.items():
        # Python's reader does not tell an empty field from an empty text in quotes.
        with open(os.path.join(folder, "csv", name + ".csv"), encoding="utf-8", newline="") as file:
            lines = list(csv.DictReader(file))
        tell(name + " in CSV", len(rows), len(lines))
        for row, line in zip(rows, lines):
            if name == "error":
                break   # of two instances with one GlobalId the thread that comes last tells
            for column, value in row.items():
                shown = line[column]
                if value is None:
                    tell(f"{name}.{column} in CSV", "", shown)
                elif isinstance(value, bool):
                    tell(f"{name}.{column} in CSV", str(value).lower(), shown)
                elif isinstance(value, (int, float)):
                    tell(f"{name}.{column} in CSV", value, float(shown) if isinstance(value, float) else int(shown))
                elif isinstance(value, list):
                    tell(f"{name}.{column} in CSV", value, json.loads(shown))
                else:
                    tell(f"{name}.{column} in CSV", value, shown[1:] if shown == "'" + value else shown)
        if len(differences) > 20:
            break


def check_sqlite(folder, tables):
    path = os.path.join(folder, "model.sqlite")
    base = sqlite3.connect(path)
    tell("the base", [("ok",)], base.execute("PRAGMA integrity_check").fetchall())
    for name, rows in tables.items():
        cursor = base.execute(f'SELECT * FROM "{name}"')
        columns = [column[0] for column in cursor.description]
        stored = cursor.fetchall()
        tell(name + " in SQLite", len(rows), len(stored))
        for row, record in zip(rows, stored):
            if name == "error":
                break
            for column, cell in zip(columns, record):
                value = row[column]
                if isinstance(value, list):
                    cell = json.loads(cell)
                elif isinstance(value, bool):
                    cell = bool(cell)
                elif isinstance(cell, float):
                    value = number(value)
                tell(f"{name}.{column} in SQLite", value, cell)
        if len(differences) > 20:
            break
    base.close()


def check_shell(folder, tables):
    for name, rows in tables.items():
        run = subprocess.run(["sqlite3", "-readonly", "-json", os.path.join(folder, "model.sqlite"),
                              f'SELECT * FROM "{name}" LIMIT {SHELL_ROWS}'], capture_output=True, encoding="utf-8")
        tell(name + " in the shell of SQLite", (0, ""), (run.returncode, run.stderr))
        shown = json.loads(run.stdout or "[]", strict=False)
        tell(name + " in the shell of SQLite", min(len(rows), SHELL_ROWS), len(shown))
        for row, line in zip(rows, shown):
            if name == "error":
                break
            for column, value in row.items():
                cell = line[column]
                if isinstance(value, str) and "\0" in value:
                    continue   # where the shell's texts end
                if isinstance(value, list):
                    cell = json.loads(cell)
                elif isinstance(value, float):
                    tell(f"{name}.{column} in the shell", True, math.isclose(value, cell, rel_tol=1e-14))
                    continue
                tell(f"{name}.{column} in the shell", int(value) if isinstance(value, bool) else value, cell)
        if len(differences) > 20:
            break


def check_xlsx(folder, tables, openpyxl):
    book = openpyxl.load_workbook(os.path.join(folder, "model.xlsx"), read_only=True)
    for name, rows in tables.items():
        cells = list(book[name[:31]].iter_rows(values_only=True))
        names, cells = cells[0], cells[1:]
        tell(name + " in XLSX", len(rows), len(cells))
        for row, record in zip(rows, cells):
            if name == "error":
                break
            for column, cell in zip(names, record):
                value = row[column]
                if isinstance(value, list):
                    cell = json.loads(cell)
                elif isinstance(value, str):
                    # What XML has not stands as _x0001_ there.
                    value, cell = value or None, cell and openpyxl.utils.escape.unescape(str(cell))
                elif isinstance(value, (int, float)) and not isinstance(value, bool):
                    value, cell = float(value), float(cell)
                tell(f"{name}.{column} in XLSX", value, cell)
        if len(differences) > 20:
            break


def check_arrow(tables, model, library, pyarrow):
    """Streams of the same tables over the C data interface, which pyarrow takes over and checks."""
    streams = ctypes.CDLL(library)
    streams.modelOpen.restype = ctypes.c_void_p
    opened = ctypes.c_void_p(streams.modelOpen(model.encode()))
    for name, rows in tables.items():
        stream = ctypes.create_string_buffer(5 * 8)   # a struct of five pointers
        streams.tableStream(opened, model.encode(), name.encode(), stream)
        table = pyarrow.RecordBatchReader._import_from_c(ctypes.addressof(stream)).read_all()
        table.validate(full=True)
        told = table.to_pylist()
        tell(name + " in Arrow", len(rows), len(told))
        for row, record in zip(rows, told):
            if name == "error":
                break
            tell(name + " in Arrow", {key: value for key, value in row.items()},
                 {key: value for key, value in record.items()})
            if len(differences) > 20:
                break
    streams.modelClose(opened)


def check_forms(folder, tables, model=None, library=None):
    """The names of the forms that were compared."""
    there = lambda name: os.path.exists(os.path.join(folder, name))
    compared = ["JSON"]
    if there("csv"):
        check_csv(folder, tables)
        compared.append("CSV")
    if there("model.sqlite"):
        check_sqlite(folder, tables)
        compared.append("SQLite")
        if shutil.which("sqlite3"):
            check_shell(folder, tables)
            compared.append("the shell of SQLite")
    for module, wanted, check in (("openpyxl", there("model.xlsx"), lambda m: check_xlsx(folder, tables, m)),
                                  ("pyarrow", library, lambda m: check_arrow(tables, model, library, m))):
        if not wanted:
            continue
        try:
            package = __import__(module)
        except ImportError:
            print(f"skipped: there is no {module}")
            continue
        check(package)
        compared.append("XLSX" if module == "openpyxl" else "Arrow")
    return compared


def main(folder, model=None, library=None):
    tables = json_tables(folder)
    compared = check_forms(folder, tables, model, library)
    for difference in differences[:20]:
        print(difference[:600])
    print(f"checked {sum(map(len, tables.values()))} rows in {', '.join(compared)}")
    return 1 if differences else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
