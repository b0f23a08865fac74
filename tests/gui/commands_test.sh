# Commands in the window: the panel of filters, a tool tip, the question whether to kill one, and
# keys that are typed while one runs.
bundle=$XDG_DATA_HOME/Quirnote/Bundles/Test.qnbundle
mkdir -p "$bundle/Commands" "$bundle/DragCommands"
cat >"$bundle/info.plist" <<XML
<plist><dict><key>name</key><string>Test</string>
<key>uuid</key><string>00000000-0000-4000-8000-000000000001</string></dict></plist>
XML
# command_item NAME NUMBER KEY OUTPUT SCRIPT
command_item() {
  cat >"$bundle/Commands/$1.qnCommand" <<XML
<plist><dict><key>name</key><string>$1</string>
<key>uuid</key><string>00000000-0000-4000-8000-00000000001$2</string>
<key>keyEquivalent</key><string>$3</string><key>command</key><string>$5</string>
<key>output</key><string>$4</string><key>fallbackInput</key><string>word</string></dict></plist>
XML
}
command_item Tip 0 '~@1' showAsTooltip 'echo "a tool tip of"; cat; echo; echo "two &lt;b&gt; lines"'
command_item Slow 1 '~@2' replaceSelectedText 'echo $$ >pid; tr a-z A-Z; until [ -e go ]; do sleep 0.05; done'
command_item New 2 '~@3' openAsNewDocument 'echo a new document'
printf 'one\ntwo three\n' >file.txt
start_editor file.txt
wait_window 'file.txt'

# The panel: its history, and another command.
keys ctrl+alt+r
wait_window 'Filter Through Command'
screenshot "${QUIRNOTE_PICTURES:-.}/panel.png"
keys ctrl+a
type_text 'tr a-z A-Z'
keys Return
wait_window 'file.txt'
keys Left ctrl+s
expect_file file.txt $'ONE\nTWO THREE\n'
keys ctrl+z ctrl+s
expect_file file.txt $'one\ntwo three\n'

# A tool tip stands below the caret until a key is pressed.
screenshot_all() { import -window root "$1"; }
tip_shows() { screenshot_all now.png && [[ $(different_pixels before.png now.png) -gt 800 ]]; }
tip_is_gone() { ! tip_shows; }
keys ctrl+Home Down Right
xdotool mousemove --window "$window" 500 400
sleep 0.6
screenshot_all before.png
keys ctrl+alt+1
wait_until tip_shows
screenshot_all "${QUIRNOTE_PICTURES:-.}/tip.png"
keys Escape
wait_until tip_is_gone

# What is typed while a command runs comes after it. Escape asks, and "Cancel" lets it run on.
keys ctrl+Home Right ctrl+alt+2
wait_until test -s pid
type_text '!'
keys Escape
wait_window '^Quirnote$'
screenshot_all "${QUIRNOTE_PICTURES:-.}/alert.png"
keys Escape
wait_no_window '^Quirnote$'
touch go
wait_window 'file.txt'
keys ctrl+s
expect_file file.txt $'ONE!\ntwo three\n'

# Killed, it changes nothing.
rm go pid
keys Down ctrl+alt+2
wait_until test -s pid
keys ctrl+c
wait_window '^Quirnote$'
keys Return
wait_window 'file.txt'
type_text '?'
keys ctrl+s
expect_file file.txt $'ONE!\ntwo ?three\n'

keys ctrl+alt+3
wait_window 'untitled'
keys ctrl+q
wait_exit
