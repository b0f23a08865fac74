"""css_text.py check|format: a style sheet from standard input. Formatting changes blanks alone, and none in strings,
comments and url()."""
import re
import sys

import quirnote

# What isn't closed goes to the end of the text, or of the line.
TOKEN = re.compile(r"""(?P<comment>/\*.*?(?:(?P<end_c>\*/)|\Z))
|(?P<string>"(?:[^"\\\n]|\\.)*(?P<end_d>"?)|'(?:[^'\\\n]|\\.)*(?P<end_s>'?))
|(?P<url>url\(\s*(?!["'\s])(?:[^)\\\n]|\\.)*(?P<end_u>\)?))|(?P<blank>\s+)|(?P<escape>\\.)|(?P<mark>[][{}();,:])
|(?P<rest>[^][{}();,:\s"'\\/u]+|.)""", re.VERBOSE | re.DOTALL | re.IGNORECASE)
PAIRS = {"}": "{", ")": "(", "]": "["}


OPEN = {"comment": "this comment has no end", "string": "this string has no end in its line",
        "url": "this url( has no end in its line"}


def tokens_of(text):
    """Kind, text and index; what isn't closed is of the kind "open"."""
    for found in TOKEN.finditer(text):
        kind = next(name for name, part in found.groupdict().items() if part is not None and "_" not in name)
        is_open = kind in OPEN and not any(found[end] for end in ("end_c", "end_d", "end_s", "end_u"))
        yield ("open", OPEN[kind], found.start()) if is_open else (kind, found[0], found.start())


def faults_of(text, tokens):
    """Index and message."""
    opened, words, colon = [], None, False
    for kind, token, at in tokens:
        if kind == "open":
            yield at, token
        if kind in ("comment", "blank"):
            continue
        if kind != "mark":
            words = at if words is None else words
        elif token in "([{":
            opened.append((token, at))
        elif token in PAIRS:
            if not opened or opened[-1][0] != PAIRS[token]:
                yield at, f"“{token}” closes nothing that is open"
            else:
                opened.pop()
        elif token == ":":
            colon = True
        in_round = bool(opened) and opened[-1][0] != "{"
        if kind == "mark" and token in ";{}" and not in_round:
            if token != "{" and words is not None and not colon and not text.startswith("@", words):
                yield words, "this declaration has no colon"
            words, colon = None, False
    for token, at in opened:
        yield at, f"“{token}” is not closed"


def squeezed(tokens):
    return "".join(" " if kind == "blank" else token for kind, token, _ in tokens).strip()


def selectors(part):
    """By commas that stand in no brackets."""
    depth, begin = 0, 0
    for i, (kind, token, _) in enumerate(part):
        if kind == "mark":
            depth += (token in "([") - (token in ")]")
            if token == "," and depth == 0:
                yield squeezed(part[begin:i])
                begin = i + 1
    yield squeezed(part[begin:])


def declaration(part):
    for i, (kind, token, _) in enumerate(part):
        if kind == "mark" and token == ":" and not part[0][1].startswith("@"):
            return squeezed(part[:i]) + ": " + squeezed(part[i + 1:])
    return squeezed(part)


def laid_out(tokens, indent):
    lines, part, level, in_round = [], [], 0, 0

    def put(text):
        lines.append(level * indent + text if text else "")
    for i, (kind, token, _) in enumerate(tokens):
        if kind == "mark":
            in_round += (token in "([") - (token in ")]")
        if kind == "comment" and not any(k != "blank" for k, *_ in part):
            before = tokens[i - 1][1] if i else "\n"
            if lines and "\n" not in before and not lines[-1].endswith("*/"):
                lines[-1] += " " + token
            else:
                if lines and before.count("\n") > 1 and lines[-1]:
                    put("")
                put(token)
            part = []
        elif kind == "mark" and token in "{};" and not in_round:
            while part and part[0][0] == "blank":
                blank = part.pop(0)[1]
                if blank.count("\n") > 1 and lines and lines[-1] and not lines[-1].endswith("{") and part and token != "}":
                    put("")
            if token == "{":
                *others, last = [squeezed(part)] if part and part[0][1].startswith("@") else selectors(part)
                for each in others:
                    put(each + ",")
                put((last + " {").strip())
                level += 1
            else:
                if squeezed(part):
                    put(declaration(part) + ";")
                elif token == ";" and lines:
                    pass  # an empty one
                if token == "}":
                    level -= 1
                    put("}")
            part = []
        else:
            part.append((kind, token, 0))
    if squeezed(part):
        put(squeezed(part))
    return "\n".join(lines)


def main():
    text = quirnote.read()
    tokens = list(tokens_of(text))
    found = sorted(faults_of(text, tokens))
    places = [(text.count("\n", 0, at) + 1, at - text.rfind("\n", 0, at), said) for at, said in found]
    if sys.argv[1] == "check":
        quirnote.report("Check of CSS", "".join(quirnote.fault(*place) for place in places))
    elif places:
        quirnote.tip("Line {}, column {}: {}. Nothing was changed.".format(*places[0]))
    else:
        quirnote.write(laid_out(tokens, quirnote.indent()) + ("\n" if text.endswith("\n") else ""))


main()
