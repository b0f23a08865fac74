# Templates by --item: what they make of an untitled document, and when they can't.
program=$1
bundle=$XDG_DATA_HOME/Quirnote/Bundles/Test.qnbundle

fail() {
  echo "$*" >&2
  exit 1
}
# template NAME COMMAND: makes C files.
template() {
  mkdir -p "$bundle/Templates/$1.qnTemplate"
  cat >"$bundle/Templates/$1.qnTemplate/info.plist" <<XML
<plist><dict><key>name</key><string>$1</string><key>uuid</key><string>T-$1</string>
<key>extension</key><string>c</string><key>command</key><string>$2</string></dict></plist>
XML
}
# run STATUS ARGUMENTS...: leaves standard output in ./out and standard error in ./err.
run() {
  local expected=$1 status=0
  shift
  timeout 60 "$program" --batch "$@" >out 2>err </dev/null || status=$?
  [[ $status == "$expected" ]] || fail "status $status instead of $expected: $* : $(<err)"
}
is() { printf -- "$2" | cmp - "$1" || fail "$1 is: $(cat -A "$1")"; }

mkdir -p "$bundle"
cat >"$bundle/info.plist" <<'XML'
<plist><dict><key>name</key><string>Test</string><key>uuid</key><string>TEST</string></dict></plist>
XML
template Main 'printf "int main() {\n\t\n}\n" > "$QN_NEW_FILE"'
template Pair 'touch "$QN_NEW_FILE"; touch "$QN_NEW_FILE_DIRECTORY/b.h"; echo "$QN_NEW_FILE_DIRECTORY/b.h"'
template None 'echo no luck'
printf 'kept' >kept
export TMPDIR=$PWD

for item in Main T-Main; do
  run 0 --strict --item "$item" --print text
  is out 'int main() {\n\t\n}\n'
done
run 0 --item Main --diff
is out '--- a/untitled\n+++ b/untitled\n@@ -0,0 +1,3 @@\n+int main() {\n+\t\n+}\n'
run 1 --item Main --check
run 0 --item Main --save-as made.c --print scopes
is made.c 'int main() {\n\t\n}\n'
grep -q '	source.c ' out || fail "no C: $(<out)"

while IFS='|' read -r item file reason; do
  run 1 --strict --item "$item" ${file:+"$file"}
  grep -qF "quirnote: $item: $reason" err || fail "$item: $(<err)"
done <<'ROWS'
Main|kept|a template makes a new document; name no file
T-Main|kept|a template makes a new document; name no file
Pair||it makes several files, which windows show
None||The Template Created No File: None: no luck
ROWS
run 1 --strict --item Main --item Main
is kept 'kept'
