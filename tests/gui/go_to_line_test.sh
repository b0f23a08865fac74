# The line to go to is asked for, by key, and typed text goes there.
printf 'one\ntwo\nthree\n' >file.txt
edit file.txt

keys ctrl+g
wait_until is_focused 'Go to Line'
type_text '2:3'
keys Return
wait_until has_focus
type_text 'X'
expect_saved file.txt $'one\ntwXo\nthree\n'

# Escape leaves the caret where it is.
keys ctrl+g
wait_until is_focused 'Go to Line'
keys Escape
wait_until has_focus
type_text 'Y'
expect_saved file.txt $'one\ntwXYo\nthree\n'
