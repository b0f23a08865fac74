"""Each line of the input in an element, as a snippet with its name as a field."""
import re

import quirnote

text, line_end = quirnote.without_line_end(quirnote.read())
wrapped = []
for line in text.split("\n"):
    blank = re.match(r"\s*", line)[0]
    name = "$1" if wrapped else "${1:li}"
    wrapped.append(f"{blank}<{name}>{quirnote.snippet_escape(line[len(blank):])}</${{1/\\s.*//m}}>" if line.strip()
                   else line)
quirnote.write("\n".join(wrapped) + "$0" + line_end)
