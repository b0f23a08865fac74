# One box leads to files, lines, symbols and actions; a window without a project has the files of
# the nearest folder that looks like one.
mkdir -p project/.git project/src/deep project/test
printf 'int first(void) {\n}\nint second(void) {\n}\n' >project/src/main.c
printf 'a\nb\nc\n' >project/src/deep/fooBar.txt
printf 'other\n' >project/test/fooBar.txt
printf 'no\n' >project/fabric.txt
start_editor project/src/main.c
wait_window main.c

# go_to TEXT: types it into the box; Return waits until there is a row.
go_to() {
  keys ctrl+p
  wait_until is_focused 'Go to File'
  type_text "$1"
  keys Return
}

# The best match, though many have the letters; its folder and a line.
go_to 'deep/fb:2'
wait_window fooBar.txt
type_text 'x'
expect_saved project/src/deep/fooBar.txt $'a\nxb\nc\n'

# Nothing typed: back to the file before.
go_to ''
wait_window main.c
go_to ':3'
wait_until has_focus
type_text '3'
expect_saved project/src/main.c $'int first(void) {\n}\n3int second(void) {\n}\n'
go_to '@first'
wait_until has_focus
type_text '1'
expect_saved project/src/main.c $'1int first(void) {\n}\n3int second(void) {\n}\n'
go_to '>undo'
wait_until has_focus
expect_saved project/src/main.c $'int first(void) {\n}\n3int second(void) {\n}\n'

# Escape leads back.
keys ctrl+p
wait_until is_focused 'Go to File'
type_text 'fab'
keys Escape
wait_until has_focus
type_text 'x'
expect_saved project/src/main.c $'xint first(void) {\n}\n3int second(void) {\n}\n'
