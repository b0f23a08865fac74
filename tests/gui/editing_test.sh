# A file is opened, edited with keys and mouse, undone, saved and compared.
with_large_letters
printf 'alpha\nbe\ngamma\n' >file.txt
edit file.txt

# Cells are 29 by 59 pixels; the text begins right below a menu bar of about 20.
column_x() { echo $((4 + $1 * 29)); }
row_y() { echo $((24 + $1 * 59 + 29)); }
click_at() { click "$(column_x "$2")" "$(row_y "$1")" "${@:3}"; }

# Keys go into the text, and out again.
keys ctrl+End
type_text 'Delta!'
expect_saved file.txt $'alpha\nbe\ngamma\nDelta!\n'
keys ctrl+z ctrl+z ctrl+z ctrl+z ctrl+z ctrl+z ctrl+z ctrl+s
expect_file file.txt $'alpha\nbe\ngamma\n'

# A rectangle over a short line, selected with the mouse; what is typed goes to all lines.
xdotool keydown alt
drag "$(column_x 1)" "$(row_y 0)" "$(column_x 3)" "$(row_y 2)"
xdotool keyup alt
type_text 'X'
expect_saved file.txt $'aXha\nbX\ngXma\n'
keys ctrl+z ctrl+s
expect_file file.txt $'alpha\nbe\ngamma\n'

# So does a quick tap of Alt on a selection.
drag "$(column_x 2)" "$(row_y 0)" "$(column_x 1)" "$(row_y 2)"
expect_primary $'pha\nbe\ng'
keys shift+Right alt
type_text 'X'
expect_saved file.txt $'alXpha\nbeX\ngaXmma\n'
keys ctrl+z ctrl+s
expect_file file.txt $'alpha\nbe\ngamma\n'

# A double click selects a word, copying puts it on the clipboard, pasting brings it back.
click_at 2 2 1 2
keys ctrl+c
expect_clipboard gamma
# Programs look for a format by its name; ours alone knows rectangles by the last one.
for format in 'text/plain;charset=utf-8' UTF8_STRING text/plain STRING TEXT; do
  [[ $(xclip -o -selection clipboard -t "$format") == gamma ]]
done
formats=$(xclip -o -selection clipboard -t TARGETS | grep -v '^[A-Z]')
[[ $formats == $'text/plain;charset=utf-8\ntext/plain\napplication/x-quirnote-pboard' ]]
keys ctrl+Home ctrl+v Return ctrl+s
expect_file file.txt $'gamma\nalpha\nbe\ngamma\n'

# The middle button pastes what was selected last.
click_at 1 2 1 2
expect_primary alpha
click_at 2 2 2
expect_saved file.txt $'gamma\nalpha\nbealpha\ngamma\n'

# Quitting with unsaved changes asks; Escape keeps the program, and the changes.
type_text 'unsaved'
keys ctrl+q
answer Escape
wait_window 'file.txt'
is_running
expect_saved file.txt $'gamma\nalpha\nbealphaunsaved\ngamma\n'
quit
