"""git.py blame|history: of the line at the caret; the input is the document. A repository may come from anywhere:
nothing that its own configuration names is run."""
import os
import re
import subprocess
import sys
import time

import quirnote

folder = quirnote.variable("DIRECTORY")
SAFE = ["-c", "core.fsmonitor=false", "-c", "core.hooksPath=/dev/null", "-c", "core.pager=cat",
        "-c", "core.sshCommand=false", "-c", "core.quotePath=false", "-c", "log.showSignature=false",
        "-c", "safe.bareRepository=explicit", "--no-pager", "--no-optional-locks", "--literal-pathspecs"]
ENVIRONMENT = {**os.environ, "GIT_ALLOW_PROTOCOL": "none", "GIT_NO_LAZY_FETCH": "1", "GIT_TERMINAL_PROMPT": "0",
               "LC_ALL": "C.UTF-8"}


def git(*arguments, settings=(), text=b""):
    return subprocess.run([quirnote.need("git", "git"), "-C", folder, *SAFE, *settings, *arguments], input=text,
                          capture_output=True, env=ENVIRONMENT, check=False)


def without_filters():
    """Settings that take the programs off the filters which the repository defines."""
    listed = git("config", "--null", "--name-only", "--get-regexp", r"^filter\..*\.(clean|smudge|process|required)$")
    result = []
    for key in listed.stdout.decode("utf-8", "surrogateescape").split("\0")[:-1]:
        if "=" in key:
            quirnote.tip("A filter of this repository has a name that can't be switched off; git was not run.")
        result += ["-c", key + ("=false" if key.endswith(".required") else "=")]
    return result


def failed(done):
    said = done.stderr.decode("utf-8", "replace").strip().removeprefix("fatal: ")
    quirnote.tip("git: " + quirnote.printable(said.partition("\n")[0])[:300])


def unquoted(name):
    if not name.startswith(b'"'):
        return name
    plain = {b"n": b"\n", b"t": b"\t", b"r": b"\r", b"a": b"\a", b"b": b"\b", b"f": b"\f", b"v": b"\v"}
    return re.sub(rb"\\([0-7]{3}|.)", lambda m: bytes([int(m[1], 8)]) if len(m[1]) == 3 else plain.get(m[1], m[1]),
                  name[1:-1])


def blamed():
    """What git knows of the line: the commit, the line's number and the file in it."""
    name, line = quirnote.variable("FILENAME"), quirnote.variable("LINE_NUMBER", "1")
    if not folder or not name:
        quirnote.tip("This document has not been saved yet.")
    text = sys.stdin.buffer.read()
    if text and not text.endswith(b"\n"):
        text += b"\n"
    done = git("blame", "--no-textconv", "--porcelain", "-L", f"{line},+1", "--contents", "-", "--", name,
               settings=without_filters(), text=text)
    if done.returncode:
        failed(done)
    first, *rest = done.stdout.split(b"\n")
    known = dict(part.partition(b" ")[::2] for part in rest if not part.startswith(b"\t"))
    commit, original = first.split(b" ")[:2]
    if not commit.strip(b"0"):
        quirnote.tip("This line has not been committed yet.")
    return commit.decode(), int(original), unquoted(known[b"filename"]), known


def blame():
    commit, _, _, known = blamed()
    when = time.strftime("%Y-%m-%d %H:%M", time.localtime(int(known[b"author-time"])))
    author, summary = (quirnote.printable(known[part].decode("utf-8", "replace")) for part in (b"author", b"summary"))
    quirnote.tip(f"{commit[:10]} {author}, {when}\n{summary}")


def history():
    global folder
    commit, line, name, _ = blamed()
    top = git("rev-parse", "--show-toplevel")
    folder = os.fsdecode(top.stdout.removesuffix(b"\n"))
    done = git("log", "--no-color", "--no-ext-diff", "--no-textconv", "-L", f"{line},+1:{os.fsdecode(name)}", commit)
    if done.returncode:
        failed(done)
    quirnote.end(quirnote.NEW_DOCUMENT, done.stdout.decode("utf-8", "surrogateescape"))


{"blame": blame, "history": history}[sys.argv[1]]()
