"""Looks for common faults of a makefile from standard input. make itself would run what stands in $(shell ...)."""
import re

import quirnote

RULE = re.compile(r"[^\s#:=][^#:=]*::?(?!=)")
text = quirnote.read()
conditionals, definition, after_rule, found_all = [], None, False, []


def say(line, message, column=1):
    found_all.append((line, column, message))


def unclosed(line):
    """The column of a "$(" or "${" that is not closed; 0 if there is none."""
    opened = []
    for found in re.finditer(r"\$\$|\$([({])|[(){}]", line):
        sign = found[1] or found[0]
        if found[1]:
            opened.append((sign, found.start() + 1))
        elif opened and sign in "({" and sign == opened[-1][0]:
            opened.append((sign, opened[-1][1]))
        elif opened and sign == {"(": ")", "{": "}"}[opened[-1][0]]:
            opened.pop()
    return opened[0][1] if opened else 0


logical, first = "", 1
for number, line in enumerate(text.split("\n"), 1):
    first = first if logical else number
    logical += line
    if re.search(r"(?<!\\)(?:\\\\)*\\$", line):
        logical = logical[:-1] + " "
        continue
    line, logical, number = logical, "", first
    words = line.split()
    word = words[0] if words else ""
    if definition:
        definition = None if word == "endef" else definition
        continue
    if line.startswith("\t") and after_rule:
        continue
    if word in ("define", "override") and "define" in words[:2]:
        definition = number
    elif word in ("ifeq", "ifneq", "ifdef", "ifndef"):
        conditionals.append((word, number))
    elif word in ("else", "endif") and not conditionals:
        say(number, f"“{word}” without a condition")
    elif word == "endif":
        conditionals.pop()
    elif word == "endef":
        say(number, "“endef” without “define”")
    elif not words or word.startswith("#"):
        continue
    elif RULE.match(line):
        after_rule = True
    elif after_rule and line[0] == " " and not re.match(r"\s*[\w.-]+\s*(?:[:?+!]|::)?=", line) and word not in (
            "include", "-include", "export", "unexport", "vpath", "else"):
        say(number, "a line of a recipe begins with a tab, not with spaces")
        continue
    elif not line.startswith(("\t", " ")):
        after_rule = False
    if column := unclosed(line):
        say(number, "this reference is not closed", column)
for word, number in conditionals:
    say(number, f"“{word}” has no “endif”")
if definition:
    say(definition, "“define” has no “endef”")
quirnote.report("Check of the Makefile", "".join(quirnote.fault(*each) for each in sorted(found_all)))
