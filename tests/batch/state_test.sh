# The state as JSON: its keys, in their types.
program=$1
printf 'one\ntwo\n' >file
"$program" --batch --print state file >state
[[ $(wc -l <state) == 1 ]]
python3 - state <<'PYTHON'
import json
import sys

state = json.load(open(sys.argv[1], encoding="utf-8"))
types = {
    "lines": int, "viewLines": int, "selection": dict, "memento": int, "canUndo": bool,
    "canRedo": bool, "isDocumentEdited": bool, "fileEncoding": str, "lineEnding": str,
    "byteOrderMark": bool, "tabSize": int, "softTabs": bool, "softWrap": bool, "beeps": int,
    "alerts": list, "bookmarks": list, "foldings": list, "language": (str, type(None)),
}
assert list(state) == list(types), list(state)
for key, kind in types.items():
    assert isinstance(state[key], kind), key
assert list(state["selection"]) == ["first", "last", "current", "columnMode"]
for mark in ("first", "last", "current"):
    assert state["selection"][mark] == {"line": 0, "column": 0, "offset": 0}
assert state["lines"] == 3 and state["lineEnding"] == "lf"
PYTHON

# Beeps and alerts are those of the file, with the answer that each alert got.
cat >macro <<'XML'
<plist><array>
<dict><key>command</key><string>undo:</string></dict>
<dict><key>command</key><string>insertText:</string><key>argument</key><string>x</string></dict>
<dict><key>command</key><string>revertDocumentToSaved:</string></dict>
</array></plist>
XML
cp file other
"$program" --batch --macro macro --print state file other 2>/dev/null >state
"$program" --batch --macro macro --print text --print state \
  --answer 'Do you want to revert to the saved version of “file”?=Revert' file 2>/dev/null >reverted
python3 - state reverted <<'PYTHON'
import json
import sys

lines = open(sys.argv[1], encoding="utf-8").read().split("\n")
assert lines[0] == "==> file <==" and lines[2] == "==> other <=="
for line in (lines[1], lines[3]):
    state = json.loads(line)
    assert state["beeps"] == 1 and len(state["alerts"]) == 1
    assert set(state["alerts"][0]) == {"title", "text", "answer"}
    assert state["alerts"][0]["answer"] == "Cancel" and state["isDocumentEdited"]
text, state = open(sys.argv[2], encoding="utf-8").read().rsplit("\n", 2)[0:2]
assert text == "one\ntwo", text
assert not json.loads(state)["isDocumentEdited"]
PYTHON
