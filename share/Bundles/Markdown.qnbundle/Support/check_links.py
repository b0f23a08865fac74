"""Links of the document that lead nowhere: to files that aren't there, headings and names that it doesn't have."""
import os
import re
import urllib.parse

import markdown_page
import quirnote

LINK = re.compile(r"\[(?:[^\[\]\\]|\\.)*\]\(\s*<?([^\s()<>]+)|^ {0,3}\[[^\]]+\]:[ \t]*<?([^\s>]+)")
NAMED = re.compile(r"\[[^\[\]]+\]\[([^\[\]]+)\]")
text, folder = quirnote.read(), quirnote.variable("DIRECTORY")
page = markdown_page.Page(text)
slugs = {slug for _, _, slug, _ in page.headings}
fence, found_all = "", []


def fault_of(url):
    path, _, anchor = url.partition("#")
    if not markdown_page.is_safe(url):
        return "the link does not lead to the web, to mail or to a file"
    if re.match(r"[A-Za-z][\w+.-]*:|//", url):
        return ""
    path = urllib.parse.unquote(path.partition("?")[0], errors="surrogateescape")
    if not path:
        return "" if urllib.parse.unquote(anchor) in slugs else "there is no such heading"
    exists = not folder or "\0" not in path and os.path.exists(os.path.join(folder, path))
    return "" if exists else "there is no such file"


for number, line in enumerate(text.split("\n"), 1):
    mark = re.match(r" {0,3}(?:> ?)*(`{3,}|~{3,})", line)
    if mark and (not fence or mark[1].startswith(fence)):
        fence = "" if fence else mark[1]
        continue
    if fence or line.startswith(("    ", "\t")):
        continue
    line = re.sub(r"(`+)[^`]+\1", lambda code: " " * len(code[0]), line)
    for found in LINK.finditer(line):
        url = found[1] or found[2]
        if said := fault_of(url):
            found_all.append(quirnote.fault(number, found.start() + 1, f"{said}: {quirnote.printable(url)}"))
    for found in NAMED.finditer(line):
        if " ".join(found[1].casefold().split()) not in page.references:
            found_all.append(quirnote.fault(
                number, found.start() + 1, f"there is no link of this name: {quirnote.printable(found[1])}"))
if page.unclosed_fence:
    found_all.append(quirnote.fault(page.unclosed_fence, 1, "this block of code has no end"))
quirnote.report("Check of Links", "".join(found_all))
