"""columns.py sort [descending] | assignments | table, on a whole document: in the selected lines, without a
selection in those round the caret that belong together."""
import re
import sys
import unicodedata

import quirnote

NUMBER = re.compile(r"[-+]?(?:\d+(?:\.\d*)?|\.\d+)(?:[eE][-+]?\d{1,3})?%?")
# The name before it, the sign with what is before the value.
ASSIGNMENT = re.compile(r"([^=:<>!]*[^=:<>!\s+*/%&|^~.?-])([ \t]*)((?:[-+*/%&|^~.?:]|<<|>>|\*\*|//)?=(?![=~>])|:(?![:=]))[ \t]*(?=\S)")


def width(text):
    return sum(0 if unicodedata.combining(c) else 2 if unicodedata.east_asian_width(c) in "WF" else 1
               for c in text)


def padded(text, to):
    return text + " " * (to - width(text))


def selected_range(lines):
    """The first and the line after the last one that the selection touches; nothing without one."""
    first, caret = int(quirnote.variable("INPUT_START_LINE", "1")) - 1, int(quirnote.variable("LINE_NUMBER", "1")) - 1
    text = quirnote.variable("SELECTED_TEXT")
    if text:
        last = first + text.count("\n")
        return first, min(len(lines), last + (not text.endswith("\n")))
    # A selection that is too large for a variable is known by its place alone.
    at_end = caret >= len(lines)
    if first == 0 and quirnote.variable("INPUT_START_COLUMN", "1") == "1" and not at_end:
        return None
    if caret <= first:
        quirnote.tip("So large a selection must be made from its beginning to its end.")
    return first, min(len(lines), caret + (quirnote.variable("LINE_INDEX") != "0"))


def lines_to_change(lines, belongs):
    chosen = selected_range(lines)
    if chosen is None:
        caret = int(quirnote.variable("LINE_NUMBER", "1")) - 1
        if caret >= len(lines) or not belongs(lines[caret]):
            quirnote.tip("Select lines, or put the caret into some that belong together.")
        first = last = caret
        while first > 0 and belongs(lines[first - 1]):
            first -= 1
        while last < len(lines) and belongs(lines[last]):
            last += 1
        chosen = first, last
    return chosen


def pieces(line, mark):
    """Fields of a line; quoted ones may hold the mark."""
    if mark is None:
        return line.split()
    fields, begin, quoted = [], 0, False
    for at, sign in enumerate(line):
        if sign == '"' and mark in ",;":
            quoted = not quoted
        elif sign == mark and not quoted:
            fields.append(line[begin:at])
            begin = at + 1
    return [*fields, line[begin:]]


def sort(lines):
    first, last = lines_to_change(lines, lambda line: line.strip() != "")
    line, at = quirnote.caret_in_line()
    if line not in lines[first:last]:
        line, at = lines[first], 0
    mark = next((m for m in "\t|;," if m in line), None)
    index = (len(re.findall(r"(?<!\S)\S", line[:at + 1].rstrip())) or 1) - 1 if mark is None else len(
        pieces(line[:at], mark)) - 1

    def field(text):
        fields = pieces(text, mark)
        return fields[index].strip().strip('"') if index < len(fields) else ""
    values = [field(text) for text in lines[first:last]]
    if all(NUMBER.fullmatch(value) for value in values if value):
        keys = [(value == "", float(value.rstrip("%")) if value else 0) for value in values]
    else:
        keys = [(value.casefold(), value) for value in values]
    order = sorted(range(len(keys)), key=keys.__getitem__, reverse="descending" in sys.argv)
    lines[first:last] = [lines[first + i] for i in order]


def assignments(lines):
    caret = quirnote.caret_in_line()[0]
    indent = re.match(r"\s*", caret)[0]
    first, last = lines_to_change(
        lines, lambda line: ASSIGNMENT.match(line) and re.match(r"\s*", line)[0] == indent)
    found = [(i, m) for i in range(first, last) if (m := ASSIGNMENT.match(lines[i]))]
    if not found:
        quirnote.tip("No line here assigns anything.")
    names = max(width(m[1]) for _, m in found)
    signs = max(len(m[3]) for _, m in found)
    for i, m in found:
        sign = m[3].rjust(signs) if m[3] != ":" else m[3]
        between = " " if m[3] != ":" else ""
        lines[i] = (padded(m[1], names) + between + sign if between else padded(m[1] + sign, names + 1)) + " " + \
            lines[i][m.end():]


def cells_of(line):
    """Those of a row that may begin and end with a bar; an escaped one is none."""
    return [cell.strip() for cell in re.split(r"(?<!\\)\|", re.sub(r"^\s*\||(?<!\\)\|\s*$", "", line))]


def table(lines):
    first, last = lines_to_change(lines, lambda line: "|" in line or "\t" in line.strip())
    with_bars = any("|" in line for line in lines[first:last])
    indent = re.match(r"\s*", lines[first])[0] if with_bars else ""
    rows = [cells_of(line) if with_bars else [c.strip() for c in line.split("\t")]
            for line in lines[first:last]]
    columns = max(map(len, rows))
    if columns > 500:
        quirnote.tip("This table has more than 500 columns.")
    rows = [row + [""] * (columns - len(row)) for row in rows]
    is_ruler = [with_bars and all(re.fullmatch(":?-+:?", c) for c in row if c) and any(row) for row in rows]
    widths = [max(3 if with_bars else 0, *(width(row[c]) for row, ruler in zip(rows, is_ruler) if not ruler), 0)
              for c in range(columns)]
    marks = next((row for row, ruler in zip(rows, is_ruler) if ruler), [""] * columns)

    def cell(text, c, ruler):
        if ruler:
            text = text or "---"
            return text[0] + "-" * (widths[c] - 2) + text[-1]
        left, right = marks[c].startswith(":"), marks[c].endswith(":")
        missing = widths[c] - width(text)
        before = missing if right and not left else missing // 2 if right else 0
        return " " * before + text + " " * (missing - before)
    for i, (row, ruler) in enumerate(zip(rows, is_ruler)):
        made = [cell(text, c, ruler) for c, text in enumerate(row)]
        lines[first + i] = f"{indent}| {' | '.join(made)} |" if with_bars else "  ".join(made).rstrip()


text = quirnote.read()
lines, line_end = quirnote.without_line_end(text)
lines = lines.split("\n")
{"sort": sort, "assignments": assignments, "table": table}[sys.argv[1]](lines)
quirnote.write("\n".join(lines) + line_end)
