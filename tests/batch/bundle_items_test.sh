# Bundle items by name, what a run would change, what a key means, and items that are no good.
program=$1
bundle=$XDG_DATA_HOME/Quirnote/Bundles/Test.qnbundle
mkdir -p "$bundle/Snippets" "$bundle/Macros"
number=0

fail() {
  echo "$*" >&2
  exit 1
}
# item KIND NAME: the rest of the property list comes from standard input.
item() {
  number=$((number + 1))
  {
    printf '<plist><dict><key>name</key><string>%s</string>' "$2"
    printf '<key>uuid</key><string>00000000-0000-4000-8000-%012d</string>' "$number"
    cat
    printf '</dict></plist>'
  } >"$bundle/$1s/$number.qn$1"
}
snippet() { item Snippet "$1" <<<"<key>content</key><string>$2</string>${3-}"; }
macro() { item Macro "$1" <<<"<key>commands</key><array>$2</array>"; }
step() { printf '<dict><key>command</key><string>%s</string><key>argument</key>%s</dict>' "$1" "$2"; }
# run STATUS ARGUMENTS...: leaves standard output in ./out and standard error in ./err.
run() {
  local expected=$1 status=0
  shift
  timeout 60 "$program" --batch "$@" >out 2>err </dev/null || status=$?
  [[ $status == "$expected" ]] || fail "status $status instead of $expected: $* : $(<err)"
}
is() { printf -- "$2" | cmp - "$1" || fail "$1 is: $(head -c 1000 "$1")"; }
uuid() { printf '00000000-0000-4000-8000-%012d' "$1"; }

cat >"$bundle/info.plist" <<'XML'
<plist><dict><key>name</key><string>Test</string>
<key>uuid</key><string>00000000-0000-4000-8000-000000000000</string></dict></plist>
XML
key='<key>keyEquivalent</key><string>~@k</string><key>scope</key><string>'
snippet Angle '&lt;${1:x}|$1&gt;$0'                                       # 1
snippet Twice 'all' "$key"'source</string>'                               # 2
snippet Twice 'json' "$key"'source.json</string>'                         # 3
snippet Twice 'text' "$key"'text</string>'                                # 4
macro Fill "$(step insertSnippet: '<dict><key>content</key><string>[$1,$1]</string></dict>')$(
  step insertText: '<string>ab</string>')"                                # 5

# By name, by UUID, as often as wanted; a name that several have is that which fits best.
printf 'a\nb\n' >file
printf '{}\n' >file.json
run 0 --item Angle --item "$(uuid 5)" --repeat 2 --print text file
is out '<[ab[ab,ab],ab]|x>a\nb\n'
run 0 --item Twice --print text file.json
is out 'json{}\n'
run 0 --item Nothing --print text file
is out 'a\nb\n'
is err 'quirnote: Nothing: no item has this name\nbeep: Nothing\n'
run 3 --item Nothing --save file

macro Unknown "$(step insertText: '<string>x</string>')$(step noSuchThing: '<string>x</string>')"
run 3 --item Unknown --save file
grep -q 'Test: Unknown: commands: step 1: there is no action noSuchThing:' err || fail "$(<err)"

# What would be changed is shown or told by the exit status, and nothing is written.
run 0 --item Fill --diff file
is out '--- a/file\n+++ b/file\n@@ -1,2 +1,2 @@\n-a\n+[ab,ab]a\n b\n'
cp file patched && patch -s patched out
run 0 --item Fill --print text file
cmp out patched
printf 'a' >short
run 0 --item Fill --diff short
is out '--- a/short\n+++ b/short\n@@ -1,1 +1,1 @@\n-a\n\\ No newline at end of file\n+[ab,ab]a\n\\ No newline at end of file\n'
run 1 --check --item Fill file
run 0 --check file file.json
run 0 --diff file
is out ''
is file 'a\nb\n'

# What a key does: the items with selector and score, the key bindings, the menu, or text.
run 0 --explain-key '@~k' 0:0 file.json
grep -q '^Result: Twice$' out || fail "$(<out)"
[[ $(grep -o 'for [a-z.]*' out) == $'for source.json\nfor source\nfor text' ]] || fail "$(<out)"
for row in '@z|undoTyping:, by the menu Edit > Undo' '~y|yank:, by the key bindings' \
  'q|what the key types, if it types anything'; do
  run 0 --explain-key "${row%%|*}" 0:0 file
  grep -qxF "Result: ${row#*|}" out || fail "$row: $(<out)"
done

# Items that are no good are told with their names; the text stays, or is one undo away.
macro Self "$(step executeBundleItem: "<string>$(uuid 7)</string>")$(step insertText: '<string>s</string>')"
macro Ping "$(step insertText: '<string>p</string>')$(step executeBundleItem: "<string>$(uuid 9)</string>")"
macro Pong "$(step insertText: '<string>q</string>')$(step executeBundleItem: "<string>$(uuid 8)</string>")"
macro Types '<string>x</string><array/><dict/><dict><key>command</key><array/></dict>'"$(
  step insertText: '<array><string>x</string></array>')$(step goToLineNumber: '<string>x</string>')"
snippet Itself '${1:a$1}'
snippet Empty '${1:abc}${1/()/-/g}'
snippet Forever '${1:aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa!}|${1/(a|aa|aaa)+$/x/}'
snippet Torn '${1:a'
item Snippet Fields < <(printf '<key>content</key><string>' && seq -f '${%.0f:a}' 1 1000000 | tr -d '\n' && printf '</string>')
item Snippet Nested < <(printf '<key>content</key><string>' && seq -f '${%.0f:' 1 10000 | tr -d '\n' && printf 'x' &&
  printf '}%.0s' {1..10000} && printf '</string>')
item Macro Long < <(printf '<key>commands</key><array>' &&
  yes '<dict><key>command</key><string>moveRight:</string></dict>' | head -n 1000000 && printf '</array>')
cat >undo <<'XML'
<plist><array><dict><key>command</key><string>undo:</string></dict></array></plist>
XML
for row in 'Self|plays itself' 'Ping|plays itself' 'Types|' 'Itself|recursive' 'Empty|' 'Forever|too long' \
  'Torn|Torn' 'Fields|Fields' 'Nested|Nested' 'Long|'; do
  run 0 --item "${row%%|*}" --macro undo --print text file
  is out 'a\nb\n'
  grep -q "${row#*|}" err || fail "$row: $(head -c 1000 err)"
  [[ $(wc -l <err) -lt 10 ]] || fail "$row is told too often"
done
run 0 --item Forever --print text file
is out 'aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa!|aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa!a\nb\n'

# Bindings of a thousand keys one after the other.
{
  printf '{ "@~k" = { %.0s' {1..1000}
  printf '"x" = "undo:"; '
  printf '}; }%.0s' {1..1000}
} >"$XDG_DATA_HOME/Quirnote/KeyBindings.dict"
run 0 --explain-key ~y 0:0 file
grep -q '^Result: yank:' out || fail "$(<out) $(<err)"
