# Symbols, languages and encodings are found by letters in one kind of list.
printf 'int first(void) {\n}\nint second(void) {\n}\nint third(void) {\n}\n' >file.c
edit file.c

# open_list KEY TITLE
open_list() {
  keys "$1"
  wait_until is_focused "$2"
}

# The list is there at once, and opens at the symbol of the caret.
open_list ctrl+shift+o 'Go to Symbol'
type_text 'thi'
keys Return
wait_until has_focus
type_text '3'
expect_saved file.c $'int first(void) {\n}\nint second(void) {\n}\n3int third(void) {\n}\n'
keys ctrl+Home
open_list ctrl+shift+o 'Go to Symbol'
keys Down Return
wait_until has_focus
type_text '2'
expect_saved file.c $'int first(void) {\n}\n2int second(void) {\n}\n3int third(void) {\n}\n'

# Escape goes nowhere.
open_list ctrl+shift+o 'Go to Symbol'
type_text 'first'
keys Escape
wait_until has_focus
type_text 'x'
expect_saved file.c $'int first(void) {\n}\n2xint second(void) {\n}\n3int third(void) {\n}\n'

# A language is chosen among all of them: as Markdown the text has a heading.
open_list ctrl+shift+p 'Select Bundle Item'
type_text 'language'
keys Return
wait_until is_focused 'Language'
type_text 'markdown'
keys Return
wait_until has_focus
keys ctrl+a
type_text '# heading'
keys Return Return
type_text 'x'
keys Return
open_list ctrl+shift+o 'Go to Symbol'
type_text 'head'
keys Return
wait_until has_focus
type_text 'y'
expect_saved file.c $'y# heading\n\nx\n'
