# Finding and replacing in the files of a folder, in the window for that.
mkdir -p tree/sub
printf 'alpha beta\n' >tree/a.txt
printf 'one alpha\nalpha two\n' >tree/b.txt
printf 'none\n' >tree/sub/c.txt
start_editor tree/a.txt
wait_window "^a.txt"
editor_window=$window

keys ctrl+shift+f
wait_window '^Find in Project$'
type_text 'alph.'
screenshot before.png
keys alt+r Return
results_are_shown() { screenshot after.png && (($(different_pixels before.png after.png) > 500)); }
wait_until results_are_shown

# What is selected in the tree is shown in its text.
keys Tab
xdotool windowactivate "$editor_window"
window=$editor_window
wait_until has_focus
keys F8
expect_primary 'alpha'
keys F8
wait_window 'b.txt'
expect_primary 'alpha'

# What is ticked is replaced: in the open texts unsaved, in files that are not open on the disk.
keys ctrl+w
wait_no_window 'b.txt'
xdotool windowactivate "$editor_window"
window=$editor_window
keys ctrl+shift+f
wait_window '^Find in Project$'
keys alt+p
type_text 'omega'
keys alt+t
answer Return
expect_file tree/b.txt $'one omega\nomega two\n'
wait_window 'Find in Project'
keys alt+u
expect_file tree/b.txt $'one alpha\nalpha two\n'
keys Escape
wait_no_window '^Find in Project$'
window=$editor_window
wait_window 'a.txt'
quit
