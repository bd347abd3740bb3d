# SPDX-License-Identifier: Apache-2.0
"""Counts of a STEP file made from its text alone, held against the tables that oxaifc made of it.

Usage: table_counts.py MODEL.ifc FOLDER

FOLDER has csv/, json/, model.sqlite and where they were asked for model.xlsx, of the usual tables, reference and
IfcCartesianPoint. Prints a line for each difference, and "checked" with what was compared.
"""
import csv
import json
import os
import re
import sqlite3
import sys

sys.setrecursionlimit(10000)
csv.field_size_limit(1 << 30)

STATEMENT = re.compile(r"#(\d+)\s*=\s*([A-Za-z0-9_]+)\s*\(((?:[^';]|'(?:[^']|'')*')*)\)\s*;")
differences = []


def tell(what, expected, told):
    if expected != told:
        differences.append(f"{what}: {expected} in the text, {told} in the table")


def parameters(text):
    """The top-level parameters: a text as written, or a list of such."""
    stack, token, i = [[]], "", 0
    while i < len(text):
        c = text[i]
        if c == "'":
            end = i + 1
            while True:
                end = text.index("'", end) + 1
                if text[end:end + 1] != "'":
                    break
                end += 1
            token += text[i:end]
            i = end
            continue
        if c == "(":
            stack.append([])
            if token.strip():
                stack[-1].append("type:" + token.strip())
            token = ""
        elif c in ",)":
            if token.strip():
                stack[-1].append(token.strip())
            token = ""
            if c == ")":
                inner = stack.pop()
                stack[-1].append(inner)
        elif not c.isspace():
            token += c
        i += 1
    if token.strip():
        stack[-1].append(token.strip())
    return stack[0]


def references(value):
    if isinstance(value, list):
        return [one for item in value for one in references(item)]
    return [int(value[1:])] if re.fullmatch(r"#\d+", value) else []


def property_names(entities, identifier, opened):
    """Paths of the values below a property; a complex one is opened once a set."""
    keyword, values = entities[identifier]
    name = values[0]
    if keyword not in ("IFCCOMPLEXPROPERTY", "IFCPHYSICALCOMPLEXQUANTITY"):
        return 1
    if identifier in opened:
        return 1
    opened.add(identifier)
    parts = references(values[3] if keyword == "IFCCOMPLEXPROPERTY" else values[2])
    parts = [part for part in parts if part in entities]
    return sum(property_names(entities, part, opened) for part in parts) or 1


def main(model, folder):
    with open(model, encoding="latin-1") as file:
        text = re.sub(r"/\*.*?\*/", "", file.read(), flags=re.S)
    text = text[text.index("DATA"):]
    entities = {}
    for number, keyword, values in STATEMENT.findall(text):
        entities.setdefault(int(number), (keyword.upper(), parameters(values)))

    tables = {}
    for name in os.listdir(os.path.join(folder, "csv")):
        with open(os.path.join(folder, "csv", name), encoding="utf-8", newline="") as file:
            tables[name[:-4]] = list(csv.DictReader(file))

    # All references, and classes.
    tell("references", sum(one in entities for _, values in entities.values() for one in references(values)),
         len(tables["reference"]))
    classes = {}
    for row in tables["element"]:
        classes.setdefault(row["type"].upper(), set()).add(int(row["id"]))
    for keyword, ids in classes.items():
        tell("elements of " + keyword, sorted(n for n, (k, _) in entities.items() if k == keyword), sorted(ids))
    storeys = [n for n, (k, _) in entities.items() if k == "IFCBUILDINGSTOREY"]
    tell("storeys", sorted(storeys), sorted(int(row["id"]) for row in tables["storey"]))

    # Relationships of one and many.
    pairs = {"IFCRELDEFINESBYPROPERTIES": (5, 4), "IFCRELDEFINESBYTYPE": (5, 4), "IFCRELAGGREGATES": (4, 5),
             "IFCRELCONTAINEDINSPATIALSTRUCTURE": (5, 4), "IFCRELASSOCIATESMATERIAL": (5, 4),
             "IFCRELVOIDSELEMENT": (4, 5), "IFCRELFILLSELEMENT": (4, 5), "IFCRELNESTS": (4, 5)}
    expected, told = set(), set()
    for number, (keyword, values) in entities.items():
        if keyword in pairs:
            whole, part = pairs[keyword]
            for a in references(values[whole]):
                for b in references(values[part]):
                    if a in entities and b in entities:
                        expected.add((number, a, b))
    for row in tables["relation"]:
        if row["type"].upper() in pairs and row["from_id"] and row["to_id"]:
            told.add((int(row["id"]), int(row["from_id"]), int(row["to_id"])))
    tell("relations", sorted(expected), sorted(told))

    # Properties and quantities: the sets of an element, then those of its type; the first of a name in a set counts.
    own, types = {}, {}
    for number in sorted(entities):
        keyword, values = entities[number]
        if keyword in ("IFCRELDEFINESBYPROPERTIES", "IFCRELOVERRIDESPROPERTIES"):
            for element in references(values[4]):
                own.setdefault(element, []).extend(references(values[5]))
        elif keyword == "IFCRELDEFINESBYTYPE":
            for element in references(values[4]):
                types.setdefault(element, references(values[5])[0])
    elements = {int(row["id"]): row["type"].upper() for row in tables["element"]}

    def sets_of(element):
        sets = list(own.get(element, []))
        if elements[element].endswith(("TYPE", "STYLE")) and len(entities[element][1]) > 5:
            sets += references(entities[element][1][5])
        return list(dict.fromkeys(sets))

    counts = {"property": 0, "quantity": 0}
    for element in elements:
        sets = sets_of(element) + (sets_of(types[element]) if element in types else [])
        seen = set()
        for one in sets:
            if one not in entities:
                continue
            keyword, values = entities[one]
            table = "quantity" if keyword == "IFCELEMENTQUANTITY" else "property"
            name = values[2] if values[2] != "$" else keyword
            opened = set()
            if keyword in ("IFCPROPERTYSET", "IFCELEMENTQUANTITY"):
                for item in references(values[4 if keyword == "IFCPROPERTYSET" else 5]):
                    if item in entities and (table, name, entities[item][1][0]) not in seen:
                        seen.add((table, name, entities[item][1][0]))
                        counts[table] += property_names(entities, item, opened)
            else:
                for i, value in enumerate(values[4:]):
                    if value not in ("$", "*") and (table, name, i) not in seen:
                        seen.add((table, name, i))
                        counts[table] += 1
    for table, count in counts.items():
        tell("rows of " + table, count, len(tables[table]))

    # Reals come back with all digits.
    points = {n: [float(x) for x in v[0]] for n, (k, v) in entities.items() if k == "IFCCARTESIANPOINT"}
    tell("coordinates", points, {int(row["id"]): json.loads(row["Coordinates"]) for row in tables["IfcCartesianPoint"]})

    # All forms have the same rows.
    base = sqlite3.connect(os.path.join(folder, "model.sqlite"))
    base.text_factory = lambda b: b.decode("utf-8")
    for name, rows in tables.items():
        with open(os.path.join(folder, "json", name + ".ndjson"), encoding="utf-8") as file:
            lines = [json.loads(line) for line in file]
        cursor = base.execute(f'SELECT * FROM "{name}"')
        columns = [column[0] for column in cursor.description]
        stored = cursor.fetchall()
        tell(name + " in three forms", len(rows), len(lines))
        tell(name + " in three forms", len(rows), len(stored))
        if name == "error":
            continue   # of two instances with one GlobalId the thread that comes last tells
        for row, line, record in zip(rows, lines, stored):
            for column, cell in zip(columns, record):
                value, shown = line[column], row[column]
                if isinstance(value, list):
                    tell(f"{name}.{column}", value, json.loads(cell))
                    tell(f"{name}.{column}", value, json.loads(shown))
                    continue
                tell(f"{name}.{column}", value, bool(cell) if isinstance(value, bool) else cell)
                if isinstance(value, bool):
                    tell(f"{name}.{column}", str(value).lower(), shown)
                elif isinstance(value, (int, float)):
                    tell(f"{name}.{column}", value, float(shown))
                elif value is None:
                    tell(f"{name}.{column}", "", shown)
                else:
                    tell(f"{name}.{column}", value, shown[1:] if shown == "'" + value else shown)
            if len(differences) > 20:
                break
    compared = "CSV, JSON, SQLite"
    try:
        import openpyxl
        book = openpyxl.load_workbook(os.path.join(folder, "model.xlsx"), read_only=True)
    except (ImportError, FileNotFoundError):
        book = None
    if book:
        compared += ", XLSX"
        for name, rows in tables.items():
            cells = list(book[name].iter_rows(values_only=True))
            names, cells = cells[0], cells[1:]
            tell(name + " in XLSX", len(rows), len(cells))
            for row, record in zip(rows, cells):
                for column, cell in zip(names, record):
                    shown = row[column]
                    if isinstance(cell, bool):
                        cell = str(cell).lower()
                    elif isinstance(cell, (int, float)):
                        cell, shown = float(cell), float(shown)
                    elif cell is None:
                        cell = ""
                    elif shown == "'" + cell:
                        shown = cell
                    tell(f"{name}.{column} in XLSX", shown, cell)
    for difference in differences[:20]:
        print(difference[:400])
    print(f"checked {sum(map(len, tables.values()))} rows in {compared}")
    return 1 if differences else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
