"""lines.py number|tally on the input; keep|delete|copy|count by the selected text or the word at the caret."""
import collections
import re
import sys

import quirnote


def finder():
    """A pattern for what is selected, as it stands, or for the word at the caret, as a whole."""
    if quirnote.variable("SELECTED_TEXT"):
        return re.compile(re.escape(quirnote.variable("SELECTED_TEXT")))
    return re.compile(r"(?<!\w)" + re.escape(quirnote.word()) + r"(?!\w)")


def number(text):
    text, line_end = quirnote.without_line_end(text)
    lines = text.split("\n")
    width = len(str(len(lines)))
    quirnote.write("\n".join(f"{at:{width}}  {line}" for at, line in enumerate(lines, 1)) + line_end)


def tally(text):
    counted = collections.Counter(quirnote.without_line_end(text)[0].split("\n"))
    width = len(str(max(counted.values())))
    quirnote.end(quirnote.NEW_DOCUMENT, "".join(
        f"{times:{width}}  {line}\n" for line, times in sorted(counted.items(), key=lambda c: (-c[1], c[0]))))


def lines_with(text):
    asked = finder()
    if "\n" in quirnote.variable("SELECTED_TEXT"):
        quirnote.tip("Select a text within one line.")
    lines = re.findall("[^\n]*\n|[^\n]+", text)
    return lines, [bool(asked.search(line)) for line in lines]


def keep(text, kept=True):
    lines, found = lines_with(text)
    left = [line for line, has in zip(lines, found) if has == kept]
    if len(left) == len(lines):
        quirnote.tip("All lines are kept.")
    quirnote.end(quirnote.REPLACE_DOCUMENT, "".join(left))


def copy(text):
    lines, found = lines_with(text)
    if not any(found):
        quirnote.tip("No line holds this.")
    quirnote.end(quirnote.NEW_DOCUMENT, "".join(line for line, has in zip(lines, found) if has))


def count(text):
    times = in_lines = line_end = 0
    for found in finder().finditer(text):
        times += 1
        if in_lines == 0 or found.start() > line_end >= 0:
            in_lines += 1
            line_end = text.find("\n", found.start())
    shown = quirnote.printable(quirnote.word().replace("\n", "↵"))[:60]
    quirnote.tip(f"“{shown}” stands here {quirnote.plural(times, 'time')}, in {quirnote.plural(in_lines, 'line')}.")


{"number": number, "tally": tally, "keep": keep, "delete": lambda text: keep(text, False), "copy": copy,
 "count": count}[sys.argv[1]](quirnote.read())
