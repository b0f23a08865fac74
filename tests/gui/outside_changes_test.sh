# What other programs do to the file of a window that stays active.

printf 'first\n' >file.txt
edit file.txt

# Written, and replaced by another file, as most editors save: taken over without a word.
printf 'written\n' >file.txt
wait_until shows 'written'
printf 'replaced\n' >new
mv new file.txt
wait_until shows 'replaced'
keys ctrl+z
wait_until shows 'written'
keys ctrl+shift+z ctrl+End

# With unsaved changes it is a question, and once only.
type_text 'mine'
printf 'theirs\n' >file.txt
answer Return
wait_window 'file.txt'
wait_until shows $'replaced\nmine'
printf 'theirs again\n' >file.txt
answer Tab space
wait_window 'file.txt'
wait_until shows 'theirs again'

# The question waits until nobody types: no key is lost to it, and none answers it.
keys ctrl+End
type_text ' and'
printf 'theirs at last\n' >file.txt
xdotool type --delay 40 ' mine, in words that go on and on'
answer Return
wait_window 'file.txt'
wait_until shows $'theirs again\n and mine, in words that go on and on'
keys ctrl+z ctrl+s
wait_until find_window '^file.txt[^*]*$'
printf 'theirs again\n' >file.txt
wait_until shows 'theirs again'

# A file that goes away leaves its text behind, unsaved.
mv file.txt elsewhere.txt
wait_window '^\*.*file.txt|file.txt.*\*'
expect_saved file.txt $'theirs again\n'
wait_until find_window '^file.txt[^*]*$'
expect_file elsewhere.txt $'theirs again\n'
