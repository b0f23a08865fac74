"""The document as a page, which shows the section that the caret is in."""
import json
import secrets

import markdown_page
import quirnote

made = markdown_page.Page(quirnote.read(), quirnote.variable("DIRECTORY"))
caret = int(quirnote.variable("LINE_NUMBER", "1"))
section = next((slug for _, _, slug, line in reversed(made.headings) if line <= caret), "")
title = quirnote.variable("FILENAME") or (made.headings[0][1] if made.headings else "Preview")
# Also at the beginning: a window that is used again would show what it showed before.
nonce = secrets.token_urlsafe(12)
name = json.dumps(section).replace("<", "\\u003c")
script = (f'<script nonce="{nonce}">\naddEventListener("load", () => '
          f"(document.getElementById({name}) ?? document.body).scrollIntoView());\n</script>\n")
quirnote.write(quirnote.page(title, made.html + script, nonce))
