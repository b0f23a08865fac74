# Words are completed in place, and from a list that takes the keys and clicks and no focus.
with_large_letters
printf 'alpha alter also\n\n' >file.txt
edit file.txt

keys ctrl+End
type_text 'al'
keys alt+slash alt+slash alt+slash alt+shift+slash
expect_saved file.txt $'alpha alter also\n\nalter\n'

# Typing on filters the list; Return takes the selected row.
list_shows() { xdotool search --onlyvisible --name '^Completions$'; }
no_list() { ! list_shows; }
type_text ' a'
keys ctrl+space
wait_until list_shows
has_focus
type_text 'l'
keys Down Return
wait_until no_list
expect_saved file.txt $'alpha alter also\n\nalter also\n'

# A click takes a row. Rows are as high as lines of 59 pixels, and the list begins below the third.
type_text ' al'
keys ctrl+space
wait_until list_shows
list=$(xdotool search --onlyvisible --name '^Completions$')
xdotool mousemove --window "$list" 20 150 click 1
wait_until no_list
expect_saved file.txt $'alpha alter also\n\nalter also alpha\n'

quit
