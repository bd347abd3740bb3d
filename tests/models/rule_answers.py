#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Answers to questions to a model, from the text of its file, held against those of the program.

    rule_answers.py PROGRAM FILE

Reads the statements of a STEP file by regular expressions and follows the relationships on its own; knows no schema but
the places of a dozen parameters. Prints a line a difference, and at the end how many answers were compared; exit code 1
where one differs.
"""
import collections
import csv
import io
import json
import re
import subprocess
import sys

PROGRAM, PATH = sys.argv[1:3]

# ---- the file ------------------------------------------------------------------------------------------------------

TOKEN = re.compile(r"""\s+|/\*.*?\*/|(?P<text>'(?:[^']|'')*')|(?P<ref>\#\d+)|(?P<enum>\.[A-Za-z0-9_]+\.)
                       |(?P<number>[-+]?\d[\d.]*(?:[Ee][-+]?\d+)?)|(?P<word>[A-Za-z_][A-Za-z0-9_-]*)
                       |(?P<binary>"[0-9A-F]*")|(?P<sign>[(),;=$*])""", re.S | re.X)


class Ref(int):
    """#12"""


class Enum(str):
    """.ELEMENT."""


class Word(str):
    """IFCLABEL, and the = in front."""


Typed = collections.namedtuple("Typed", "type value")   # IFCLABEL('x')
Instance = collections.namedtuple("Instance", "id type fields")


def decoded(text):
    """The text of a string token: ISO 10303-21, 6.4.3."""
    text = text[1:-1].replace("''", "'")
    page = [1]

    def directive(found):
        word = found.group(0)
        if word == "\\\\":
            return "\\"
        if word.startswith("\\X\\"):
            return chr(int(word[3:], 16))
        if word.startswith("\\X2\\"):
            return bytes.fromhex(word[4:-4]).decode("utf-16-be", "replace")
        if word.startswith("\\X4\\"):
            return bytes.fromhex(word[4:-4]).decode("utf-32-be", "replace")
        if word.startswith("\\P"):
            page[0] = ord(word[2]) - ord("A") + 1
            return ""
        return bytes([ord(word[3]) + 128]).decode("iso8859-%d" % page[0], "replace")

    return re.sub(r"\\\\|\\X\\[0-9A-F]{2}|\\X2\\[0-9A-F]*\\X0\\|\\X4\\[0-9A-F]*\\X0\\|\\P[A-I]\\|\\S\\.", directive,
                  text, flags=re.S)


def read(path):
    raw = open(path, "rb").read()
    try:
        text = raw.decode("utf-8")
    except UnicodeDecodeError:
        text = raw.decode("latin-1")
    text = text[text.index("DATA;") + 5:]
    lists, place = [[]], 0
    instances = {}
    while place < len(text):
        found = TOKEN.match(text, place)
        if not found:
            raise SystemExit("unreadable at " + repr(text[place:place + 60]))
        place = found.end()
        kind, token = found.lastgroup, found.group()
        if kind is None or token == ",":
            continue
        if kind == "text":
            lists[-1].append(decoded(token))
        elif kind == "ref":
            lists[-1].append(Ref(token[1:]))
        elif kind == "enum":
            lists[-1].append(Enum(token[1:-1]))
        elif kind == "number":
            lists[-1].append(float(token) if re.search("[.Ee]", token) else int(token))
        elif kind == "word":
            if token == "ENDSEC":
                break
            lists[-1].append(Word(token))
        elif token == "(":
            lists.append([])
        elif token == ")":
            inner = lists.pop()
            if len(lists) > 1 and lists[-1] and isinstance(lists[-1][-1], Word):
                lists[-1][-1] = Typed(str(lists[-1][-1]), inner[0] if inner else None)
            else:
                lists[-1].append(inner)
        elif token == "$":
            lists[-1].append(None)
        elif token == ";":
            number, _, keyword, fields = lists[0]
            instances[int(number)] = Instance(int(number), keyword.upper(), fields)
            lists = [[]]
        else:
            lists[-1].append(Enum(token) if token == "*" else Word(token))
    return instances


ALL = read(PATH)
BY_TYPE = collections.defaultdict(list)
for one in sorted(ALL.values()):
    BY_TYPE[one.type].append(one)

# ---- relationships -------------------------------------------------------------------------------------------------

SPATIAL = {"IFC" + name for name in """PROJECT SITE BUILDING BUILDINGSTOREY SPACE BRIDGE BRIDGEPART ROAD ROADPART RAILWAY
RAILWAYPART FACILITY FACILITYPART FACILITYPARTCOMMON MARINEFACILITY MARINEPART SPATIALZONE EXTERNALSPATIALELEMENT""".split()}
BUILDINGS = {"IFC" + name for name in "BUILDING BRIDGE ROAD RAILWAY FACILITY MARINEFACILITY".split()}
WALLS = ["IFCWALL", "IFCWALLSTANDARDCASE", "IFCWALLELEMENTEDCASE"]
ELEMENTS = {"IFC" + name for name in """WALL WALLSTANDARDCASE WALLELEMENTEDCASE DOOR DOORSTANDARDCASE WINDOW
WINDOWSTANDARDCASE SLAB SLABSTANDARDCASE SLABELEMENTEDCASE BEAM BEAMSTANDARDCASE COLUMN COLUMNSTANDARDCASE MEMBER
MEMBERSTANDARDCASE PLATE PLATESTANDARDCASE COVERING CURTAINWALL FOOTING PILE RAILING RAMP RAMPFLIGHT ROOF STAIR STAIRFLIGHT
BUILDINGELEMENTPROXY BUILDINGELEMENTPART OPENINGELEMENT OPENINGSTANDARDCASE FURNISHINGELEMENT FURNITURE
SYSTEMFURNITUREELEMENT VIRTUALELEMENT ELEMENTASSEMBLY FLOWTERMINAL FLOWSEGMENT FLOWFITTING FLOWCONTROLLER CHIMNEY
SHADINGDEVICE SANITARYTERMINAL LIGHTFIXTURE TRANSPORTELEMENT DISCRETEACCESSORY MECHANICALFASTENER FASTENER
REINFORCINGBAR TENDON GEOGRAPHICELEMENT CIVILELEMENT BUILTELEMENT PROJECTIONELEMENT""".split()}


def related(keyword, one, many):
    """Of relationships of that type: from each of "many" to "one", by number of the relationship."""
    up = collections.defaultdict(list)
    for relation in BY_TYPE[keyword]:
        items = relation.fields[many]
        for item in items if isinstance(items, list) else [items]:
            up[item].append(relation.fields[one])
    return up


WHOLE = related("IFCRELAGGREGATES", 4, 5)
NEST = related("IFCRELNESTS", 4, 5)
PLACE = related("IFCRELCONTAINEDINSPATIALSTRUCTURE", 5, 4)
HOST = related("IFCRELVOIDSELEMENT", 4, 5)
OPENING = related("IFCRELFILLSELEMENT", 4, 5)
TYPE = related("IFCRELDEFINESBYTYPE", 5, 4)
SETS = related("IFCRELDEFINESBYPROPERTIES", 5, 4)
MATERIAL = related("IFCRELASSOCIATESMATERIAL", 5, 4)
CLASS = related("IFCRELASSOCIATESCLASSIFICATION", 5, 4)


def above(number):
    """What stands above, from near to far."""
    seen = set()
    while number not in seen:
        seen.add(number)
        for way in (WHOLE, NEST, PLACE, HOST, OPENING):
            if way[number]:
                number = way[number][0]
                yield ALL[number]
                break


def nearest(number, types):
    return next((one for one in above(number) if one.type in types), None)


def name(one):
    return one.fields[2] if one else None


def type_of(number):
    return ALL[TYPE[number][0]] if TYPE[number] else None


def plain(value):
    if isinstance(value, Typed):
        value = value.value
    if isinstance(value, Enum):
        return {"T": True, "F": False, "U": "unknown"}.get(value, str(value))
    return value


def guid(one):
    """As 128 bits have it: of the first character two bits count (ISO 16739, IfcGloballyUniqueId)."""
    digits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_$"
    return digits[digits.index(one.fields[0][0]) & 3] + one.fields[0][1:]


def joined(values):
    values = [plain(value) for value in values or []]
    if not values:
        return None
    return values[0] if len(values) == 1 else ", ".join(str(value) for value in values)


def properties_of_set(number):
    """{name: value} of simple properties and quantities, and whether it is a set of quantities."""
    one = ALL.get(number)
    found = {}
    if one and one.type == "IFCPROPERTYSET":
        for property_number in one.fields[4] or []:
            member = ALL.get(property_number)
            if not member:
                continue
            if member.type == "IFCPROPERTYSINGLEVALUE":
                found.setdefault(member.fields[0], plain(member.fields[2]))
            elif member.type == "IFCPROPERTYENUMERATEDVALUE":
                found.setdefault(member.fields[0], joined(member.fields[2]))
            else:
                found.setdefault(member.fields[0], Ellipsis)   # of another kind: not compared
    elif one and one.type == "IFCELEMENTQUANTITY":
        for quantity_number in one.fields[5] or []:
            member = ALL[quantity_number]
            found.setdefault(member.fields[0], member.fields[3] if member.type != "IFCPHYSICALCOMPLEXQUANTITY" else Ellipsis)
    return found


def sets(number, keyword):
    """{set: {property: value}}, the element's own before those of its type; what is told first counts."""
    own = list(SETS[number])
    flat = []
    for item in own:
        flat.extend(item.value if isinstance(item, Typed) else [item])
    kind = ALL[number]
    if not kind.type.endswith(("TYPE", "STYLE")):
        kind = type_of(number)
    if kind:
        flat.extend(kind.fields[5] or [])
    result = {}
    for item in flat:
        if item in ALL and ALL[item].type == keyword:
            into = result.setdefault(ALL[item].fields[2], {})
            for key, value in properties_of_set(item).items():
                into.setdefault(key, value)
    return result


def materials(number):
    """Names in their order."""
    def names(one):
        if one.type == "IFCMATERIAL":
            return [one.fields[0]]
        if one.type == "IFCMATERIALLIST":
            return [ALL[item].fields[0] for item in one.fields[0]]
        if one.type in ("IFCMATERIALLAYERSETUSAGE", "IFCMATERIALPROFILESETUSAGE"):
            return names(ALL[one.fields[0]])
        if one.type == "IFCMATERIALLAYERSET":
            return [name for item in one.fields[0] for name in names(ALL[item])]
        if one.type == "IFCMATERIALLAYER":
            return names(ALL[one.fields[0]]) if one.fields[0] else []
        if one.type in ("IFCMATERIALPROFILESET", "IFCMATERIALCONSTITUENTSET"):
            return [name for item in one.fields[2] for name in names(ALL[item])]
        if one.type in ("IFCMATERIALPROFILE", "IFCMATERIALCONSTITUENT"):
            return names(ALL[one.fields[2]]) if one.fields[2] else []
        raise SystemExit("unknown material " + one.type)

    found = [name for item in MATERIAL[number] for name in names(ALL[item])]
    if not MATERIAL[number] and type_of(number):
        found = [name for item in MATERIAL[type_of(number).id] for name in names(ALL[item])]
    return found


def distinct(values):
    """In a column each once, where it comes first: a wall of two layers of gypsum is of gypsum."""
    return list(dict.fromkeys(values))


def classifications(number):
    kind = type_of(number)
    items = list(CLASS[number]) + (list(CLASS[kind.id]) if kind else [])
    return [ALL[item].fields[1] for item in items if ALL[item].type == "IFCCLASSIFICATIONREFERENCE"]


def elements(types):
    return [one for one in sorted(ALL.values()) if one.type in types]


# ---- the program ---------------------------------------------------------------------------------------------------

compared = 0
differing = 0


def run(*words):
    done = subprocess.run([PROGRAM, *words], stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    if done.returncode not in (0, 1):
        raise SystemExit("%s: exit code %d: %s" % (" ".join(words), done.returncode, done.stderr.decode()))
    return done.stdout


def same(a, b):
    if isinstance(a, bool) or isinstance(b, bool):
        return a is b
    if isinstance(a, (int, float)) and isinstance(b, (int, float)):
        return abs(a - b) <= 1e-9 * max(abs(a), abs(b))
    return a == b


def check(question, expected, got):
    global compared, differing
    compared += 1
    if len(expected) == len(got) and all(same(a, b) for a, b in zip(expected, got)):
        return
    differing += 1
    if differing <= 20:
        print("%s: expected %r, got %r" % (question, expected, got))


def once(cell):
    """What stands in a cell of a classification, each once: whether it is told twice is left open."""
    return joined(distinct(cell.split(", "))) if isinstance(cell, str) else cell


def check_rows(question, columns, expected, words):
    """The same rows as JSON and as CSV."""
    got = json.loads(run("list", PATH, *words, "-f", "json"))
    check(question + ": rows", [len(expected)], [len(got)])
    for row, one in zip(expected, got):
        check("%s: %s" % (question, row[0]), row, [once(one[column]) if column == "classification" else one[column] for column in columns])
    table = list(csv.reader(io.StringIO(run("list", PATH, *words, "-f", "csv").decode("utf-8"), newline="")))
    check(question + ": head", columns, table[0])
    check(question + ": CSV rows", [len(expected)], [len(table) - 1])
    for row, one in zip(expected, table[1:]):
        check("%s: CSV %s" % (question, row[0]), [as_cell(value) for value in row],
              [float(cell) if type(value) in (int, float) else once(cell) if column == "classification" and cell else cell
               for value, cell, column in zip(row, one, columns)])


def as_cell(value):
    if value is None:
        return ""
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, (int, float)):
        return float(value)
    return "'" + value if value[:1] in "=+-@" and value else value


def selected(query):
    return [row["id"] for row in json.loads(run("list", PATH, query, "-c", "id", "-f", "json"))]


def quoted(text):
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


# ---- the questions -------------------------------------------------------------------------------------------------


def usual(types, keyword, most):
    """The (set, property) that most of these have, and only those without surprises in their names."""
    count = collections.Counter()
    for one in elements(types):
        for set_name, members in sets(one.id, keyword).items():
            for key, value in members.items():
                if value is not Ellipsis and set_name and key:
                    count[set_name, key] += 1
    return [both for both, _ in sorted(count.items(), key=lambda item: (-item[1], item[0]))[:most]]


def value_of(number, set_name, key, keyword):
    return sets(number, keyword).get(set_name, {}).get(key)


def ask_table(title, query, types):
    """Doors with width and fire rating, and so on."""
    wanted = [(s, p, "IFCPROPERTYSET") for s, p in usual(types, "IFCPROPERTYSET", 6)]
    wanted += [(s, q, "IFCELEMENTQUANTITY") for s, q in usual(types, "IFCELEMENTQUANTITY", 3)]
    columns = ["id", "GlobalId", "Name", "storey.Name", "container.Name", "building.Name", "type.Name", "material.Name",
               "classification"]
    columns += ["%s.%s" % (quoted(s), quoted(p)) for s, p, _ in wanted]
    expected = []
    for one in elements(types):
        row = [one.id, guid(one), name(one), name(nearest(one.id, {"IFCBUILDINGSTOREY"})),
               name(nearest(one.id, SPATIAL - {"IFCPROJECT"})), name(nearest(one.id, BUILDINGS)), name(type_of(one.id)),
               joined(distinct(materials(one.id))), joined(distinct(classifications(one.id)))]
        expected.append(row + [value_of(one.id, *which) for which in wanted])
    check_rows(title, columns, expected, [query, "-c", ",".join(columns)])


def ask_doors():
    columns = ["Name", "OverallWidth", "Pset_DoorCommon.FireRating"]
    expected = [[name(one), one.fields[9], value_of(one.id, "Pset_DoorCommon", "FireRating", "IFCPROPERTYSET")]
                for one in elements({"IFCDOOR", "IFCDOORSTANDARDCASE"})]
    check_rows("doors", columns, expected, ["IfcDoor", "-c", ",".join(columns)])


def ask_lacking(title, query, types):
    """Which lack a property, have it, have it with its most frequent value."""
    wanted = usual(types, "IFCPROPERTYSET", 2) + [("Pset_WallCommon", "FireRating")]
    for set_name, key in wanted:
        values = {one.id: value_of(one.id, set_name, key, "IFCPROPERTYSET") for one in elements(types)}
        term = "%s, %s.%s" % (query, quoted(set_name), quoted(key))
        check(title + " " + term + "=NULL", [i for i, v in values.items() if v is None], selected(term + "=NULL"))
        check(title + " " + term + "!=NULL", [i for i, v in values.items() if v is not None], selected(term + "!=NULL"))
        count = collections.Counter(v for v in values.values() if v is not None)
        for value in sorted(count, key=str)[:1]:
            if isinstance(value, bool):
                text = "TRUE" if value else "FALSE"
            else:
                text = quoted(value) if isinstance(value, str) else repr(value)
            expected = [i for i, v in values.items() if v is not None and same(v, value)]
            check("%s %s=%s" % (title, term, text), expected, selected("%s=%s" % (term, text)))


def ask_storeys():
    count = collections.Counter()
    for one in elements(ELEMENTS):
        count[name(nearest(one.id, {"IFCBUILDINGSTOREY"}))] += 1
    rows = json.loads(run("list", PATH, "IfcElement", "--group-by", "storey.Name", "--count", "-f", "json"))
    expected = sorted(((key is None, str(key).encode(), key, n) for key, n in count.items()))
    check("elements per storey", [v for row in expected for v in row[2:]],
          [v for row in rows for v in (row["storey.Name"], row["count"])])
    for storey in BY_TYPE["IFCBUILDINGSTOREY"] + BY_TYPE["IFCSPACE"][:3] + BY_TYPE["IFCBRIDGEPART"]:
        expected = [one.id for one in elements(ELEMENTS) if storey.id in [up.id for up in above(one.id)]]
        check("location=" + storey.fields[0], expected, selected("IfcElement, location=" + storey.fields[0]))
        if [name(one) for one in elements(SPATIAL)].count(name(storey)) == 1 and name(storey):
            check("location=" + name(storey), expected, selected("IfcElement, location=" + quoted(name(storey))))


def ask_quantities():
    for types, query in ((WALLS, "IfcWall"), (["IFCSLAB"], "IfcSlab"), (["IFCBEAM"], "IfcBeam")):
        for set_name, key in usual(types, "IFCELEMENTQUANTITY", 2) + [("Qto_WallBaseQuantities", "NetVolume")]:
            sums, count = {}, collections.Counter()
            for one in elements(types):
                material = joined(distinct(materials(one.id)))
                count[material] += 1
                value = value_of(one.id, set_name, key, "IFCELEMENTQUANTITY")
                sums.setdefault(material, None)
                if value is not None:
                    sums[material] = (sums[material] or 0) + value
            column = "%s.%s" % (quoted(set_name), quoted(key))
            rows = json.loads(run("list", PATH, query, "--group-by", "material.Name", "--count", "--sum", column, "-f",
                                  "json"))
            order = sorted(sums, key=lambda text: (text is None, (text or "").encode()))
            check("%s by material, %s" % (query, column), [v for m in order for v in (m, count[m], sums[m])],
                  [v for row in rows for v in (row["material.Name"], row["count"], row["sum(%s)" % column])])


def ask_tree():
    children, contents = collections.defaultdict(list), collections.defaultdict(collections.Counter)
    for part, wholes in WHOLE.items():
        if ALL[part].type in SPATIAL:
            children[wholes[0]].append(part)
    for part, places in PLACE.items():
        if part in ALL:
            contents[places[0]][ALL[part].type] += 1

    def flat(node, parent, into):
        counts = {key.upper(): value for key, value in node["elements"].items()}
        into.append((node["id"], parent, node["type"].upper(), node["name"], sorted(counts.items())))
        for child in node["children"]:
            flat(child, node["id"], into)
        return into

    def expect(number, parent, into):
        into.append((number, parent, ALL[number].type, name(ALL[number]), sorted(contents[number].items())))
        for child in children[number]:
            expect(child, number, into)
        return into

    got = [node for root in json.loads(run("tree", PATH, "--counts", "--json")) for node in flat(root, None, [])]
    expected = expect(BY_TYPE["IFCPROJECT"][0].id, None, [])
    check("tree", sorted(expected, key=lambda node: node[0]), sorted(got, key=lambda node: node[0]))


def ask_one(one):
    """Everything about one element."""
    got = json.loads(run("props", PATH, one.fields[0], "--json"))
    check("props id", [one.id, guid(one), name(one)],
          [got["id"], got["attributes"]["GlobalId"], got["attributes"]["Name"]])
    for key, keyword in (("psets", "IFCPROPERTYSET"), ("quantities", "IFCELEMENTQUANTITY")):
        for set_name, members in sets(one.id, keyword).items():
            for member, value in members.items():
                told = got[key].get(set_name, {}).get(member, "absent")
                if isinstance(told, list):
                    told = joined(told)
                if told == "UNKNOWN":
                    told = "unknown"
                if value is not Ellipsis:
                    check("props %s %s.%s" % (one.fields[0], set_name, member), [value], [told])
    for key, expected in (("typeObject", type_of(one.id)), ("storey", nearest(one.id, {"IFCBUILDINGSTOREY"})),
                          ("container", nearest(one.id, SPATIAL - {"IFCPROJECT"}))):
        check("props %s %s" % (one.fields[0], key), [expected.id if expected else None],
              [got[key]["id"] if got[key] else None])
    check("props %s materials" % one.fields[0], materials(one.id), [item["name"] for item in got["materials"]])
    check("props %s classifications" % one.fields[0], classifications(one.id),
          [item["code"] for item in got["classifications"]])


def ask_info():
    got = json.loads(run("info", PATH, "--json"))
    check("info", sorted((key, len(value)) for key, value in BY_TYPE.items() if value), sorted(got["byType"].items()))
    check("info entities", [len(ALL)], [got["entities"]])


ask_info()
ask_tree()
ask_doors()
ask_storeys()
ask_quantities()
for title, query, types in (("walls", "IfcWall", WALLS), ("doors", "IfcDoor", ["IFCDOOR"]),
                            ("slabs", "IfcSlab", ["IFCSLAB"]), ("spaces", "IfcSpace", ["IFCSPACE"]),
                            ("beams", "IfcBeam", ["IFCBEAM"]), ("elements", "IfcElement", ELEMENTS)):
    ask_table(title, query, types)
    if elements(types):
        ask_lacking(title, query, types)
for keyword in ("IFCWALL", "IFCWALLSTANDARDCASE", "IFCDOOR", "IFCWINDOW", "IFCSPACE", "IFCSLAB", "IFCBEAM", "IFCBUILDING",
                "IFCBRIDGE", "IFCELEMENTASSEMBLY", "IFCOPENINGELEMENT", "IFCMEMBER"):
    for one in BY_TYPE[keyword][:1]:
        ask_one(one)
print("%d answers compared" % compared)
sys.exit(1 if differing else 0)
