# Output of commands where there is no browser: as text, which leads to the same places.
source "$gui/../command_bundle.sh"
mkdir sub

# page NAME KEY SCRIPT: a command that Ctrl+Super+KEY runs.
page() {
  command_item "$1" showAsHTML "$3" "
    <key>keyEquivalent</key><string>^@$2</string><key>input</key><string>none</string>"
}
page Places 1 'echo "<b>file.txt:3:2: error: first</b>"; echo "sub/other.txt:1: second"'
page Line 2 'echo $BASHPID >number.new; mv number.new number; exec yes x | tr -d "\n"'
page Silent 3 'echo $BASHPID >number.new; mv number.new number; sleep 1000'
for n in 1 2 3 4; do echo "text $n"; done | tee file.txt >sub/other.txt
copy_program tree
rm -f tree/lib/quirnote/desktop_web.so
with_defaults '<key>WynCommandOutputLimit</key><integer>4096</integer>'  # no question meanwhile
start tree/bin/quirnote file.txt
wait_window 'file.txt'
keys ctrl+super+1
wait_window '^Places'
wait_until shows 'file.txt:3:2: error: first sub/other.txt:1: second'
keys F8
wait_window 'file.txt'
type_text 'F'
keys ctrl+s
expect_file file.txt $'text 1\ntext 2\ntFext 3\ntext 4\n'

# A line that never ends holds nothing up, and its command ends with the window.
keys ctrl+super+2
wait_window '^Line'
flood=$window
wait_window 'file.txt'
for letter in C D E; do
  type_text "$letter"
  keys ctrl+s
done
expect_file file.txt $'text 1\ntext 2\ntFCDEext 3\ntext 4\n'
window=$flood
xdotool windowactivate --sync "$window"
keys ctrl+w
wait_window '^Quirnote$'
keys Return
wait_no_window '^Line'
is_over() { ! kill -0 -- -"$(<number)"; }
wait_until is_over

# A killed program leaves no command that prints: its pipe is closed.
rm number
keys ctrl+super+2
wait_window '^Line'
wait_until test -e number
[[ -z $(is_over && echo over) ]]
kill -KILL "$editor_pid"
wait_exit 137
wait_until is_over

# One that is asked to end, or loses its display, leaves none at all.
for end in TERM display; do
  rm number
  start tree/bin/quirnote file.txt
  wait_window 'file.txt'
  keys ctrl+super+3
  wait_window '^Silent'
  wait_until test -e number
  if [[ $end == display ]]; then
    xdotool windowkill "$window"
    wait_exit 1
  else
    kill -TERM "$editor_pid"
    wait_exit
  fi
  wait_until is_over
done
