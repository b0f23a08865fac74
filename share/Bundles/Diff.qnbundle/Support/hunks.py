"""hunks.py check|recount|summary: of a unified diff from standard input."""
import re
import sys

import quirnote

HEADER = re.compile(r"@@ -(\d{1,9})(?:,(\d{1,9}))? \+(\d{1,9})(?:,(\d{1,9}))? @@(.*)", re.DOTALL)


def hunks_of(lines):
    """For each: the header's index, its match, and how many lines of it are old, new and both."""
    at = 0
    while at < len(lines):
        found = HEADER.fullmatch(lines[at])
        if not found:
            if lines[at].startswith("--- "):
                yield None
            at += 1
            continue
        header, old, new, both = at, 0, 0, 0
        at += 1
        while at < len(lines) and lines[at][:1] in (" ", "+", "-", "\\", "") and not (
                lines[at] == "" and at + 1 == len(lines)) and not (
                lines[at].startswith("--- ") and lines[at + 1:at + 2] and lines[at + 1].startswith("+++ ")):
            sign = lines[at][:1] or " "
            old, new, both = old + (sign == "-"), new + (sign == "+"), both + (sign == " ")
            at += 1
        # Mail programs leave empty lines after the last hunk.
        for line in reversed(lines[header:at]):
            if line:
                break
            both -= both + old > int(found[2] or 1)
        yield header, found, old, new, both


def main():
    text, line_end = quirnote.without_line_end(quirnote.read())
    lines = text.split("\n")
    shift = files = added = deleted = count = 0
    said = []
    for hunk in hunks_of(lines):
        if hunk is None:
            files, shift = files + 1, 0
            continue
        header, found, old, new, both = hunk
        count, added, deleted = count + 1, added + new, deleted + old
        counted, named = (both + old, both + new), (int(found[2] or 1), int(found[4] or 1))
        for has, says, what in zip(counted, named, ("old", "new")):
            if has != says:
                said.append(quirnote.fault(
                    header + 1, 1, f"the header says {says} {what} lines, there are {has}"))
        start = int(found[1])
        begin = max(0, start + shift + (counted[0] == 0) - (counted[1] == 0))
        lines[header] = f"@@ -{start},{counted[0]} +{begin},{counted[1]} @@{found[5]}"
        shift += counted[1] - counted[0]
    if count == 0:
        quirnote.tip("There are no hunks of a unified diff here.")
    if sys.argv[1] == "check":
        quirnote.report("Check of the Diff", "".join(said))
    elif sys.argv[1] == "summary":
        quirnote.tip(f"{quirnote.plural(files, 'file')}, {quirnote.plural(count, 'hunk')}: "
                     f"{quirnote.plural(added, 'line')} added, {deleted:,} deleted")
    else:
        quirnote.write("\n".join(lines) + line_end)


main()
