"""Opens the address at the caret with the desktop's program for it: of the web or of a person, no others."""
import re
import subprocess

import quirnote

ADDRESS = re.compile(r"(?:https?://|mailto:)[^\s<>\"`{}|\\^]+|www\.[^\s<>\"`{}|\\^]+"
                     r"|(?<![\w.+-])[\w.+-]{1,64}@[\w-]{1,63}(?:\.[\w-]{1,63})+", re.IGNORECASE)
SECONDS_TO_FAIL = 1


def trimmed(address):
    """Without the marks that end a sentence, and brackets that are open before it."""
    while address and (address[-1] in ".,;:!?'*_’”»" or address[-1] in ")]" and
                       address.count(address[-1]) > address.count({")": "(", "]": "["}[address[-1]])):
        address = address[:-1]
    return address


def address_at_caret():
    text, at = quirnote.variable("SELECTED_TEXT").strip(), 0
    if not text:
        text, at = quirnote.caret_in_line()
    for found in ADDRESS.finditer(text):
        address = trimmed(found[0])
        if found.start() <= at <= found.start() + len(address):
            return address
    return quirnote.tip("There is no address of the web or of mail at the caret.")


address = address_at_caret()
if "@" in address and ":" not in address:
    address = "mailto:" + address
elif address[:4].lower() == "www.":
    address = "https://" + address
address = quirnote.percent(address, "-._~:/?#[]@!&*+,;=%()")
program = quirnote.need("xdg-open", "xdg-utils")
process = subprocess.Popen([program, address], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL, start_new_session=True)
try:
    if process.wait(SECONDS_TO_FAIL):
        quirnote.tip("The desktop has no program that opens " + address)
except subprocess.TimeoutExpired:
    pass  # it shows the page
