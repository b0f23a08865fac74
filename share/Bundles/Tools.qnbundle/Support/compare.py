"""compare.py saved|clipboard: what differs between that and the input, as a diff in a new document."""
import os
import subprocess
import sys
import tempfile

import quirnote

MOST_BYTES, SECONDS = 64 << 20, 10


def decoded(data):
    for mark, charset in ((b"\xef\xbb\xbf", "utf-8-sig"), (b"\xff\xfe", "utf-16"), (b"\xfe\xff", "utf-16")):
        if data.startswith(mark):
            return data.decode(charset, "replace")
    try:
        return data.decode("utf-8")
    except UnicodeDecodeError:
        return data.decode("cp1252", "replace")


def saved_text():
    path = quirnote.variable("FILEPATH")
    if not path:
        quirnote.tip("This document has not been saved yet.")
    if not os.path.isfile(path) or os.path.getsize(path) > MOST_BYTES:
        quirnote.tip(f"“{quirnote.printable(path)}” is no file of at most {MOST_BYTES >> 20} MB.")
    with open(path, "rb") as file:
        return decoded(file.read())


def clipboard_text():
    if quirnote.os.environ.get("WAYLAND_DISPLAY") and quirnote.shutil.which("wl-paste"):
        command = [quirnote.need("wl-paste", "wl-clipboard"), "--no-newline"]
    elif quirnote.shutil.which("xsel"):
        command = [quirnote.need("xsel", "xsel"), "--clipboard", "--output"]
    else:
        command = [quirnote.need("xclip", "xclip"), "-selection", "clipboard", "-out"]
    try:
        done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, timeout=SECONDS)
    except subprocess.TimeoutExpired:
        quirnote.tip("The program that holds the clipboard does not answer.")
    if done.returncode:
        quirnote.tip("There is no text on the clipboard.")
    return decoded(done.stdout)


def main():
    what = sys.argv[1]
    name = quirnote.printable(quirnote.variable("FILENAME")) or "untitled"
    other = saved_text() if what == "saved" else clipboard_text()
    other = other.replace("\r\n", "\n").replace("\r", "\n")
    selected = quirnote.variable("SELECTED_TEXT") if what == "clipboard" else ""
    text = selected or quirnote.read()
    if text == other:
        quirnote.tip(f"Nothing differs from the {'saved file' if what == 'saved' else 'clipboard'}.")
    with tempfile.TemporaryDirectory() as folder:
        files = [os.path.join(folder, part) for part in ("before", "after")]
        for file, content in zip(files, (other, text)):
            with open(file, "wb") as out:
                out.write(content.encode("utf-8", "surrogateescape"))
        done = subprocess.run(
            [quirnote.need("diff", "diffutils"), "--text", "-u", "--label",
             name + (" (saved)" if what == "saved" else " (clipboard)"), "--label", name, "--", *files],
            capture_output=True, check=False)
    quirnote.end(quirnote.NEW_DOCUMENT, done.stdout.decode("utf-8", "surrogateescape"))


main()
