# What comes while a search waits, is held or ends it.
begins_with() { [[ $(head -c ${#2} "$1") == "$2" ]]; }
question() { find_window '^Quirnote$'; }

# An attempt to match that takes its time for every place in this text.
head -c 200000 /dev/zero | tr '\0' 'a' >long.txt
printf 'before\n' >other.txt
with_defaults '<key>WynOpenFilesTogether</key><false/>'
start_editor other.txt long.txt
wait_window 'other.txt'
wait_window 'long.txt'
editor_window=$window
keys ctrl+h
type_text 'x'
keys alt+f ctrl+a
type_text 'a+(?=\d)'
keys alt+x
keys Escape

# Keys come after it, in order, also those that the panel in between got. A file that has changed is
# a question after them.
keys F3
type_text 'key'
wait_until is_focused 'Searching'
type_text 's and '
keys Return space
printf 'theirs' >long.txt
if wait_until -t 2 question 2>/dev/null; then
  echo 'a question came while a search was waited for' >&2
  false
fi
keys Escape
answer Return
wait_window 'long.txt'
keys ctrl+s
wait_until begins_with long.txt $'keys and \n aaa'

# So do clicks, a menu's command, and what others write to a file without changes.
keys ctrl+Home F3
wait_until is_focused 'Searching'
window=$editor_window
type_text 'after '
click 300 300
type_text ' end'
click 20 12
click 47 35  # File > New
printf 'theirs\n' >other.txt
if wait_until -t 2 find_window 'untitled' 2>/dev/null; then
  echo 'a menu did something while a search was waited for' >&2
  false
fi
keys Escape
wait_window 'untitled'
keys ctrl+w
wait_no_window 'untitled'
wait_window 'long.txt\*'
keys ctrl+s
wait_until begins_with long.txt 'after keys'
wait_until eval '[[ $(tail -c 4 long.txt) == " end" ]]'
wait_window 'other.txt'
keys ctrl+a ctrl+c
expect_clipboard 'theirs'
keys ctrl+w
wait_no_window 'other.txt'
wait_window 'long.txt'
keys ctrl+Home
keys Down Right

# A signal doesn't wait for the end of a search.
type_text 'more'
keys ctrl+h
keys alt+a
wait_until is_focused 'Searching'
kill -TERM "$editor_pid"
wait_exit
start_editor
answer Return
wait_window 'long.txt.*\*'
keys ctrl+s
wait_until begins_with long.txt $'after keys and \n more'
quit

# A file that is deleted has its text in the window alone.
printf 'only here\n' >file.txt
edit file.txt
rm file.txt
wait_window 'file.txt \(deleted\)\*'
printf 'only here\n' >file.txt
wait_until find_window '^file.txt[^*]*$'
wait_window 'file.txt'
rm file.txt
keys ctrl+w
wait_window '^Quirnote$'
keys Return
expect_file file.txt $'only here\n'
wait_exit

# The middle button pastes what others have selected: nothing is typed.
edit file.txt
printf '("\r\n' | xclip -selection primary
click 300 300 2
expect_saved file.txt $'only here\n("\n'

# A program that hangs with the clipboard in its hands is waited for once, however much a paste asks.
printf 'never seen' | xclip -i -selection clipboard -quiet 2>/dev/null &
owner=$!
wait_until selection_is clipboard 'never seen'
kill -STOP "$owner"
keys ctrl+Home ctrl+v
type_text 'after '
expect_saved file.txt $'after only here\n("\n'
kill -KILL "$owner"
