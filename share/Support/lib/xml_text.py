"""xml_text.py check|format: XML from standard input. Formatting changes blanks alone, and only between elements that
have no text among them; it loads nothing, and expands nothing."""
import re
import sys
from xml.parsers import expat

import quirnote

TOKEN = re.compile(r"""(?P<comment><!--.*?-->)|(?P<cdata><!\[CDATA\[.*?\]\]>)|(?P<instruction><\?.*?\?>)
|(?P<close></[^>]*>)|(?P<open><[^!?/](?:[^<>"']|"[^"]*"|'[^']*')*>)|(?P<text>[^<]+)""", re.VERBOSE | re.DOTALL)
DOCTYPE = re.compile(r"""<!--.*?-->|<\?.*?\?>|"[^"]*"|'[^']*'|[][<>]""", re.DOTALL)
MOST_LEVELS = 1000
KEEPS_SPACE = re.compile(r"""\sxml:space\s*=\s*["']preserve["']""")


def fault_of(text):
    """What is wrong with its form, with line and column from 1; nothing if it is well-formed."""
    parser = expat.ParserCreate("utf-8")
    try:
        parser.Parse(text.encode("utf-8", "surrogateescape"), True)
    except expat.ExpatError as fault:
        return fault.lineno, fault.offset + 1, expat.errors.messages[fault.code]
    return None


def end_of_doctype(text, at):
    depth = 0
    for found in DOCTYPE.finditer(text, at):
        depth += {"[": 1, "<": 1, "]": -1, ">": -1}.get(found[0], 0)
        if depth == 0:
            return found.end()
    raise ValueError


def tokens_of(text):
    at = 1 if text.startswith("\ufeff") else 0
    while at < len(text):
        if text.startswith("<!DOCTYPE", at):
            end = end_of_doctype(text, at)
            yield "instruction", text[at:end]
            at = end
            continue
        found = TOKEN.match(text, at)
        if not found:
            raise ValueError
        yield found.lastgroup, found[0]
        at = found.end()


def with_text(tokens):
    """For each opening tag, by its index, whether what is in it stays as it is."""
    result, stack = {}, [-1]
    has_child = {-1: True}
    result[-1] = False
    for i, (kind, token) in enumerate(tokens):
        if kind == "open":
            has_child[stack[-1]] = True
            result[i] = bool(KEEPS_SPACE.search(token))
            if not token.endswith("/>"):
                stack.append(i)
        elif kind == "close":
            opened = stack.pop()
            result[opened] = result[opened] or not has_child.get(opened)
        elif kind == "cdata" or kind == "text" and not token.isspace():
            result[stack[-1]] = True
        elif kind in ("comment", "instruction"):
            has_child[stack[-1]] = True
    return result


def laid_out(text, indent):
    tokens = list(tokens_of(text))
    stays, result, level, kept = with_text(tokens), [], 0, 0
    blank_line = False
    for i, (kind, token) in enumerate(tokens):
        if kept:
            result.append(token)
            kept += kind == "open" and not token.endswith("/>")
            kept -= kind == "close"
            continue
        if kind == "text":
            blank_line = token.count("\n") > 1
            continue
        level -= kind == "close"
        if result:
            result.append("\n" * (1 + (blank_line and kind != "close")) + level * indent)
        blank_line = False
        result.append(token)
        if kind == "open" and not token.endswith("/>"):
            if stays[i]:
                kept = 1
            else:
                level += 1
            if level > MOST_LEVELS:
                quirnote.tip(f"This is nested deeper than {MOST_LEVELS} levels; nothing was changed.")
    return "".join(result)


def main():
    text = quirnote.read()
    fault = fault_of(text)
    if sys.argv[1] == "check":
        quirnote.report("Check of XML", quirnote.fault(*fault) if fault else "")
    if fault:
        quirnote.tip(f"Line {fault[0]}, column {fault[1]}: {fault[2]}. Nothing was changed.")
    try:
        quirnote.write(laid_out(text, quirnote.indent()) + ("\n" if text.endswith("\n") else ""))
    except ValueError:
        quirnote.tip("A part of this text could not be read; nothing was changed.")


if __name__ == "__main__":
    main()
