# SPDX-License-Identifier: Apache-2.0
"""What the text of a STEP file says, held against the tables that oxaifc made of it; and its forms against each other.

Usage: table_counts.py MODEL.ifc FOLDER [LIBRARY]

FOLDER has json/, csv/, model.sqlite and where it was asked for model.xlsx, of the usual tables, reference and the classes
below; LIBRARY makes Arrow streams (TableStream.cpp). Prints a line for each difference, and "checked" with what was compared.
"""
import collections
import json
import math
import sys

import table_forms
from step_text import Typed, plain, references, statements

sys.setrecursionlimit(10000)

differences = table_forms.differences
tell = table_forms.tell


class Text:
    """The model as its text has it, with what its relationships say."""

    def __init__(self, path):
        self.entities, self.lines = statements(path)
        self.by_keyword = collections.defaultdict(list)
        for number, (keyword, _) in sorted(self.entities.items()):
            self.by_keyword[keyword].append(number)
        self.told = set()   # instances that a record tells something of: a value of theirs may not be the file's

    def of(self, *keywords):
        return [(number, self.entities[number][1]) for keyword in keywords for number in self.by_keyword[keyword]]

    def keyword(self, number):
        return self.entities[number][0]

    def value(self, number, position):
        values = self.entities[number][1]
        return plain(values[position]) if position < len(values) else None

    def there(self, value):
        """References to what the file defines."""
        return [one for one in references(value) if one in self.entities]

    def relation(self, keywords, whole, part):
        """{part: first whole by the number of the relationship}."""
        found = {}
        for number, values in sorted(self.of(*keywords)):
            for one in self.there(values[part]):
                for other in self.there(values[whole])[:1]:
                    found.setdefault(one, other)
        return found


# Elements

TAGGED = ("IFCWALL", "IFCWALLSTANDARDCASE", "IFCDOOR", "IFCWINDOW", "IFCSLAB", "IFCBEAM", "IFCCOLUMN", "IFCSTAIR",
          "IFCROOF", "IFCOPENINGELEMENT", "IFCRAILING", "IFCCOVERING", "IFCMEMBER", "IFCFURNISHINGELEMENT",
          "IFCBUILDINGELEMENTPROXY", "IFCFLOWSEGMENT", "IFCFLOWTERMINAL", "IFCPIPESEGMENT")
SPATIAL = ("IFCSITE", "IFCBUILDING", "IFCBUILDINGSTOREY", "IFCSPACE", "IFCFACILITY", "IFCFACILITYPART", "IFCBRIDGE",
           "IFCBRIDGEPART", "IFCROAD", "IFCROADPART", "IFCRAILWAY", "IFCRAILWAYPART", "IFCSPATIALZONE",
           "IFCMARINEFACILITY")


GUID = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_$"


def guid(token):
    """Of 128 bits, which the first of the 22 characters has two of."""
    text = plain(token)
    return text and GUID[GUID.index(text[0]) % 4] + text[1:]


def check_elements(text, tables):
    up = {}
    for keywords, whole, part in ((("IFCRELAGGREGATES", "IFCRELDECOMPOSES"), 4, 5), (("IFCRELNESTS",), 4, 5),
                                  (("IFCRELCONTAINEDINSPATIALSTRUCTURE",), 5, 4), (("IFCRELVOIDSELEMENT",), 4, 5),
                                  (("IFCRELFILLSELEMENT",), 4, 5)):
        for one, above in text.relation(keywords, whole, part).items():
            up.setdefault(one, above)
    types = text.relation(("IFCRELDEFINESBYTYPE",), 5, 4)

    def nearest(number, keywords):
        for _ in range(100):
            number = up.get(number)
            if number is None or text.keyword(number) in keywords:
                return number
        return None

    others = {"IFCRELPROJECTSELEMENT", "IFCRELCOVERSBLDGELEMENTS", "IFCRELCONNECTSPORTTOELEMENT",
              "IFCRELADHERESTOELEMENT"}
    simple = not any(text.by_keyword[keyword] for keyword in others)
    seen = collections.Counter()
    for row in tables["element"]:
        number = row["id"]
        keyword, values = text.entities[number]
        seen[keyword] += 1
        expected = {"type": keyword, "guid": guid(values[0]), "name": plain(values[2]), "description": plain(values[3]),
                    "type_id": types.get(number)}
        if keyword in TAGGED:
            expected["object_type"], expected["tag"] = plain(values[4]), plain(values[7])
        if simple:
            expected.update(parent_id=up.get(number), container_id=nearest(number, SPATIAL),
                            storey_id=nearest(number, ("IFCBUILDINGSTOREY",)))
        told = {name: row[name] for name in expected}
        told["type"] = told["type"].upper()
        tell(f"element {number}", expected, told)
    for keyword in seen:
        tell("elements of " + keyword, len(text.by_keyword[keyword]), seen[keyword])
    for keyword in TAGGED + SPATIAL + ("IFCPROJECT", "IFCGROUP", "IFCZONE", "IFCWALLTYPE", "IFCDOORSTYLE"):
        tell("elements of " + keyword, len(text.by_keyword[keyword]), seen[keyword])
    expected = [{"id": n, "guid": guid(v[0]), "name": plain(v[2]), "long_name": plain(v[7]),
                 "elevation": plain(v[9]), "building_id": nearest(n, ("IFCBUILDING",))}
                for n, v in text.of("IFCBUILDINGSTOREY")]
    tell("storeys", expected, [{name: row[name] for name in expected[0]} for row in tables["storey"]] if expected else [])


# Units

PREFIX = {"EXA": 18, "PETA": 15, "TERA": 12, "GIGA": 9, "MEGA": 6, "KILO": 3, "HECTO": 2, "DECA": 1, "DECI": -1,
          "CENTI": -2, "MILLI": -3, "MICRO": -6, "NANO": -9, "PICO": -12, "FEMTO": -15, "ATTO": -18}
LETTER = {"KILO": "k", "CENTI": "c", "MILLI": "m", "DECI": "d", "MEGA": "M", None: ""}
SYMBOL = {"METRE": "m", "SQUARE_METRE": "m\u00b2", "CUBIC_METRE": "m\u00b3", "RADIAN": "rad", "GRAM": "g", "SECOND": "s",
          "KELVIN": "K", "NEWTON": "N", "PASCAL": "Pa", "WATT": "W", "LUMEN": "lm", "AMPERE": "A", "VOLT": "V"}
MEASURE = {"IFCQUANTITYLENGTH": "LENGTHUNIT", "IFCQUANTITYAREA": "AREAUNIT", "IFCQUANTITYVOLUME": "VOLUMEUNIT",
           "IFCQUANTITYWEIGHT": "MASSUNIT", "IFCQUANTITYTIME": "TIMEUNIT", "IFCLENGTHMEASURE": "LENGTHUNIT",
           "IFCPOSITIVELENGTHMEASURE": "LENGTHUNIT", "IFCAREAMEASURE": "AREAUNIT", "IFCVOLUMEMEASURE": "VOLUMEUNIT",
           "IFCPLANEANGLEMEASURE": "PLANEANGLEUNIT", "IFCPOWERMEASURE": "POWERUNIT", "IFCMASSMEASURE": "MASSUNIT"}


def si_unit(values):
    """(type, symbol, factor) of the parameters of an IFCSIUNIT that is known here; None of another."""
    _, kind, prefix, name = (plain(one) for one in values)
    if name not in SYMBOL or prefix not in LETTER:
        return None
    power = {"SQUARE_METRE": 2, "CUBIC_METRE": 3}.get(name, 1) * PREFIX.get(prefix, 0) - 3 * (name == "GRAM")
    return kind, LETTER[prefix] + SYMBOL[name], 10.0 ** power


def check_units(text, tables):
    """The units; gives (symbol, factor) by what they measure."""
    assigned = [number for _, values in text.of("IFCPROJECT") for one in text.there(values[-1])
                if text.keyword(one) == "IFCUNITASSIGNMENT" for number in text.there(text.entities[one][1][0])]
    tell("units", assigned if assigned else [], [row["id"] for row in tables["unit"]])
    units = {}
    for row in tables["unit"]:
        keyword, values = text.entities[row["id"]]
        if keyword == "IFCCONVERSIONBASEDUNIT":
            tell(f"unit {row['id']}", (plain(values[1]), plain(values[2])), (row["type"], row["name"]))
            units.setdefault(row["type"], None)
        if keyword != "IFCSIUNIT":
            continue
        known = si_unit(values)
        tell(f"unit {row['id']}", plain(values[1]), row["type"])
        if known:
            tell(f"unit {row['id']}", known[:2], (row["type"], row["symbol"]))
            tell(f"unit {row['id']}", True, math.isclose(known[2], row["si_factor"]))
        units.setdefault(row["type"], known)
    return units


# Properties and quantities

def sets_by_element(text, elements):
    """[(set, source)] by element: its own, then those of its type."""
    own, types = collections.defaultdict(list), text.relation(("IFCRELDEFINESBYTYPE",), 5, 4)
    for number, values in sorted(text.of("IFCRELDEFINESBYPROPERTIES", "IFCRELOVERRIDESPROPERTIES")):
        for element in references(values[4]):
            own[element] += text.there(values[5])

    def of(element):
        sets = list(own[element])
        keyword, values = text.entities[element]
        if keyword.endswith(("TYPE", "STYLE")) and len(values) > 5:
            sets += text.there(values[5])
        return list(dict.fromkeys(sets))

    for element in elements:
        yield element, ([(one, "instance") for one in of(element)] +
                        [(one, "type") for one in (of(types[element]) if element in types else [])])


def leaves(text, number, name, opened):
    """(path of names, number) of the values below a property; a complex one is opened once a set."""
    keyword, values = text.entities[number]
    if keyword not in ("IFCCOMPLEXPROPERTY", "IFCPHYSICALCOMPLEXQUANTITY"):
        return [(name, number)]
    if number in opened:
        return [(name, None)]
    opened.add(number)
    parts = text.there(values[3] if keyword == "IFCCOMPLEXPROPERTY" else values[2])
    found = [leaf for part in parts for leaf in leaves(text, part, f"{name}.{text.value(part, 0) or ''}", opened)]
    return found or [(name, None)]


def as_json(value):
    return json.loads(json.dumps(value).replace('"unknown"', '"UNKNOWN"'))


def property_cells(text, number, units):
    """What is known here of the cells of a property; a name that is missing is not compared."""
    keyword, values = text.entities[number]
    position = {"IFCPROPERTYSINGLEVALUE": 2, "IFCPROPERTYENUMERATEDVALUE": 2, "IFCPROPERTYLISTVALUE": 2,
                "IFCPROPERTYREFERENCEVALUE": 3}.get(keyword)
    if keyword == "IFCPROPERTYBOUNDEDVALUE":
        whole = {"lower": plain(values[3]), "upper": plain(values[2]),
                 "value": plain(values[5]) if len(values) > 5 else None}
        return {"json": whole}
    if keyword == "IFCPROPERTYTABLEVALUE":
        return {"json": {"defining": plain(values[2]), "defined": plain(values[3])}}
    if position is None:
        return {}
    value = values[position]
    if isinstance(value, list) and len(value) != 1:
        return {"json": plain(value)}
    if isinstance(value, list):
        value = value[0]
    cells = {"value": plain(value)}
    if isinstance(value, Typed):
        cells["type"] = value.keyword
        unit = values[3] if keyword != "IFCPROPERTYENUMERATEDVALUE" and len(values) > 3 else "$"
        if isinstance(cells["value"], (int, float)) and not isinstance(cells["value"], bool):
            own = text.entities.get((references(unit) or [0])[0])
            known = si_unit(own[1]) if own and own[0] == "IFCSIUNIT" else units.get(MEASURE.get(value.keyword))
            if known and (not own or own[0] == "IFCSIUNIT"):
                cells["unit"] = known[1]
    return cells


def check_property(row, cells):
    what = f"property {row['element_id']} {row['set_name']}.{row['name']}"
    if "json" in cells:
        tell(what, as_json(cells["json"]), row["value_text"] and json.loads(row["value_text"]))
    if "type" in cells:
        tell(what, cells["type"], (row["value_type"] or "").upper())
    if "unit" in cells:
        tell(what, cells["unit"], row["unit"])
    if "value" not in cells:
        return
    value = cells["value"]
    if isinstance(value, bool):
        tell(what, (str(value).lower(), value, None), (row["value_text"], row["value_boolean"], row["value_number"]))
    elif isinstance(value, (int, float)):
        tell(what, (value, value, None), (float(row["value_text"]), row["value_number"], row["value_boolean"]))
    else:
        tell(what, (value, None, None), (row["value_text"], row["value_number"], row["value_boolean"]))


def check_quantity(text, row, number, units):
    keyword, values = text.entities[number]
    what = f"quantity {row['element_id']} {row['set_name']}.{row['name']}"
    tell(what, plain(values[3]), row["value"])
    own = text.entities.get((references(values[2]) or [0])[0])
    known = si_unit(own[1]) if own and own[0] == "IFCSIUNIT" else units.get(MEASURE.get(keyword))
    if known and row["value"] is not None and (not own or own[0] == "IFCSIUNIT"):
        tell(what, known[1], row["unit"])
        tell(what, True, math.isclose(row["value"] * known[2], row["si_value"]))


def check_sets(text, tables, units):
    told = {name: iter(tables[name]) for name in ("property", "quantity")}
    for element, sets in sets_by_element(text, [row["id"] for row in tables["element"]]):
        seen = set()
        for number, source in sets:
            keyword, values = text.entities[number]
            table = "quantity" if keyword == "IFCELEMENTQUANTITY" else "property"
            name = plain(values[2])
            opened, found = set(), []
            if keyword in ("IFCPROPERTYSET", "IFCELEMENTQUANTITY"):
                for item in text.there(values[4 if keyword == "IFCPROPERTYSET" else 5]):
                    item_name = text.value(item, 0)
                    if (table, name, item_name) not in seen:
                        seen.add((table, name, item_name))
                        found += leaves(text, item, item_name, opened)
            else:   # a set with attributes of its own, whose names the text does not tell
                for i, value in enumerate(values[4:]):
                    if value not in ("$", "*") and (table, name or keyword, i) not in seen:
                        seen.add((table, name or keyword, i))
                        found.append((None, None))
            for path, leaf in found:
                row = next(told[table], collections.defaultdict(str))
                tell("a " + table, (element, source) + ((name,) if name else ()) + ((path,) if path is not None else ()),
                     (row["element_id"], row["source"]) + ((row["set_name"],) if name else ()) +
                     ((row["name"],) if path is not None else ()))
                if len(differences) > 20:
                    return   # one that is missing moves all others
                if leaf in text.told:
                    continue
                if leaf is not None and table == "property":
                    check_property(row, property_cells(text, leaf, units))
                elif leaf is not None:
                    check_quantity(text, row, leaf, units)
    for table, rest in told.items():
        tell("more rows of " + table, [], [dict(row) for row in rest][:3])


# Materials and classifications

def material_rows(text, number):
    """(name, layer, thickness, fraction) of what an element is associated with."""
    keyword, values = text.entities[number]

    def name(value):
        return next((text.value(one, 0) for one in text.there(value)), None)

    def items(sets, one):
        return [row for item in text.there(sets) for row in one(text.entities[item][1])]

    def layer(v):
        return [(name(v[0]), plain(v[3]) if len(v) > 3 else None, plain(v[1]), None)]

    def profile(v):
        return [(name(v[2]), plain(v[0]), None, None)]

    def constituent(v):
        return [(name(v[2]), plain(v[0]), None, plain(v[3]))]

    if keyword == "IFCMATERIAL":
        return [(text.value(number, 0), None, None, None)]
    if keyword == "IFCMATERIALLIST":
        return [(text.value(one, 0), None, None, None) for one in text.there(values[0])]
    if keyword in ("IFCMATERIALLAYERSETUSAGE", "IFCMATERIALPROFILESETUSAGE", "IFCMATERIALPROFILESETUSAGETAPERING"):
        return [row for one in text.there(values[0]) for row in material_rows(text, one)]
    if keyword == "IFCMATERIALLAYERSET":
        return items(values[0], layer)
    if keyword == "IFCMATERIALPROFILESET":
        return items(values[2], profile)
    if keyword == "IFCMATERIALCONSTITUENTSET":
        return items(values[2], constituent) if len(values) > 2 else []
    return {"IFCMATERIALLAYER": layer, "IFCMATERIALPROFILE": profile,
            "IFCMATERIALCONSTITUENT": constituent}.get(keyword, lambda v: [])(values)


def check_associations(text, tables):
    types = text.relation(("IFCRELDEFINESBYTYPE",), 5, 4)
    materials, references_of = collections.defaultdict(list), collections.defaultdict(list)
    for keyword, found in (("IFCRELASSOCIATESMATERIAL", materials), ("IFCRELASSOCIATESCLASSIFICATION", references_of)):
        for _, values in text.of(keyword):
            for element in references(values[4]):
                found[element] += [one for one in text.there(values[5]) if one not in found[element]]
    expected = {"material": [], "classification": []}
    for element in (row["id"] for row in tables["element"]):
        own = materials[element]
        source = "instance" if own else "type"
        for one in own or materials[types.get(element)]:
            expected["material"] += [(element,) + row + (source,) for row in material_rows(text, one)]
        for one in dict.fromkeys(references_of[element] + references_of[types.get(element)]):
            keyword, values = text.entities[one]
            system = next(iter(text.there(values[3])), None) if keyword == "IFCCLASSIFICATIONREFERENCE" else None
            while system is not None and text.keyword(system) == "IFCCLASSIFICATIONREFERENCE":
                system = next(iter(text.there(text.entities[system][1][3])), None)
            if keyword == "IFCCLASSIFICATIONREFERENCE":
                expected["classification"].append((element, None if system is None else text.value(
                    system, 3), plain(values[1]), plain(values[2])))
            elif keyword == "IFCCLASSIFICATION":
                expected["classification"].append((element, plain(values[3]), None, None))
    empty = lambda row: tuple(value or None if isinstance(value, str) else value for value in row)
    for table, columns in (("material", ("element_id", "name", "layer", "thickness", "fraction", "source")),
                           ("classification", ("element_id", "system", "code", "name"))):
        tell(table, list(map(empty, expected[table])),
             [tuple(row[column] for column in columns) for row in tables[table]])


# Who refers to whom

PAIRS = {"IFCRELDEFINESBYPROPERTIES": (5, 4), "IFCRELDEFINESBYTYPE": (5, 4), "IFCRELAGGREGATES": (4, 5),
         "IFCRELCONTAINEDINSPATIALSTRUCTURE": (5, 4), "IFCRELASSOCIATESMATERIAL": (5, 4),
         "IFCRELASSOCIATESCLASSIFICATION": (5, 4), "IFCRELVOIDSELEMENT": (4, 5), "IFCRELFILLSELEMENT": (4, 5),
         "IFCRELNESTS": (4, 5), "IFCRELSPACEBOUNDARY": (4, 5), "IFCRELASSIGNSTOGROUP": (6, 4),
         "IFCRELCONNECTSPATHELEMENTS": (5, 6), "IFCRELCONNECTSELEMENTS": (5, 6), "IFCRELDECLARES": (4, 5),
         "IFCRELPOSITIONS": (4, 5)}


def check_references(text, tables):
    expected = [(number, PAIRS[keyword], a, b) for number, (keyword, values) in sorted(text.entities.items())
                if keyword in PAIRS
                for a in text.there(values[PAIRS[keyword][0]]) or [None]
                for b in text.there(values[PAIRS[keyword][1]]) or [None]]
    told = [(row["id"], PAIRS[row["type"].upper()], row["from_id"], row["to_id"])
            for row in tables["relation"] if row["type"].upper() in PAIRS]
    tell("relations", expected, told)
    relationships = {number for number, (keyword, _) in text.entities.items()
                     if keyword.startswith("IFCREL") and "RELATIONSHIP" not in keyword}
    tell("relationships", [], sorted(relationships.difference(row["id"] for row in tables["relation"]))[:5])

    # By position among those of one attribute, which is one parameter.
    expected = [(number, i, to) for number, (_, values) in sorted(text.entities.items())
                for value in values for i, to in enumerate(text.there(value))]
    tell("references", expected, [(row["from_id"], row["position"], row["to_id"]) for row in tables["reference"]])


# The tables of classes

def check_classes(text, tables):
    tell("coordinates", {n: plain(v[0]) for n, v in text.of("IFCCARTESIANPOINT")},
         {row["id"]: row["Coordinates"] for row in tables["IfcCartesianPoint"]})
    walls = sorted(text.of("IFCWALL", "IFCWALLSTANDARDCASE", "IFCWALLELEMENTEDCASE"))
    tell("walls", [(n, plain(v[2]), plain(v[7]), references(v[6])[:1]) for n, v in walls],
         [(row["id"], row["Name"], row["Tag"], [row["Representation"]] if row["Representation"] is not None else [])
          for row in tables["IfcWall"]])
    for (number, values), row in zip(text.of("IFCPROPERTYSINGLEVALUE"), tables["IfcPropertySingleValue"]):
        if number in text.told:
            continue
        value = values[2]
        shown = plain(value)
        told = row["NominalValue"]
        if isinstance(shown, bool):
            shown = str(shown).lower()
        elif isinstance(shown, (int, float)):
            told = float(told)
        tell(f"value of {number}", (number, plain(values[0]), shown, value.keyword if isinstance(value, Typed) else None),
             (row["id"], row["Name"], told, row["NominalValue_type"] and row["NominalValue_type"].upper()))
    tell("aggregates", [(n, references(v[4])[0], references(v[5])) for n, v in text.of("IFCRELAGGREGATES")],
         [(row["id"], row["RelatingObject"], row["RelatedObjects"]) for row in tables["IfcRelAggregates"]])
    tell("units of SI", [(n, plain(v[1]), plain(v[2]), plain(v[3])) for n, v in text.of("IFCSIUNIT")],
         [(row["id"], row["UnitType"], row["Prefix"], row["Name"]) for row in tables["IfcSIUnit"]])


def check_errors(text, tables):
    """A record of an instance names the line on which that begins, or one of its further lines."""
    for row in tables["error"]:
        if row["line"] and row["entity_id"] in text.lines:
            tell(f"error of {row['entity_id']}", True, row["line"] >= text.lines[row["entity_id"]])
    defined = set(text.entities)
    missing = {(number, one) for number, (_, values) in text.entities.items() for value in values
               for one in references(value) if one not in defined}
    told = {row["entity_id"] for row in tables["error"] if row["key"] == "Error_InstanceNotDefined"}
    if told:
        tell("references to nothing", sorted({number for number, _ in missing}), sorted(told))


def main(model, folder, library=None):
    text = Text(model)
    tables = table_forms.json_tables(folder)
    text.told = {row["entity_id"] for row in tables["error"]}
    check_elements(text, tables)
    units = check_units(text, tables)
    check_sets(text, tables, units)
    check_associations(text, tables)
    check_references(text, tables)
    check_classes(text, tables)
    check_errors(text, tables)
    compared = table_forms.check_forms(folder, tables, model, library)
    for difference in differences[:20]:
        print(difference[:600])
    print(f"checked {sum(map(len, tables.values()))} rows in {', '.join(compared)}")
    return 1 if differences else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
