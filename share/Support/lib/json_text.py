"""json_text.py check|format|compact|sort [comments]: JSON from standard input. Numbers, strings and comments stay as
they are written, however long; of objects with equal keys nothing is lost."""
import re
import sys

import quirnote

TOKEN = re.compile(r"""[ \t\r\n]+|(?P<comment>//[^\n]*|/\*.*?\*/)|(?P<mark>[][{},:])
|(?P<value>"(?:[^"\\\x00-\x1f]|\\(?:["\\/bfnrt]|u[0-9a-fA-F]{4}))*"
|(?:-?(?:0|[1-9][0-9]*)(?:\.[0-9]+)?(?:[eE][-+]?[0-9]+)?|true|false|null)(?![\w.+-]))""", re.VERBOSE | re.DOTALL)
MOST_LEVELS = 1000


class Fault(Exception):
    """At an index of the text."""

    def __init__(self, at, message):
        super().__init__(message)
        self.at = at


def tokens_of(text, comments):
    """Kind, text, index and whether a line began before it."""
    at, new_line = (1 if text.startswith("\ufeff") else 0), False
    while at < len(text):
        found = TOKEN.match(text, at)
        if not found or found.lastgroup == "comment" and not comments:
            what = {"'": "a string needs double quotes", "/": "there are no comments in JSON", '"': (
                "this string has no end in its line, or a backslash or control character that is none of JSON's")}
            raise Fault(at, what.get(text[at], "this is no value of JSON"))
        if found.lastgroup is None:
            new_line = new_line or "\n" in found[0]
        else:
            yield found.lastgroup, found[0], at, new_line
            new_line = False
        at = found.end()


def parsed(text, comments):
    """The tokens as a list, checked for their order."""
    open_marks, result = [], []
    # What may come: "value", "first" (or the end of an empty one), "key", "colon", "next" after a value.
    wanted, last_comma = "value", False
    for kind, token, at, new_line in tokens_of(text, comments):
        result.append((kind, token, at, new_line))
        if kind == "comment":
            continue
        inside = open_marks[-1] if open_marks else ""
        closes = token in ("]", "}") and kind == "mark"
        if closes and (wanted in ("first", "next") or comments and last_comma) and (
                {"[": "]", "{": "}"}.get(inside) == token):
            open_marks.pop()
            wanted = "next"
        elif wanted == "next":
            if token == "," and inside:
                wanted = "key" if inside == "{" else "value"
            else:
                raise Fault(at, f"a comma or “{'}' if inside == '{' else ']'}” is missing before this"
                            if inside else "the value has ended before this")
        elif wanted == "colon":
            if token != ":":
                raise Fault(at, "a colon is missing before this")
            wanted = "value"
        elif inside == "{" and wanted in ("first", "key"):
            if token[0] != '"':
                raise Fault(at, "a key in double quotes is missing here")
            wanted = "colon"
        elif token in ("[", "{") and kind == "mark":
            if len(open_marks) == MOST_LEVELS:
                raise Fault(at, f"this is nested deeper than {MOST_LEVELS} levels")
            open_marks.append(token)
            wanted = "first"
        elif kind == "value":
            wanted = "next"
        else:
            raise Fault(at, "a value is missing here")
        last_comma = token == "," and kind == "mark"
    if open_marks or wanted != "next":
        raise Fault(len(text), f"“{open_marks[-1]}” has no end" if open_marks else "a value is missing here")
    return result


def laid_out(tokens, indent):
    """One value a line. A comment stays at the end of its line, or on lines of its own."""
    result, level = [], 0
    for i, (kind, token, _, new_line) in enumerate(tokens):
        before = tokens[i - 1] if i else None
        closes = kind == "mark" and token in "]}"
        level -= closes
        if before is None or kind == "mark" and token in ",:" and before[0] != "comment":
            result.append("")
        elif kind == "comment" and not new_line:
            result.append(" ")
        elif before[0] == "mark" and before[1] == ":":
            result.append(" ")
        elif closes and before[0] == "mark" and before[1] in "[{":
            result.append("")
        elif before[0] == "comment" and before[1].startswith("/*") and not new_line and (
                before[3] or tokens[i - 2][1] == ":"):
            result.append(" ")
        else:
            result.append("\n" + level * indent)
        result.append(token)
        level += kind == "mark" and token in "[{"
    return "".join(result)


def compact(tokens):
    return "".join(token if not token.startswith("//") else token + "\n" for _, token, _, _ in tokens)


def sorted_keys(tokens):
    """Objects with their members by key, inner ones too; those with equal keys keep their order."""
    if any(kind == "comment" for kind, *_ in tokens):
        quirnote.tip("The comments would lose their places; nothing was changed.")
    stack = [["", []]]
    for token in tokens:
        mark = token[1] if token[0] == "mark" else ""
        if mark and mark in "[{":
            stack.append([mark, [[token]]])
        elif mark and mark in "]}":
            opening, members = stack.pop()
            first = members[0].pop(0)
            members = [m for m in members if m]
            if opening == "{":
                members.sort(key=lambda member: member[0][1])
            flat = [first]
            for i, member in enumerate(members):
                flat += [("mark", ",", 0, False)] * bool(i) + member
            target = stack[-1][1]
            (target if stack[-1][0] == "" else target[-1]).extend([*flat, token])
        elif mark == ",":
            stack[-1][1].append([])
        else:
            target = stack[-1][1]
            (target if stack[-1][0] == "" else target[-1]).append(token)
    return stack[0][1]


def place(text, at):
    return text.count("\n", 0, at) + 1, at - text.rfind("\n", 0, at)


def check(text, comments):
    by_lines = quirnote.variable("FILENAME").endswith((".jsonl", ".ndjson"))
    begin, found = 0, []
    for part in text.split("\n") if by_lines else [text]:
        try:
            if not by_lines or part.strip():
                parsed(part, comments)
        except Fault as fault:
            found.append(quirnote.fault(*place(text, begin + fault.at), fault))
        begin += len(part) + 1
    quirnote.report("Check of JSON", "".join(found))


def main():
    what, comments = sys.argv[1], "comments" in sys.argv
    text = quirnote.read()
    if what == "check":
        check(text, comments)
    try:
        tokens = parsed(text, comments)
    except Fault as fault:
        line, column = place(text, fault.at)
        quirnote.tip(f"Line {line}, column {column}: {fault}. Nothing was changed.")
    made = (compact(tokens) if what == "compact" else
            laid_out(sorted_keys(tokens) if what == "sort" else tokens, quirnote.indent()))
    quirnote.write(made + ("\n" if text.endswith("\n") else ""))


if __name__ == "__main__":
    main()
