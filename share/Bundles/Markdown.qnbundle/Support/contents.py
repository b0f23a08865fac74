"""A list of the headings as links, between two comments; where these stand in the document the list is made anew."""
import re

import markdown_page
import quirnote

BEGIN, END = "<!-- contents -->", "<!-- end of contents -->"
text = quirnote.read()
headings = markdown_page.Page(text).headings
if sum(level == 1 for level, *_ in headings) == 1:
    headings = [heading for heading in headings if heading[0] > 1]
if not headings:
    quirnote.tip("There are no headings for a table of contents.")
top, lines = min(heading[0] for heading in headings), []
for level, plain, slug, _ in headings:
    name = re.sub(r"([\\`*_\[\]<>])", r"\\\1", plain)
    lines.append(f"{'  ' * (level - top)}- [{name}](#{quirnote.percent(slug)})")
made = f"{BEGIN}\n{chr(10).join(lines)}\n{END}"
begin = text.find(BEGIN)
end = text.find(END, begin)
if 0 <= begin < end:
    quirnote.end(quirnote.REPLACE_DOCUMENT, text[:begin] + made + text[end + len(END):])
quirnote.write(made + "\n")
