# Saves that fail: they are told, and the text stays, unsaved, until it can be saved.
mkdir folder
printf 'old\n' >folder/file.txt
is_edited() { find_window '^file.txt( \(deleted\))?\*'; }
told() {
  answer Return
  wait_until is_edited
  wait_window '^file.txt'
}

start_editor folder/file.txt
wait_window '^file.txt'
type_text 'new '

# The limit of what this user may write is reached, and raised.
prlimit --pid "$editor_pid" --fsize=5:
keys ctrl+s
told  # no safety copy can be made
expect_file folder/file.txt $'old\n'
prlimit --pid "$editor_pid" --fsize=unlimited:
expect_saved folder/file.txt $'new old\n'
wait_until find_window '^file.txt[^*]*$'

# The folder is gone, and comes back.
rm -r folder
wait_until is_edited
keys ctrl+s
told
wait_until shows 'new old'
mkdir folder
expect_saved folder/file.txt $'new old\n'
wait_until find_window '^file.txt[^*]*$'

# What is read-only is overwritten when its owner says so; closing with a failed save closes nothing.
chmod 0440 folder/file.txt
keys ctrl+Home
type_text 'more '
keys ctrl+s
told
expect_file folder/file.txt $'new old\n'
keys ctrl+w
wait_window '^Quirnote$'
keys Return
question=$window
next_question() { find_window '^Quirnote$' && [[ $window != "$question" ]]; }
wait_until next_question
answer Escape
wait_until is_edited
wait_window '^file.txt'
keys ctrl+s
wait_window '^Quirnote$'
keys Tab space
expect_file folder/file.txt $'more new old\n'
[[ $(stat -c %a folder/file.txt) == 440 ]]
