# The line to go to is asked for, by key, and typed text goes there.
printf 'one\ntwo\nthree\n' >file.txt
start_editor file.txt
wait_window 'file.txt'
is_asked() { [[ $(xdotool getwindowfocus -f getwindowname) == 'Go to Line'* ]]; }

keys ctrl+g
wait_until is_asked
type_text '2:3'
keys Return
wait_until has_focus
type_text 'X'
keys ctrl+s
expect_file file.txt $'one\ntwXo\nthree\n'

# Escape leaves the caret where it is.
keys ctrl+g
wait_until is_asked
keys Escape
wait_until has_focus
type_text 'Y'
keys ctrl+s
expect_file file.txt $'one\ntwXYo\nthree\n'
