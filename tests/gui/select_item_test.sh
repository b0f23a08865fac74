# Whatever the program does is found by letters of its name, or by its key, and executed.
printf 'one\ntwo\n' >file.c
edit file.c

# wait_open TITLE: until the box has the focus.
wait_open() { wait_until is_focused "$1"; }
file_holds() {
  keys ctrl+s
  file_is file.c "$1"
}

# Letters typed before the box is seen are for it; they find an entry of a menu by its words.
keys ctrl+shift+p
type_text 'move lines down'
wait_open 'Select Bundle Item'
keys Return
wait_until has_focus
wait_until file_holds $'two\none\n'

# Escape leaves everything as it is.
keys ctrl+shift+p
wait_open 'Select Bundle Item'
type_text 'undo'
keys Escape
wait_until has_focus
wait_until file_holds $'two\none\n'

# Other rows are reached by the arrow keys, within bounds, and by the mouse.
keys ctrl+shift+p
wait_open 'Select Bundle Item'
type_text 'upper case'
keys Up Next Prior Return
wait_until has_focus
keys ctrl+z
wait_until file_holds $'two\none\n'

# A snippet goes in at the caret.
keys ctrl+End ctrl+shift+p
wait_open 'Select Bundle Item'
type_text 'while loop'
keys Return
wait_until has_focus
keys ctrl+s
wait_until grep -q while file.c
keys Escape ctrl+a
type_text 'x'
wait_until file_holds $'x\n'

# A key is looked up instead of being performed, and what it does is chosen then.
keys ctrl+shift+p
wait_open 'Select Bundle Item'
type_text 'select by key'
keys Return
wait_open 'Select by Key'
keys Tab BackSpace ctrl+d ctrl+shift+d Return
wait_until has_focus
wait_until file_holds $'x\nx\n'
