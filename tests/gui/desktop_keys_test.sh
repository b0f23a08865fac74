# What comes between the keyboard and the text: layouts, menus by key, panels, the wheel.
with_defaults '<key>WynTextViewSmoothScrolling</key><false/>'
printf 'one\ntwo\n' >file.txt
edit file.txt

# keycode MODIFIERS CODE: a key by its place on the keyboard, whatever the layout makes of it.
keycode() { xdotool keydown "$1" sleep 0.03 key "$2" sleep 0.03 keyup "$1"; }
key_s=39 key_q=24 key_a=38 key_c=54 key_f=41 key_w=25

# Alt with a letter that nothing is bound to is no text.
keys alt+j ctrl+s
type_text 'A'
expect_saved file.txt $'Aone\ntwo\n'

# A program that types for the user sends the line feed of a text as a key of its own.
type_text $'B\nC'
expect_saved file.txt $'AB\nCone\ntwo\n'
keys ctrl+z ctrl+z ctrl+z

# The third level of a layout is text; Ctrl means the Latin letter on a key of another script.
setxkbmap de
keycode ISO_Level3_Shift $key_q
expect_saved file.txt $'A@one\ntwo\n'
setxkbmap ru,us
xdotool key $key_q
keycode ctrl $key_s
expect_file file.txt $'A@йone\ntwo\n'

# Where the layouts have no such letter the key's place decides; a key's own sign wins where it has
# one that isn't in the place of a letter. The same with Alt, whose letters open menus.
for layouts in ru,us ru gr il,de; do
  setxkbmap "$layouts"
  xclip -i -selection clipboard /dev/null
  keycode ctrl $key_a
  keycode ctrl $key_c
  expect_clipboard $'A@йone\ntwo'
  keycode alt $key_f
  xdotool key Down Return
  wait_window 'untitled'
  keycode ctrl $key_w
  wait_no_window 'untitled'
  wait_window 'file.txt'
done
setxkbmap us

# Copied text is there under the names by which other programs ask for it.
keys ctrl+a ctrl+c
for format in UTF8_STRING 'text/plain;charset=utf-8' text/plain; do
  wait_until eval '[[ $(xclip -o -selection clipboard -t "$format") == $'"'A@йone\ntwo'"' ]]'
done
[[ $(xclip -o -selection clipboard -t TARGETS | sort | uniq -d) == '' ]]
keys ctrl+Home

# A menu opens by Alt with its first letter; its first item is New.
keys alt+f Down
wait_until xdotool search --onlyvisible --class quirnote
sleep 0.3
keys Return
wait_window 'untitled'
type_text 'e'
keys ctrl+shift+s
wait_window 'Save As'
keys ctrl+a
type_text "$PWD/new.txt"
keys Return
expect_file new.txt 'e'
wait_window 'new.txt'
keys ctrl+w
wait_no_window 'new.txt'

# The wheel scrolls three lines a step, and a triple click selects the line.
wait_window 'file.txt'
seq 200 >lines.txt
keys ctrl+a
xclip -i -selection clipboard lines.txt
keys ctrl+v ctrl+Home
click 300 300 5 4
click 60 30 1 3
type_text 'X'
expect_saved file.txt "$(seq 12 && echo X14 && seq 15 200)"$'\n'
quit
