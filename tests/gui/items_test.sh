# Bundle items by real keys: tab triggers and fields, keys with one item and with several, keys of
# several strokes, macros, and the Bundles menu.
bundle=$XDG_DATA_HOME/Quirnote/Bundles/Test.qnbundle
mkdir -p "$bundle/Snippets"
# plist FILE NAME UUID KEYS
plist() {
  printf '<plist><dict><key>name</key><string>%s</string><key>uuid</key><string>%s</string>%s</dict></plist>' \
    "$2" "$3" "$4" >"$bundle/$1"
}
# snippet NAME TEXT KEYS
snippet() {
  plist "Snippets/$1.qnSnippet" "$1" "$1" "<key>content</key><string>$2</string>$3"
  order+="<string>$1</string>"
}
order=
snippet Drawn 'drawn' '<key>mouseGesture</key><string>DR</string>'
snippet Pair '&lt;${1:left}|${2:right}|$1&gt;$0' '<key>tabTrigger</key><string>pp</string>'
snippet First 'one' '<key>tabTrigger</key><string>tt</string><key>keyEquivalent</key><string>~9</string>'
snippet Second 'two' '<key>tabTrigger</key><string>tt</string><key>keyEquivalent</key><string>~9</string>'
snippet Only 'only' '<key>keyEquivalent</key><string>~8</string>'
plist info.plist 'Zebra' Z "<key>mainMenu</key><dict><key>items</key><array>$order</array></dict>"
printf "{ '^x' = { '^u' = 'uppercaseWord:'; }; }" >"$XDG_DATA_HOME/Quirnote/KeyBindings.dict"

: >file
with_large_letters
start_editor file
wait_window '^file'
file_holds() {
  keys ctrl+s
  file_is file "$1"
}
is_open() { [[ $(xdotool getwindowfocus -f getwindowname) == "$1"* ]]; }
differs_from() { screenshot now.png && (($(different_pixels "$1" now.png) > ${2:-0})); }

# Tab expands the trigger; the current field is marked, mirrors follow, and Tab goes from field to
# field and out of the last one.
type_text 'pp'
keys Tab
type_text 'ab'
wait_until file_holds '<ab|right|ab>'
screenshot field.png
keys Tab
wait_until differs_from field.png 100
keys BackSpace shift+Tab
type_text 'c'
keys Tab
type_text 'd'
keys Tab
type_text ' '
keys Tab
wait_until file_holds $'<c|d|c> \t'

# Where several items fit, a digit chooses; Escape leaves the text, and the key is used up.
keys ctrl+a
type_text 'tt'
keys Tab 2
wait_until file_holds 'two'
keys ctrl+a
type_text 'tt'
screenshot before.png
keys Tab
wait_until differs_from before.png 1000
keys Escape
wait_until file_holds 'tt'
keys ctrl+a
for way in 'alt+9 1' 'alt+9 Down Return' 'alt+8' 'alt+9 Escape'; do
  keys $way
done
wait_until file_holds 'onetwoonly'

# From the find bar as well, but for what is typed there.
keys ctrl+f
type_text '8'
keys alt+8
wait_until file_holds 'onetwoonlyonly'
keys Escape

# A binding over two keys; Escape forgets the first, and so does an item's key.
keys ctrl+a
type_text 'x'
keys super+x super+u
wait_until file_holds 'X'
keys ctrl+a
type_text 'y'
keys super+x Escape super+u super+x alt+8 super+u
wait_until file_holds 'yonly'
keys ctrl+shift+p
wait_until is_open 'Select Bundle Item'
type_text 'select by key'
keys Return
wait_until is_open 'Select by Key'
keys super+x super+u Return
wait_until has_focus
wait_until file_holds 'YONLY'

# Strokes of the right button, down and then to the right; a click with it opens the menu.
keys ctrl+a BackSpace
xdotool mousemove --window "$window" 300 200 mousedown 3 sleep 0.03 \
  mousemove --window "$window" 302 260 sleep 0.03 mousemove --window "$window" 302 320 sleep 0.03 \
  mousemove --window "$window" 360 320 sleep 0.03 mousemove --window "$window" 420 322 sleep 0.03 mouseup 3
wait_until file_holds 'drawn'
screenshot before.png
click 300 200 3
wait_until differs_from before.png 5000
keys Escape

# A macro of typing and a snippet with its fields.
keys ctrl+a BackSpace ctrl+alt+m
type_text 'pp'
keys Tab
type_text 'z'
keys Tab Delete Tab Return ctrl+alt+m
wait_until file_holds $'<z||z>\n'
keys ctrl+alt+shift+m
wait_until file_holds $'<z||z>\n<z||z>\n'

# The Bundles menu lists the bundle, with triggers at the right.
keys ctrl+a BackSpace
screenshot before.png
keys alt+b
wait_until differs_from before.png 1000
keys Up Right
wait_until differs_from before.png 20000
keys Down Down Down Down Return
wait_until file_holds 'only'
keys ctrl+q
wait_exit
