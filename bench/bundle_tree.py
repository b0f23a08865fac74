"""Makes a folder of bundles, always the same: what somebody has who collects them for years."""

import plistlib
import uuid
from pathlib import Path

BUNDLES = 200
# Of each bundle: 50 items, so 10,000 in all.
KINDS = (("Commands", "qnCommand", 16), ("DragCommands", "qnDragCommand", 1),
         ("Macros", "qnMacro", 3), ("Snippets", "qnSnippet", 24), ("Syntaxes", "qnLanguage", 1),
         ("Preferences", "qnPreferences", 4), ("Templates", "qnTemplate", 1))
RULES = 60  # of a grammar


def identifier(*parts):
    return str(uuid.uuid5(uuid.NAMESPACE_URL, "/".join(map(str, parts)))).upper()


def grammar(bundle):
    rules = [{"name": f"keyword.control.n{n}.b{bundle}", "match": rf"\b(word{n}|other{n})\b",
              "captures": {"1": {"name": f"support.word.n{n}"}}} for n in range(RULES)]
    return {"scopeName": f"source.b{bundle}", "fileTypes": [f"b{bundle}", f"c{bundle}"],
            "firstLineMatch": rf"^#!.*\blang{bundle}\b", "patterns": rules,
            "foldingStartMarker": r"\{\s*$", "foldingStopMarker": r"^\s*\}"}


def content(kind, bundle, n):
    return {
        "Commands": {"command": "#!/bin/sh\n" + "echo line of a command\n" * 20,
                     "input": "selection", "output": "replaceSelectedText"},
        "DragCommands": {"command": "echo", "draggedFileExtensions": ["png", "jpg", "gif"]},
        "Macros": {"commands": [{"command": "moveToEndOfLine:"}, {"command": "deleteBackward:"}]},
        "Snippets": {"content": "for (${1:i}; $2; $3) {\n\t$0\n}", "tabTrigger": f"trig{n}"},
        "Syntaxes": grammar(bundle) if kind == "Syntaxes" else None,
        "Preferences": {"settings": {"increaseIndentPattern": r"^.*\{[^}\"']*$",
                                     "shellVariables": [{"name": f"QN_V{n}", "value": "// "}]}},
        "Templates": {"command": "echo", "extension": "txt"},
    }[kind]


def write(path, dictionary):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(plistlib.dumps(dictionary))


def make_bundle(folder, bundle):
    home = folder / f"Bundle number {bundle}.qnbundle"
    ordering = []
    for kind, extension, count in KINDS:
        for n in range(count):
            name = f"Something for {kind} {n} / Selection"
            own = identifier(bundle, kind, n)
            ordering.append(own)
            item = {"uuid": own, "name": name, **content(kind, bundle, n)}
            if kind not in ("Syntaxes", "Templates"):
                item["scope"] = f"source.b{bundle} - comment.block, text.b{bundle} string.quoted"
            if kind == "Commands" and n < 8:
                item["keyEquivalent"] = "^@" + "abcdefgh"[n]
            path = home / kind / f"Item {n}.{extension}"
            write(path / "info.plist" if kind == "Templates" else path, item)
    write(home / "info.plist", {
        "uuid": identifier(bundle), "name": f"Bundle number {bundle}", "ordering": ordering,
        "mainMenu": {"items": ordering, "submenus": {}, "excludedItems": []}})


def make_tree(folder: Path):
    """200 bundles with 10,000 items in the folder, unless it is there."""
    if folder.exists():
        return
    part = folder.with_suffix(".part")
    for bundle in range(BUNDLES):
        make_bundle(part, bundle)
    part.rename(folder)
