# Commands in the window: the panel of filters, a tool tip, the question whether to kill one, and
# keys that are typed while one runs.
source "$gui/../command_bundle.sh"
mkdir "$bundle/DragCommands"
# keyed NAME KEY OUTPUT SCRIPT
keyed() {
  command_item "$1" "$3" "$4" "
    <key>keyEquivalent</key><string>$2</string><key>fallbackInput</key><string>word</string>"
}
keyed Tip '~@1' showAsTooltip 'echo "a tool tip of"; cat; echo; echo "two <b> lines"'
keyed Slow '~@2' replaceSelectedText 'echo $$ >pid; tr a-z A-Z; until [ -e go ]; do sleep 0.05; done'
keyed New '~@3' openAsNewDocument 'echo a new document'
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
