# The find bar and incremental search with real keys and clicks.
printf 'alpha beta\ngamma alpha\nbeta alpha end\n' >file.txt
edit file.txt
editor_window=$window

# The bar opens with the keys in its field; what is typed is selected, Return goes to the next match,
# and all are shown.
screenshot before.png
keys ctrl+f
type_text 'alpha'
matches_are_shown() { screenshot after.png && (($(different_pixels before.png after.png) > 500)); }
wait_until matches_are_shown
keys Return
expect_primary 'alpha'
keys Escape
type_text 'X'
expect_saved file.txt $'alpha beta\ngamma X\nbeta alpha end\n'

# F3 goes on without the panel, and Shift+F3 back.
keys F3
type_text 'Y'
keys shift+F3
type_text 'Z'
expect_saved file.txt $'Z beta\ngamma X\nbeta Y end\n'

# Replacing all, by mnemonics.
keys ctrl+h
type_text 'Q$0'
keys alt+f
keys ctrl+a
type_text '[XYZ]'
# Their Alt, however long it is held, isn't that of a click.
keys alt+x
xdotool keydown alt key a sleep 0.3 keyup alt
# Keys of menus are those of the window.
expect_saved file.txt $'QZ beta\ngamma QX\nbeta QY end\n'

keys Escape

# A selection is what is sought, Up brings back what was sought before, and both last over a restart.
keys ctrl+Home ctrl+shift+Right ctrl+f Return Return Escape
type_text 'W'
expect_saved file.txt $'W beta\ngamma QX\nbeta QY end\n'
quit
edit file.txt
editor_window=$window
keys ctrl+f
keys Up
type_text ' end'
keys alt+x Escape
type_text '!'
expect_saved file.txt $'W beta\ngamma QX\nbeta Q!\n'
keys ctrl+z
expect_saved file.txt $'W beta\ngamma QX\nbeta QY end\n'

# Incremental search: a longer string goes on, the key again to the next, Escape leaves it selected.
keys ctrl+Home ctrl+i
type_text 'be'
keys ctrl+i Escape
type_text 'BE'
expect_saved file.txt $'W beta\ngamma QX\nBEta QY end\n'

# A search without end is cancelled by Escape, and the window goes on.
head -c 200000 /dev/zero | tr '\0' 'a' >long.txt
quit
edit long.txt
keys ctrl+f alt+x
type_text 'a+(?=\d)'
keys Return
wait_until is_focused 'Searching'
keys Escape
wait_until has_focus
keys Escape
type_text 'b'
keys ctrl+s
typed() { [[ $(head -c 2 long.txt) == ba ]]; }
wait_until typed
