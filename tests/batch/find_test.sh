# Find and replace on real files, beside sed and perl.
program=$1
macro() {
  python3 - "$@" <<'END'
import json, plistlib, sys
steps = [{"command": "findWithOptions:", "argument": json.loads(a)} if a.startswith("{") else {"command": a}
         for a in sys.argv[1:]]
plistlib.dump(steps, sys.stdout.buffer)
END
}
replace() { # FIND REPLACEMENT EXTRA: on standard output what becomes of the file `text`
  macro "{\"findString\": $1, \"replaceString\": $2, \"action\": \"replaceAll\",
          \"replaceAllScope\": \"document\" $3}" >replace.plist
  timeout 100 "$program" --batch --macro replace.plist --print text text
}
cat /usr/include/*.h >text
pattern=', "regularExpression": true'

replace '"int"' '"INTEGER"' '' | cmp - <(sed 's/int/INTEGER/g' text)
replace '"Int"' '""' ', "ignoreCase": true' | cmp - <(sed 's/int//Ig' text)
replace '".*"' '"[$0]"' "$pattern" | cmp - <(perl -0pe 's/.*/[$&]/g' text)
replace '"^"' '"> "' "$pattern" | cmp - <(perl -0pe 's/^/> /mg' text)
replace '"^[ \\t]*#[ \\t]*(\\w+)"' '"@\\U$1\\E"' "$pattern" |
  cmp - <(perl -0pe 's/^[ \t]*#[ \t]*(\w+)/@\U$1\E/mg' text)
replace '"(\\w+)\\((\\w+)\\)"' '"$2\\n$1"' "$pattern" | cmp - <(perl -0pe 's/(\w+)\((\w+)\)/$2\n$1/g' text)
replace '"\n"' '"@"' '' | cmp - <(tr '\n' '@' <text)
replace '"(?m:/\\*.*?\\*/)"' '""' "$pattern" | cmp - <(perl -0pe 's{/\*.*?\*/}{}gs' text)

# Undo takes all of it back, and redo brings it again.
macro '{"findString": "e", "replaceString": "EE\n", "action": "replaceAll", "replaceAllScope": "document"}' \
  undo: >undo.plist
timeout 100 "$program" --batch --macro undo.plist --print text text | cmp - text
macro '{"findString": "e", "replaceString": "EE\n", "action": "replaceAll", "replaceAllScope": "document"}' \
  undo: redo: >redo.plist
timeout 100 "$program" --batch --macro redo.plist --print text text | cmp - <(sed 's/e/EE\n/g' text)

# What was not changed can't be undone; a pattern that would take for ever gives up.
macro '{"findString": "no such text", "action": "replaceAll", "replaceAllScope": "document"}' >none.plist
timeout 100 "$program" --batch --macro none.plist --print state text | grep -q '"canUndo":false'
printf 'a%.0s' {1..5000} >hostile
macro '{"findString": "(a|a)*\\1b", "action": "findNext", "regularExpression": true}' >hostile.plist
timeout 100 "$program" --batch --macro hostile.plist --print state hostile | grep -q '"beeps":0'
