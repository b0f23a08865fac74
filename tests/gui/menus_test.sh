# Menus, alerts and the status bar by keyboard alone.
printf 'one two\nthree\n' >file.txt
# A key of the user's own, which the menu shows and the list of all keys finds.
mkdir -p "$XDG_DATA_HOME/Quirnote"
printf "{ '~\$q' = 'uppercaseWord:'; }" >"$XDG_DATA_HOME/Quirnote/KeyBindings.dict"
edit file.txt
popup_is_open() { [[ $(xdotool search --onlyvisible --class quirnote | wc -l) -ge $1 ]]; }

# Letters open menus, entries and menus in menus.
keys alt+e
wait_until popup_is_open 2
keys s
wait_until popup_is_open 3
keys a
wait_until eval '! popup_is_open 2'
type_text 'all'
expect_saved file.txt $'all\n'

# What was typed in one go is taken back at once, and single keys by a key of their own.
type_text ' of it'
keys ctrl+z
expect_saved file.txt $'all of \n'
keys alt+u alt+u
expect_saved file.txt $'all o\n'
keys ctrl+y
expect_saved file.txt $'all of \n'
keys ctrl+z ctrl+z ctrl+z ctrl+z
expect_saved file.txt $'one two\nthree\n'

# F10 opens the menu bar, and Escape leaves it; the key of the menu opens that at the caret.
keys F10
wait_until popup_is_open 2
keys Escape Escape
wait_until eval '! popup_is_open 2'
for key in Menu shift+F10; do
  keys ctrl+Home "$key"
  wait_until popup_is_open 2
  keys w
  wait_until eval '! popup_is_open 2'
  keys ctrl+c
  expect_clipboard 'one'
done

# The list of all keys finds by key and by name, and performs.
keys ctrl+question
wait_window '^Keyboard Shortcuts$'
type_text 'alt+shift+q'
keys Return
wait_no_window '^Keyboard Shortcuts$'
wait_window 'file.txt'
expect_saved file.txt $'ONE two\nthree\n'

# The whole screen, and back.
is_full_screen() { [[ $(xprop -id "$window" _NET_WM_STATE) == *FULLSCREEN* ]]; }
keys F11
wait_until is_full_screen
keys F11
wait_until eval '! is_full_screen'

# The status bar: a switch at its end, the tab's width next to it.
keys ctrl+End F6 End Return
type_text 'x'
expect_saved file.txt $'ONE two\nthree\nx\n'
keys Home
type_text 'y'
expect_saved file.txt $'ONE two\nthree\ny\n'

# A question is answered by the letters of its buttons.
type_text 'z'
keys ctrl+w
wait_window '^Quirnote$'
keys alt+d
wait_exit
