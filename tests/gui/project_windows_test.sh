# A folder in a window with tabs: opened by its name, tabs by mouse and keys, closing and quitting.
mkdir -p work/one work/two
for file in one/a one/b two/a two/c; do printf '%s' "$file" >"work/$file.txt"; done
start_editor work work/one/a.txt work/one/b.txt work/two/a.txt work/two/c.txt
wait_window '^c.txt — work'
bar=$window

# The bar stands below the menu bar, beside the tree of 240 pixels; its tabs are about 100 pixels
# wide.
tab_y=38
wait_until shows 'two/c'
click 281 $tab_y
wait_window '^a.txt — work'
wait_until shows 'one/a'
keys ctrl+Next
wait_window '^b.txt — work'

# Moved beyond the last tab; the tab before it is two/a then, and Ctrl+PageDown goes round.
drag 381 $tab_y 661 $tab_y
keys ctrl+Next
wait_window '^a.txt — work'
wait_until shows 'one/a'
keys ctrl+Prior ctrl+Prior
wait_window '^c.txt — work'

# The middle button closes, Ctrl+Shift+T opens again, Ctrl+W asks about changes.
click 281 $tab_y 2
keys ctrl+Next ctrl+Next
wait_window '^a.txt — work'
wait_until shows 'two/a'
keys ctrl+shift+t
wait_until shows 'one/a'
keys End
type_text '!'
keys ctrl+w
answer Return
expect_file work/one/a.txt 'one/a!'

# A file of the folder is opened in its window, and all changes are asked about when quitting.
wait_window ' — work'
type_text 'X'
keys ctrl+Next
type_text 'Y'
keys ctrl+q
answer Return
wait_exit
grep -q '^X' work/*/*.txt
grep -q '^Y' work/*/*.txt
