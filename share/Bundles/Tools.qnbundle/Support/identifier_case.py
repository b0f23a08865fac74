"""identifier_case.py snake|constant|kebab|camel|pascal: each line of the input as an identifier."""
import re
import sys

import quirnote

JOINED = {"snake": ("_", str.lower, str.lower), "constant": ("_", str.upper, str.upper),
          "kebab": ("-", str.lower, str.lower),
          "camel": ("", str.lower, lambda w: w[:1].upper() + w[1:].lower()),
          "pascal": ("", lambda w: w[:1].upper() + w[1:].lower(),
                     lambda w: w[:1].upper() + w[1:].lower())}


def words_of(text):
    """parseHTTPBody2 has the words parse, HTTP and Body2."""
    for part in re.split(r"[\W_]+", text):
        word = ""
        for at, sign in enumerate(part):
            after = part[at + 1:at + 2]
            if word and sign.isupper() and (not word[-1].isupper() or after.islower()):
                yield word
                word = ""
            word += sign
        if word:
            yield word


def converted(line):
    found = re.search(r"[^\W_](?:.*[^\W_])?", line)
    if not found:
        return line
    between, first, others = JOINED[sys.argv[1]]
    words = list(words_of(found[0]))
    named = between.join([first(words[0]), *map(others, words[1:])])
    return line[:found.start()] + named + line[found.end():]


quirnote.write("\n".join(map(converted, quirnote.read().split("\n"))))
