# The clipboard's history: steps, the panel, and clips that come from other programs.
printf 'ab1\ncd2\n' >first.txt
printf 'x\ny\n' >second.txt
edit first.txt

# A rectangle goes to another process as what it is.
keys shift+Down shift+Right shift+Right alt ctrl+c
expect_clipboard $'ab\ncd'
first_pid=$editor_pid
start_editor --new-instance second.txt
wait_window second.txt
keys End ctrl+v ctrl+s
expect_file second.txt $'xab\nycd\n'

# A clip of that process is taken in by the first one, after that of a third program; each is
# pasted by steps, and the clipboard follows.
keys ctrl+Home shift+Down ctrl+c
expect_clipboard xab
quit
editor_pid=$first_pid
wait_window 'first.txt'
printf 'other' | xclip -i -selection clipboard
wait_until selection_is clipboard other
keys ctrl+End ctrl+v ctrl+alt+v ctrl+s
expect_file first.txt $'ab1\ncd2\notherab\n     cd\n'
expect_clipboard $'ab\ncd'
keys ctrl+alt+shift+v ctrl+s
expect_file first.txt $'ab1\ncd2\notherabother\n     cd\n'
keys ctrl+a ctrl+c Right Left
printf 'ab1\ncd2\notherabother\n     cd' >expected
expect_clipboard "$(cat expected)"

# The panel: the second entry from above.
keys ctrl+alt+h
wait_window 'Clipboard History'
keys Down Return
wait_window 'first.txt'
expect_saved first.txt "$(cat expected)other"$'\n'
expect_clipboard other

# What one goes to is on the clipboard; Escape leaves the text. So does a turn to another program,
# which closes the list.
keys ctrl+alt+h
wait_window 'Clipboard History'
keys Up Escape
wait_window 'first.txt'
expect_clipboard "$(cat expected)"
keys ctrl+alt+h
wait_window 'Clipboard History'
keys Down
expect_clipboard other
start_editor --new-instance second.txt
wait_window second.txt
wait_no_window 'Clipboard History'
quit
editor_pid=$first_pid
wait_window 'first.txt'
expect_saved first.txt "$(cat expected)other"$'\n'
keys ctrl+q
wait_exit

# What a password manager marks is pasted, and then forgotten.
printf 'x' >third.txt
for mark in x-kde-passwordManagerHint=secret ExcludeClipboardContentFromMonitorProcessing=1; do
  "$(dirname "$editor")/offer_clip" pass-word "$mark" &
  owner=$!
  wait_until selection_is clipboard pass-word
  start_editor third.txt
  wait_window 'third.txt'
  keys ctrl+a ctrl+v ctrl+s
  expect_file third.txt pass-word
  keys ctrl+End ctrl+alt+v period ctrl+s
  expect_file third.txt pass-word.
  kill "$owner"
  keys ctrl+q
  wait_exit
done
! grep -rq pass-word "$XDG_STATE_HOME"

# A program that hangs with the clipboard in its hands doesn't keep a window from being used; when it
# answers at last, its clip is taken in.
printf 'late' | xclip -i -selection clipboard -quiet 2>/dev/null &
owner=$!
wait_until selection_is clipboard late
kill -STOP "$owner"
start_editor third.txt
wait_window 'third.txt'
keys ctrl+a x ctrl+s
expect_file third.txt x
kill -CONT "$owner"
keys ctrl+v ctrl+s
expect_file third.txt xlate
keys ctrl+q
wait_exit
kill "$owner"
