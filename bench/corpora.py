"""Source texts to tokenise: files of this machine joined, the same as long as it has the same."""

import re
from pathlib import Path

from measuring import make_once

ROOTS = {"C": (["/usr/include"], [".h"], r"c\+\+|boost|qt6|KF5|gtest|gmock|antlr|unicode"),
         "C++": (["/usr/include/c++", "/usr/include/boost"], ["", ".hpp", ".h", ".tcc"], None),
         "Python": (["/usr/lib/python3.11", "/usr/lib/python3"], [".py"], None),
         "JSON": (["/usr/share", "/usr/lib"], [".json"], None),
         "HTML": (["/usr/share"], [".html"], None),
         "Markdown": (["/usr/share", "/usr/lib"], [".md"], None)}


def files(language):
    roots, suffixes, without = ROOTS[language]
    for root in roots:
        for path in sorted(Path(root).rglob("*")):
            if path.suffix not in suffixes or path.is_symlink() or not path.is_file():
                continue
            if not without or not re.search(without, str(path)):
                yield path


def join(language, size):
    """Whole files of valid UTF-8 without other controls than white space, up to `size` bytes."""
    joined = bytearray()
    for path in files(language):
        content = path.read_bytes()
        if len(joined) + len(content) >= size or re.search(rb"[\x00-\x08\x0e-\x1f]", content):
            continue
        try:
            content.decode("utf-8")
        except UnicodeDecodeError:
            continue
        joined += content + b"\n"
    return bytes(joined)


def corpus(folder, language, size):
    """The file's name; its size is at most `size`."""
    suffix = {"C": "c", "C++": "cc", "Python": "py", "JSON": "json", "HTML": "html",
              "Markdown": "md"}[language]
    return make_once(folder / f"corpus-{size / 1e6:g}.{suffix}",
                     lambda out: out.write(join(language, size)))


def first_screen():
    """Two lines of comment, then lines much of which every editor shows in colours."""
    yield b"// Messages by their numbers, as they are told to those who read the log of a server\n" * 2
    for n in range(80):
        yield b'static char const *const message_%d = "text of message number %d in a table";\n' % (
            n, n * 7919)


def with_line_comments(text):
    """C without a comment that could end one that is opened at the beginning."""
    def lines(match):
        return b"// " + match[0][2:-2].replace(b"\n", b"\n// ")
    return re.sub(rb"/\*.*?\*/", lines, text, flags=re.DOTALL).replace(b"*/", b"* /")


def screen_corpus(folder, size, suffix="c"):
    """C of at most `size` bytes that begins with `first_screen`, and in which no comment ends but
    at a line's end. With another suffix it is in no language."""
    def write(out):
        text = b"".join(first_screen()) + with_line_comments(join("C", size))
        out.write(text[:text.rfind(b"\n", 0, size) + 1])
    return make_once(folder / f"screen-{size / 1e6:g}.{suffix}", write)
