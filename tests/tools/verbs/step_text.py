# SPDX-License-Identifier: Apache-2.0
"""A STEP file (ISO 10303-21) by its text alone: statements with their parameters, texts, references.

For table_counts.py, which holds tables against it. Nothing here knows the library.
"""
import re

STATEMENT = re.compile(r"#(\d+)\s*=\s*([A-Za-z0-9_]+)\s*\(((?:[^';]|'(?:[^']|'')*')*)\)\s*;")
TOKEN = re.compile(r"'(?:[^']|'')*'|[(),]|[^\s'(),]+")
COMMENT = re.compile(r"'(?:[^']|'')*'|/\*.*?\*/", re.S)


class Typed:
    """A value with its type, as IFCLABEL('F 90')."""

    def __init__(self, keyword, values):
        self.keyword, self.values = keyword, values


def parameters(text):
    """The top-level parameters: a text as written, a list of such, or a Typed."""
    stack, keywords = [[]], []
    waiting = ""
    for token in TOKEN.findall(text):
        if token == "(":
            keywords.append(waiting)
            stack.append([])
            waiting = ""
        elif token == ")":
            if waiting:
                stack[-1].append(waiting)
            inner, keyword = stack.pop(), keywords.pop()
            stack[-1].append(Typed(keyword, inner) if keyword else inner)
            waiting = ""
        elif token == ",":
            if waiting:
                stack[-1].append(waiting)
            waiting = ""
        else:
            waiting += token
    if waiting:
        stack[-1].append(waiting)
    return stack[0]


def statements(path):
    """{number: (KEYWORD, parameters)}, {number: line}; of several with one number the first."""
    with open(path, encoding="latin-1", newline="") as file:
        text = file.read()
    # A comment becomes as many line ends as it had.
    text = COMMENT.sub(lambda m: m[0] if m[0][0] == "'" else "\n" * m[0].count("\n"), text)
    entities, lines = {}, {}
    at, line = 0, 1
    for match in STATEMENT.finditer(text, text.index("DATA")):
        line += text.count("\n", at, match.start())
        at = match.start()
        number = int(match[1])
        if number not in entities:
            entities[number] = (match[2].upper(), parameters(match[3]))
            lines[number] = line
    return entities, lines


def flat(value):
    """All single values of a parameter, in their order."""
    if isinstance(value, Typed):
        value = value.values
    if isinstance(value, list):
        return [one for item in value for one in flat(item)]
    return [value]


def references(value):
    return [int(one[1:]) for one in flat(value) if one[:1] == "#"]


DIRECTIVE = re.compile(r"\\X2\\((?:[0-9A-Fa-f]{4})*)\\X0\\|\\X4\\((?:[0-9A-Fa-f]{8})*)\\X0\\|\\X\\([0-9A-Fa-f]{2})"
                       r"|\\S\\(.)|\\P[A-I]\\|\\\\|''", re.S)


def decoded(token):
    """The text of a token in quotes; bytes beyond ASCII are UTF-8, else Latin-1."""
    token = token[1:-1]
    try:
        token = token.encode("latin-1").decode("utf-8")
    except UnicodeDecodeError:
        pass

    def directive(match):
        if match[1] is not None:
            return bytes.fromhex(match[1]).decode("utf-16-be")
        if match[2] is not None:
            return bytes.fromhex(match[2]).decode("utf-32-be")
        if match[3]:
            return chr(int(match[3], 16))
        if match[4]:
            return chr(ord(match[4]) + 128)
        return {"\\": "\\", "'": "'"}.get(match[0][-1], "") if match[0][:2] != "\\P" else ""

    return DIRECTIVE.sub(directive, token)


def plain(token):
    """A single value as Python has it: str, int, float, bool; None for $ and *."""
    if isinstance(token, Typed):
        return plain(token.values[0]) if len(token.values) == 1 else [plain(one) for one in token.values]
    if isinstance(token, list):
        return [plain(one) for one in token]
    if token in ("$", "*"):
        return None
    if token[0] == "'":
        return decoded(token)
    if token[0] == "#":
        return "#" + str(int(token[1:]))
    if token in (".T.", ".F.", ".U."):
        return {".T.": True, ".F.": False, ".U.": "unknown"}[token]
    if token[0] == ".":
        return token.strip(".")
    if token[0] == '"':
        return token.strip('"')[1:]
    return float(token) if re.search(r"[.Ee]", token) else int(token)
