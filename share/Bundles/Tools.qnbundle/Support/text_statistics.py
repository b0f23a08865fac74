"""Counts what is in the input; what is selected, where it is that."""
import re

import quirnote

WORDS_A_MINUTE = 230
text = quirnote.read()
lines = text.count("\n") + (not text.endswith("\n") and bool(text))
words = len(re.findall(r"\w+(?:['’-]\w+)*", text))
longest = max(map(len, text.split("\n")))
filled = [not line.isspace() and bool(line) for line in text.split("\n")]
paragraphs = sum(now and not before for before, now in zip([False, *filled], filled))
blank = lines - sum(filled)
minutes = -(-words // WORDS_A_MINUTE)
of = "Selection" if quirnote.variable("SELECTED_TEXT") else quirnote.printable(
    quirnote.variable("FILENAME")) or "Document"
quirnote.tip(f"""{of}
{quirnote.plural(lines, "line")}, {blank:,} of them blank; the longest has {quirnote.plural(longest, "character")}
{quirnote.plural(paragraphs, "paragraph")}
{quirnote.plural(words, "word")}: about {minutes:,} min to read
{quirnote.plural(len(text), "character")}, {len("".join(text.split())):,} without blanks
{len(text.encode("utf-8", "surrogateescape")):,} bytes in UTF-8""")
