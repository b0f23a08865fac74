"""report.py TITLE [NAME]...: quirnote.report of what a checker has found, from standard input. NAME is what it calls
the text that it has read."""
import re
import sys

import quirnote

title, *names = sys.argv[1:]
found = quirnote.read()
for name in names:
    found = re.sub(f"(?m)^(.{{0,40}}?){re.escape(name)}(?=:| line)", lambda m: m[1] + quirnote.document_name(), found)
quirnote.report(title, found)
