"""What Python's documentation says of a dotted name. Called with -I and outside of the document's folder: to look
a name up means to import its module."""
import os
import re
import sys

NAME = re.compile(r"[A-Za-z_]\w*(?:\.[A-Za-z_]\w*)*")


def name_at_caret():
    if selected := os.environ.get("QN_SELECTED_TEXT"):
        return selected.strip() if NAME.fullmatch(selected.strip()) else ""
    line = os.environb.get(b"QN_CURRENT_LINE", b"")
    at = len(line[:int(os.environ.get("QN_LINE_INDEX", "0"))].decode("utf-8", "replace"))
    found = [m for m in NAME.finditer(line.decode("utf-8", "replace")) if m.start() <= at <= m.end()]
    if not found:
        return ""
    # What follows the word that the caret is in belongs to another question.
    end = re.compile(r"\w*").match(found[0].string, at).end()
    return found[0].string[found[0].start():end].rstrip(".")


def end(status, text):
    sys.stdout.write(text)
    sys.stdout.flush()
    os._exit(status)


def main():
    name = name_at_caret()
    if not name:
        end(206, "Put the caret on a name first.")
    import pydoc
    for asked in dict.fromkeys((name, name.rpartition(".")[2])):
        try:
            page = pydoc.plain(pydoc.render_doc(asked, "%s"))
        except BaseException:  # whatever the module does when it is imported
            continue
        end(207, page)
    end(206, f"Python's documentation has nothing about “{name}”.")


main()
