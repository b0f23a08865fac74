"""What commands in Python share; docs/commands.md describes it. Texts may hold bytes that are no UTF-8, as
lone surrogates, and are written as they came."""
import os
import shutil
import sys

(DISCARD, REPLACE_SELECTION, REPLACE_DOCUMENT, INSERT_AFTER, INSERT_SNIPPET, SHOW_HTML, SHOW_TIP,
 NEW_DOCUMENT) = range(200, 208)


def variable(name, otherwise=""):
    """The variable QN_name."""
    return os.environ.get("QN_" + name, otherwise)


def read():
    """The whole input."""
    return sys.stdin.buffer.read().decode("utf-8", "surrogateescape")


def write(text):
    """Output with line feeds as they are."""
    sys.stdout.flush()
    sys.stdout.buffer.write(text.encode("utf-8", "surrogateescape"))
    sys.stdout.buffer.flush()


def end(disposition, text=""):
    """Ends the command; its output goes where one of the names above says."""
    write(text)
    sys.exit(disposition)


def tip(text):
    end(SHOW_TIP, text)


def need(program, package):
    """The full name of a program; a tool tip and the end where it is missing."""
    found = shutil.which(program)
    if not found:
        tip(f"“{program}” is not installed. On Debian and Ubuntu: sudo apt install {package}")
    return found


def word():
    """What is selected, else the word at the caret; a tool tip and the end where both are empty."""
    text = variable("SELECTED_TEXT") or variable("CURRENT_WORD")
    if not text:
        tip("Select a text or put the caret on a word first.")
    return text


def caret_in_line():
    """The line at the caret and the caret's index in it."""
    line = os.environb.get(b"QN_CURRENT_LINE", b"")
    index = int(variable("LINE_INDEX", "0"))
    return (line.decode("utf-8", "surrogateescape"),
            len(line[:index].decode("utf-8", "surrogateescape")))


def indent():
    """What a level of indentation is in the document."""
    return " " * int(variable("TAB_SIZE", "4")) if variable("SOFT_TABS") == "YES" else "\t"


def without_line_end(text):
    """The text without the line feed at its end, and that."""
    return (text[:-1], "\n") if text.endswith("\n") else (text, "")


def printable(text):
    """For a line of a message: control characters and what is no text become question marks."""
    return "".join(c if c.isprintable() else "?" for c in text)


def plural(number, what):
    return f"{number:,} {what}{'' if number == 1 else 's'}"


def snippet_escape(text):
    """As a snippet that is just this text."""
    return "".join("\\" + c if c in "\\$`" else c for c in text)


def escape(text):
    """As text or a quoted attribute in HTML; what is no character becomes U+FFFD."""
    text = text.encode("utf-8", "surrogateescape").decode("utf-8", "replace").replace("\0", "\ufffd")
    for sign, entity in (("&", "&amp;"), ("<", "&lt;"), (">", "&gt;"), ('"', "&quot;"), ("'", "&#39;")):
        text = text.replace(sign, entity)
    return text


def percent(text, kept="-._~"):
    """Percent escapes for all but letters, digits and what is kept."""
    keep = b"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789" + kept.encode()
    return "".join(chr(b) if b in keep else f"%{b:02X}"
                   for b in text.encode("utf-8", "surrogateescape"))


def place_url(path, line, column=0):
    """A link that opens a file in the editor; numbers from 1, 0 for no column."""
    return (f"qn-open:?file={percent(path, '-._~/')}&line={line}"
            + (f"&column={column}" if column else ""))


def place_link(text, path, line, column=0):
    return f'<a href="{escape(place_url(path, line, column))}">{escape(text)}</a>'


STYLE = """:root { color-scheme: light dark; }
body { font: 15px/1.5 sans-serif; margin: 1.5em; max-width: 60em; overflow-wrap: break-word; }
pre, code, kbd { font: 13px/1.45 monospace; }
pre { white-space: pre-wrap; background: rgba(128, 128, 128, .12); padding: .7em; border-radius: 4px; }
table { border-collapse: collapse; }
th, td { border: 1px solid rgba(128, 128, 128, .4); padding: .2em .6em; }
blockquote { margin-left: 0; padding-left: 1em; border-left: 4px solid rgba(128, 128, 128, .4); }
img { max-width: 100%; }
.fault { color: #c62828; }
"""


def page_start(title, script_nonce=""):
    """A page up to its body. Nothing in it loads from elsewhere, and no script runs but one with the nonce."""
    scripts = f" script-src 'nonce-{script_nonce}';" if script_nonce else ""
    return (f'<!DOCTYPE html>\n<html><head><meta charset="utf-8">\n'
            f"<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
            f"style-src 'unsafe-inline'; img-src file: qn-file: data:;{scripts}\">\n"
            f"<title>{escape(title)}</title>\n<style>\n{STYLE}</style></head>\n<body>\n")


def page(title, body, script_nonce=""):
    return page_start(title, script_nonce) + body + "</body></html>\n"


def document_name():
    """What a message calls the document; the window makes links of "NAME:LINE:COLUMN: ..." by it."""
    return printable(variable("FILENAME")) or "untitled"


def fault(line, column, message):
    return f"{document_name()}:{line}:{column}: error: {message}\n"


def report(title, found):
    """Ends a command that checks: a page with what it has found, a tool tip for nothing."""
    if not found.strip():
        tip("No problems found.")
    end(SHOW_HTML, page(title, f"<pre>{escape(found.rstrip())}</pre>\n"))
