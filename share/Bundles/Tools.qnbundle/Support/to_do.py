"""What is left to do in a folder: lines with TODO and its like in a comment or a text, as a page that comes as
they are found."""
import os
import re
import sys

import quirnote

MARK = re.compile(rb"(?<![\w])(TODO|FIXME|XXX|HACK|BUG)(?![\w])")
LEFT_OUT = {"node_modules", "__pycache__", "build", "target", "dist", "vendor", "third_party"}
MOST_FILES, MOST_BYTES, MOST_FOUND, MOST_SHOWN = 50_000, 1 << 20, 5000, 200


def files_below(folder):
    """No links are followed, and nothing hidden is entered."""
    for where, folders, names in os.walk(folder, onerror=lambda fault: None):
        folders[:] = sorted(f for f in folders if not f.startswith(".") and f not in LEFT_OUT)
        for name in sorted(names):
            path = os.path.join(where, name)
            if not name.startswith(".") and os.path.isfile(path) and not os.path.islink(path):
                yield path


def lines_of(path):
    try:
        with open(path, "rb") as file:
            data = file.read(MOST_BYTES + 1)
    except OSError:
        return
    if len(data) > MOST_BYTES or b"\0" in data or not MARK.search(data):
        return
    for number, line in enumerate(data.split(b"\n"), 1):
        found = MARK.search(line)
        if found:
            text = line[found.start():].strip()[:MOST_SHOWN].decode("utf-8", "replace")
            yield number, len(line[:found.start()].decode("utf-8", "replace")) + 1, text


def main():
    folder = quirnote.variable("PROJECT_DIRECTORY") or quirnote.variable("DIRECTORY")
    if not folder:
        quirnote.write(quirnote.page("To Do", "<p>This document is in no folder yet: save it first.</p>\n"))
        return
    quirnote.write(quirnote.page_start("To Do") + f"<h1>To Do in {quirnote.escape(os.path.basename(folder))}</h1>\n")
    found = 0
    for count, path in enumerate(files_below(folder)):
        if count == MOST_FILES or found >= MOST_FOUND:
            quirnote.write("<p class=fault>There is more: the list ends here.</p>\n")
            break
        lines = list(lines_of(path))
        if lines:
            quirnote.write(f"<h3>{quirnote.escape(os.path.relpath(path, folder))}</h3>\n<ul>\n" + "".join(
                f"<li>{quirnote.place_link(str(number), path, number, column)} {quirnote.escape(text)}</li>\n"
                for number, column, text in lines) + "</ul>\n")
            found += len(lines)
    quirnote.write(f"<p>{quirnote.plural(found, 'note')}.</p>\n</body></html>\n")


main()
