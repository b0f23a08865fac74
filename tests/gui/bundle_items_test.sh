# Snippets by their letters, fields, the menu for ties, gestures, macros, and macros in batch mode.
bundle=$XDG_DATA_HOME/Quirnote/Bundles/Test.qnbundle
mkdir -p "$bundle/Snippets"
number=0
# item NAME KEYS CONTENT
item() {
  number=$((number + 1))
  printf '<plist><dict><key>name</key><string>%s</string><key>uuid</key><string>%s</string>
    %s<key>content</key><string>%s</string></dict></plist>' "$1" \
    "00000000-0000-4000-8000-00000000000$number" "$2" "$3" >"$bundle/Snippets/$number.qnSnippet"
}
printf '<plist><dict><key>name</key><string>Test</string>
  <key>uuid</key><string>00000000-0000-4000-8000-000000000000</string></dict></plist>' >"$bundle/info.plist"
item First '<key>tabTrigger</key><string>tie</string>' 'one'
item Second '<key>tabTrigger</key><string>tie</string>' 'two'
item Pair '<key>tabTrigger</key><string>pair</string>' '&lt;${1:a}|${1/./\u$0/}|${2:b}&gt;$0'
item Stroke '<key>mouseGesture</key><string>DR</string>' 'stroke'
item Key '<key>keyEquivalent</key><string>^@k</string>' 'key'

with_defaults '<key>WynDefaultBundleForNewBundleItems</key>
  <string>00000000-0000-4000-8000-000000000000</string>'

# A tie is settled by its number; Escape leaves the letters.
printf '' >file.txt
start_editor file.txt
wait_window 'file.txt'
type_text 'tie'
keys Tab 2
type_text ' '
keys ctrl+super+k
type_text ' tie'
keys Tab Escape ctrl+s
expect_file file.txt 'two key tie'

# Fields and their mirrors, forth and back; a look elsewhere ends nothing.
keys ctrl+a
type_text 'pair'
keys Tab
type_text 'xy'
keys Tab
type_text 'z'
keys ctrl+Home shift+Tab
type_text 'q'
keys Tab Tab
type_text '!'
keys ctrl+s
expect_file file.txt '<q|Q|z>!'

# The right button draws; without a stroke it opens the menu, which Escape closes.
keys ctrl+a Delete
xdotool mousemove --window "$window" 300 200 mousedown 3 sleep 0.03 mousemove --window "$window" 300 250 \
  sleep 0.03 mousemove --window "$window" 302 290 sleep 0.03 mousemove --window "$window" 380 292 \
  sleep 0.03 mouseup 3
keys ctrl+s
expect_file file.txt stroke
click 300 200 3
keys Escape
type_text '.'
keys ctrl+s
expect_file file.txt stroke.

# Recorded, played and taken back as one step.
keys ctrl+a Delete ctrl+alt+m
type_text 'ab'
keys Return ctrl+alt+m ctrl+alt+shift+m ctrl+s
expect_file file.txt $'ab\nab\n'
keys ctrl+z ctrl+s
expect_file file.txt $'ab\n'

# Where it can't be saved the reason is told, and it is kept.
save_macro() {
  keys ctrl+shift+p
  wait_until is_focused 'Select Bundle Item'
  type_text 'save macro'
  keys Return
  wait_window 'Save Macro'
  type_text "$1"
  keys Return
}
printf 'in the way' >"$bundle/Macros"
save_macro Line
answer Return
rm "$bundle/Macros"
wait_window 'file.txt'
save_macro Line
wait_until grep -q insertNewline "$bundle/Macros/Line.qnMacro"
wait_window 'file.txt'
keys ctrl+alt+shift+m ctrl+s
expect_file file.txt $'ab\nab\n'
: >other.txt
"$editor" --batch --item Line --save other.txt
file_is other.txt $'ab\n'
keys ctrl+q
wait_exit

# What keys have done while they were recorded, batch mode does again.
alphabet=(a b space parenleft quotedbl Return Tab BackSpace Delete Left Up Down shift+Down shift+Right
  ctrl+Right ctrl+shift+Left ctrl+d ctrl+l ctrl+c ctrl+x ctrl+v ctrl+z ctrl+y ctrl+slash ctrl+bracketright
  ctrl+shift+d ctrl+e alt+slash ctrl+alt+c End Home ctrl+End)
for seed in 1 2 3 4 5 6; do
  RANDOM=$seed
  printf 'int ab(int x) {\n\treturn x;\n}\n\none two' | tee a.c >before.c
  start_editor a.c
  wait_window 'a.c'
  pressed=()
  for ((n = 0; n < 30; ++n)); do pressed+=("${alphabet[RANDOM % ${#alphabet[@]}]}"); done
  keys ctrl+Home ctrl+alt+m "${pressed[@]}" ctrl+alt+m ctrl+s ctrl+q
  wait_exit
  python3 -c '
import os, plistlib, sys
defaults = plistlib.load(open(os.environ["XDG_CONFIG_HOME"] + "/Quirnote/Defaults.plist", "rb"))
plistlib.dump(defaults["WynMacroManagerScratchMacro"], open("macro", "wb"))'
  "$editor" --batch --macro macro --save before.c 2>>batch.log
  cmp a.c before.c || { echo "seed $seed: ${pressed[*]}"; diff a.c before.c; false; }
done
