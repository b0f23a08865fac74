# One instance, which other programs hand files to: another start of the editor, and quirn.
quirn=$(dirname "$editor")/quirn
runtime=$XDG_RUNTIME_DIR/Quirnote
printf 'one\ntwo\nthree\n' >a.txt
printf 'b\n' >b.txt
printf 'c\n' >c.txt

# Two that are started at the same moment come to one, which has the files of both. What an instance
# that was killed has left is no hindrance, nor a process that has its id now.
mkdir -m 700 "$runtime"
printf %s "$$" >"$runtime/quirnote.pid"
printf %s 'no socket' >"$runtime/quirnote.socket"
"$editor" a.txt >>program.log 2>&1 &
first=$!
"$editor" b.txt >>program.log 2>&1 &
second=$!
wait_window '^a.txt'
wait_window '^b.txt'
editor_pid=$(<"$runtime/quirnote.pid")
other=$((editor_pid == first ? second : first))
other_is_gone() { ! kill -0 "$other"; }
wait_until -t 30 other_is_gone
wait "$other"
[[ $editor_pid == "$first" || $editor_pid == "$second" ]]
is_running

# The window comes to the front for a start without files, and for a file that is open.
wait_window '^a.txt'
"$editor" b.txt:1
wait_until is_focused b.txt
xdotool windowminimize "$window"
(cd / && "$quirn" "$OLDPWD/a.txt:3:2")
wait_window '^a.txt'
type_text X
keys ctrl+s
expect_file a.txt $'one\ntwo\ntXhree\n'
"$editor" --new-instance c.txt &
wait_window '^c.txt'
[[ $(<"$runtime/quirnote.pid") == "$editor_pid" ]]
keys ctrl+q
wait $!

# The editor of other programs: the window shows who waits, and the status says what became of it.
git init -q repository
cd repository
git config user.name Name
git config user.email name@example.org
export GIT_EDITOR="$quirn --wait"
git commit -q --allow-empty &
wait_window '^COMMIT_EDITMSG.*awaited by git'
type_text 'Message'
keys ctrl+s ctrl+w
wait $!
[[ $(git log -1 --format=%s) == Message ]]
git commit -q --amend --allow-empty &
wait_window '^COMMIT_EDITMSG.*awaited by git'
type_text 'Not this '
keys ctrl+w
answer Tab Tab space
status=0
wait $! || status=$?
[[ $status -ne 0 ]]
[[ $(git log -1 --format=%s) == Message ]]
cd ..

# Standard input is a new document, and what it is when it is closed comes out.
printf 'text\n' | "$quirn" -w >out &
wait_window '^untitled.*awaited by'
keys ctrl+Home
type_text 'more '
keys ctrl+w
wait $!
expect_file out $'more text\n'

# Who waits goes on to wait when another instance takes the place of this one.
"$quirn" --wait b.txt &
waiter=$!
wait_window '^b.txt.*awaited by'
type_text 'kept '
wait_window '^b.txt.*\*'
former=$editor_pid
RELAUNCH=QUICK "$editor" >>program.log 2>&1 &
editor_pid=$!
wait "$former"
wait_window '^Quirnote$'
keys Return
wait_no_window '^Quirnote$'
wait_window '^b.txt.*awaited by'
wait_until shows 'kept b'
keys ctrl+s ctrl+w
wait "$waiter"
expect_file b.txt $'kept b\n'
wait_exit
[[ -z $(ls "$runtime") ]]

# Without an instance quirn starts one, which outlives it; one that can't start is reported.
"$quirn" c.txt
editor_pid=$(<"$runtime/quirnote.pid")
wait_window '^c.txt'
no_window '^untitled'
keys ctrl+q
wait_until is_gone
editor_pid=
status=0
env -u DISPLAY "$quirn" c.txt 2>err || status=$?
[[ $status -eq 3 ]]
grep -q 'no window can be opened' err
"$quirn" --line 2>err || status=$?
[[ $status -eq 2 ]]
