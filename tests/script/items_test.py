#!/usr/bin/env python3
"""What holds for all items that ship: names, identifiers, keys, menus, what comes of templates, and that
docs/snippets.md and docs/commands.md list them. Usage: items_test.py PROGRAM [--update], which writes the
lists anew."""
import ast
import json
import os
import pathlib
import plistlib
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parents[2]
MARK = "<!-- The list, by tests/script/items_test.py -->\n"
SMALL = "a an and as at before by for in of over per the to with".split()
MODIFIERS = {"@": "Ctrl", "~": "Alt", "$": "Shift", "^": "Super"}
FUNCTION_KEYS = {chr(0xF703 + number): f"F{number}" for number in range(1, 13)}
FOLDERS = {"Commands": "commands", "Snippets": "snippets", "Macros": "macros", "Templates": "templates"}
SEPARATOR = "-" * 36
WRITES = {"temporary": "Writes temporary files.", "folder": "Writes into the folder.", "anywhere": "May write anywhere."}


def read_bundles():
    """Bundle names with their info.plist and their items, a list for each folder."""
    for folder in sorted((ROOT / "share/Bundles").glob("*.qnbundle")):
        items = {kind: [] for kind in FOLDERS}
        for kind in FOLDERS:
            for file in sorted((folder / kind).glob("*")):
                item = plistlib.loads((file / "info.plist" if file.is_dir() else file).read_bytes())
                items[kind].append((file, item))
        yield folder.stem, plistlib.loads((folder / "info.plist").read_bytes()), items


def normalised(key):
    return frozenset(key[:-1]), key[-1]


def taken_keys():
    bindings = (ROOT / "share/KeyBindings.dict").read_text(encoding="utf-8")
    keys = re.findall(r"^\s*'([^']+|[^'\n]*')' = ", bindings, re.MULTILINE)
    menus = [plistlib.loads((ROOT / "share/menus.plist").read_bytes())]
    while menus:
        entry = menus.pop()
        menus += entry if isinstance(entry, list) else [v for v in entry.values() if isinstance(v, (list, dict))]
        if isinstance(entry, dict) and entry.get("key"):
            keys.append(entry["key"])
    return {normalised(key) for key in keys}


def menu_order(info):
    """The identifiers of the menu from top to bottom."""
    menu = info.get("mainMenu", {})
    for uuid in menu.get("items", []):
        group = menu.get("submenus", {}).get(uuid)
        yield from [uuid] if group is None else group["items"]


def made_by_item(program, item):
    """What batch mode makes of an untitled document, by the template."""
    variables = 'plist:({ variable = QN_FULLNAME; value = "Ann & \\\\1 \\"Example\\""; })'
    with tempfile.TemporaryDirectory() as home:
        done = subprocess.run([program, "--batch", "--strict", "--set", f"WynShellVariables={variables}", "--item",
                               item["uuid"], "--print", "text"], capture_output=True, check=False, timeout=60,
                              env={**os.environ, "HOME": home, "XDG_DATA_HOME": home, "XDG_CONFIG_HOME": home})
    return (done.stdout if done.returncode == 0 else done.stderr).decode("utf-8", "replace")


def without_uuids(text):
    return re.sub("[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}", "UUID", text)


def made_from(folder, item, name):
    """What a template makes of a file of that name."""
    with tempfile.TemporaryDirectory() as where:
        file = os.path.join(where, name + "." + item["extension"])
        environment = {**os.environ, "QN_NEW_FILE": file, "QN_NEW_FILE_DIRECTORY": where,
                       "QN_NEW_FILE_BASENAME": name, "QN_FULLNAME": "Ann & \\1 \"Example\""}
        done = subprocess.run(["bash", "-c", item["command"]], cwd=folder, env=environment,
                              capture_output=True, check=False, timeout=60)
        if done.returncode or done.stdout or done.stderr:
            raise ValueError(f"exit status {done.returncode}: {done.stderr.decode()}")
        text = pathlib.Path(file).read_text(encoding="utf-8")
    if "${QN_" in text or not text.endswith("\n"):
        raise ValueError("not filled in:\n" + text)
    return text


def check_shell(text):
    subprocess.run(["bash", "-n"], input=text.encode(), check=True, timeout=60)


def check_page(text):
    if re.search(r"&(?!\w+;)", text):
        raise ValueError("an ampersand in it is no entity")


def check_make(text):
    subprocess.run(["make", "-n", "-f", "-", "clean"], input=text.encode(), check=True, timeout=60,
                   stdout=subprocess.DEVNULL)
    if re.search("^program := .*[^a-z0-9._\n-]", text, re.MULTILINE):
        raise ValueError("the program's name is more than one word")


def check_guard(text):
    for name in re.findall(r"^#(?:ifndef|define) (.*)$", text, re.MULTILINE):
        if not re.fullmatch("[A-Za-z_][A-Za-z0-9_]*", name):
            raise ValueError(f"no identifier: {name}")


CHECKS = {"py": ast.parse, "sh": check_shell, "json": json.loads, "html": check_page,
          "mk": check_make, "h": check_guard, "hpp": check_guard,
          **dict.fromkeys(("xml", "plist", "qnLanguage", "qnSnippet"), xml.etree.ElementTree.fromstring)}


def faults_of_templates(program, templates):
    for folder, item in templates:
        for name in ("untitled", "2 über-names & \"more\""):
            try:
                made = made_from(folder, item, name)
                CHECKS.get(item["extension"], str)(made)
                by_item = made_by_item(program, item) if name == "untitled" else made
                if without_uuids(by_item) != without_uuids(made):
                    raise ValueError(f"--item makes {by_item!r} instead of {made!r}")
            except Exception as fault:  # whatever a parser of another language finds
                yield f"{folder}: {fault}"


def faults_of_names(bundle, items):
    seen = set()
    for kind, found in items.items():
        for file, item in found:
            name = item["name"]
            if (kind, name) in seen:
                yield f"{file}: there is another {name}"
            seen.add((kind, name))
            if file.stem != name.replace("/", ":").replace(".", "_"):
                yield f"{file}: the name in it is {name}"
            words = re.findall(r"[A-Za-z'-]+", name)
            if any(word[0].islower() and word not in SMALL for word in words) or words[0][0].islower():
                yield f"{file}: {name} is no title"


def key_name(key):
    shift = ["Shift"] if key[-1].isupper() and "$" not in key else []
    return "+".join([MODIFIERS[m] for m in "^@~$" if m in key[:-1]] + shift
                    + [FUNCTION_KEYS.get(key[-1], key[-1].upper())])


def listed(bundle, info, items):
    by_uuid = {item["uuid"]: item for _, item in items["Snippets"] + items["Macros"]}
    lines = [f"## {bundle}", ""]
    order = [by_uuid[uuid] for uuid in menu_order(info) if uuid in by_uuid]
    for title, key in (("Snippet", "content"), ("Macro", "commands")):
        rows = [item for item in order if key in item]
        if not rows:
            continue
        has_trigger = key == "content"
        lines += ([f"| Type, then Tab | {title} |", "|---|---|"] if has_trigger else
                  [f"| Key | {title} |", "|---|---|"])
        for item in rows:
            trigger = item.get("tabTrigger", "")
            pressed = key_name(item["keyEquivalent"]) if item.get("keyEquivalent") else ""
            where = ", ".join(filter(None, (f"`{trigger}`" if trigger else "", pressed)))
            lines.append(f"| {where} | {item['name']} |".replace("|  |", "| |"))
        lines.append("")
    if items["Templates"]:
        lines += ["Templates: " + ", ".join(item["name"] for _, item in items["Templates"]) + ".", ""]
    return lines


def faults_of_commands(commands):
    for file, item in commands:
        if not item.get("keyEquivalent") or not item.get("help", "").endswith("."):
            yield f"{file}: it needs a key, and a help text of whole sentences"
        script = item["command"]
        if "sudo" in script or re.search(r"\beval\b", script):
            yield f"{file}: it asks for another user's rights, or evaluates a text"
        needed = {each["command"] for each in item.get("requiredCommands", [])}
        if not all(each.get("package") for each in item.get("requiredCommands", [])):
            yield f"{file}: it needs programs without saying which package has them"
        if re.search(r"\bqn_(python|report|run)\b", script) and "python3" not in needed:
            yield f"{file}: it needs python3 without saying so"
        if re.match(r"qn_require [a-z]", script):
            yield f"{file}: it asks for a program that belongs in requiredCommands"
        writes = item.get("writesTo", [])
        if re.search(r"\b(qn_temporary_folder|qn_document_file|qn_format|mktemp)\b", script) and "temporary" not in writes:
            yield f"{file}: it writes temporary files without saying so"
        if "qn_run" in script and "anywhere" not in writes:
            yield f"{file}: it runs a document without saying that this may write anywhere"


def help_of(item):
    return " ".join([item["help"], *(WRITES[place] for place in item.get("writesTo", []))])


def listed_commands(bundle, info, items):
    by_uuid = {item["uuid"]: item for _, item in items["Commands"]}
    rows = [f"| {key_name(item['keyEquivalent'])} | {item['name']} | {help_of(item)} |".replace("| | |", "| `|` |")
            for uuid in menu_order(info) if (item := by_uuid.get(uuid))]
    return [f"## {bundle}", "", "| Key | Command | |", "|---|---|---|", *rows, ""] if rows else []


def faults_of_list(name, lines):
    file = ROOT / "docs" / name
    before, mark, _ = file.read_text(encoding="utf-8").partition(MARK)
    whole = before + mark + "\n" + "\n".join(lines).rstrip() + "\n"
    if "--update" in sys.argv:
        file.write_text(whole, encoding="utf-8")
    elif file.read_text(encoding="utf-8") != whole:
        yield f"docs/{name} is not up to date: python3 tests/script/items_test.py PROGRAM --update"


def main():
    faults, uuids, keys, lines, commands = [], {}, taken_keys(), [], []
    if len(keys) < 50:
        faults.append(f"only {len(keys)} keys found in share/")
    for bundle, info, items in read_bundles():
        faults += [*faults_of_names(bundle, items), *faults_of_templates(sys.argv[1], items["Templates"]),
                   *faults_of_commands(items["Commands"])]
        every = [pair for found in items.values() for pair in found]
        for file, item in every:
            if item["uuid"] in uuids:
                faults.append(f"{file}: its uuid is that of {uuids[item['uuid']]}")
            uuids[item["uuid"]] = file
            if item.get("keyEquivalent") and normalised(item["keyEquivalent"]) in keys:
                faults.append(f"{file}: {key_name(item['keyEquivalent'])} has a meaning already")
        in_menu = [uuid for uuid in menu_order(info) if uuid != SEPARATOR]
        for file, item in items["Commands"] + items["Snippets"] + items["Macros"]:
            if in_menu.count(item["uuid"]) != 1:
                faults.append(f"{file}: is in the menu {in_menu.count(item['uuid'])} times")
        commands += listed_commands(bundle, info, items)
        if len(every) > len(items["Commands"]):
            lines += listed(bundle, info, items)
    faults += [*faults_of_list("snippets.md", lines), *faults_of_list("commands.md", commands)]
    print("\n".join(faults) or f"{len(uuids)} items")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
