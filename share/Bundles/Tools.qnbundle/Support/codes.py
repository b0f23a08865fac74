"""codes.py entities|url|base64 encode|decode"""
import base64
import binascii
import html
import re
import sys

import quirnote


def to_entities(text):
    from html.entities import codepoint2name
    marks = {"&": "&amp;", "<": "&lt;", ">": "&gt;", '"': "&quot;"}

    def entity(sign):
        if sign in marks or sign < "\x7f" or "\ud800" <= sign <= "\udfff":
            return marks.get(sign, sign)
        name = codepoint2name.get(ord(sign))
        return f"&{name};" if name else f"&#{ord(sign)};"
    return "".join(map(entity, text))


def as_text(data, what):
    try:
        return data.decode("utf-8")
    except UnicodeDecodeError as fault:
        quirnote.tip(f"What the {what} stands for is no text in UTF-8 (byte {fault.start + 1}); "
                     "nothing was changed.")


def from_url(text):
    data = re.sub(rb"%([0-9A-Fa-f]{2})", lambda m: bytes([int(m[1], 16)]),
                  text.encode("utf-8", "surrogateescape"))
    return as_text(data, "URL code")


def to_base64(text):
    coded = base64.b64encode(text.encode("utf-8", "surrogateescape")).decode()
    return "\n".join(coded[at:at + 76] for at in range(0, len(coded), 76))


def from_base64(text):
    text = re.sub(r"\s", "", text).replace("-", "+").replace("_", "/").rstrip("=")
    try:
        return as_text(base64.b64decode(text + "=" * (-len(text) % 4), validate=True), "Base64 code")
    except (binascii.Error, ValueError):
        quirnote.tip("This is no Base64: it holds other characters, or its end is missing.")


ways = {("entities", "encode"): to_entities, ("entities", "decode"): html.unescape,
        ("url", "encode"): quirnote.percent, ("url", "decode"): from_url,
        ("base64", "encode"): to_base64, ("base64", "decode"): from_base64}
given, line_end = quirnote.without_line_end(quirnote.read())
quirnote.write(ways[sys.argv[1], sys.argv[2]](given) + line_end)
