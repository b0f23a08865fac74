# Text dragged inside a window, to another window of the program, and to another program.
with_large_letters '<key>WynOpenFilesTogether</key><false/>'
printf 'alpha beta\ngamma\n' >one.txt
printf 'first\nsecond\nthird\n' >two.txt
printf 'far\naway\n' >other.txt
start_editor other.txt
other_pid=$editor_pid
wait_window 'other.txt'
other=$window
start_editor --new-instance one.txt two.txt
wait_window 'two.txt'
two=$window
wait_window 'one.txt'
one=$window
xdotool windowsize --sync "$one" 560 300 windowmove "$one" 20 40
xdotool windowsize --sync "$two" 560 300 windowmove "$two" 660 40
xdotool windowsize --sync "$other" 560 300 windowmove "$other" 660 420

column_x() { echo $((4 + $1 * 29)); }
row_y() { echo $((24 + $1 * 59 + 29)); }

# hold ROW COLUMN: presses there and holds still for as long as makes it a drag.
hold() {
  xdotool mousemove --window "$window" "$(column_x "$2")" "$(row_y "$1")" mousedown 1 sleep 0.3
}
# over WINDOW ROW COLUMN: goes on to that place, in steps.
over() {
  local x y
  x=$(column_x "$3")
  y=$(row_y "$2")
  xdotool mousemove --window "$1" $((x + 30)) $((y + 8)) sleep 0.1 \
    mousemove --window "$1" $((x + 4)) "$y" sleep 0.1 mousemove --window "$1" "$x" "$y" sleep 0.2
}
let_go() { xdotool mouseup 1; }
save() { keys ctrl+s; }

# Inside the window text moves, in one step to undo; with Ctrl it is copied.
click "$(column_x 1)" "$(row_y 0)" 1 2
hold 0 2
over "$one" 1 5
let_go
expect_saved one.txt $' beta\ngammaalpha\n'
keys ctrl+z
expect_saved one.txt $'alpha beta\ngamma\n'
hold 0 2
xdotool keydown ctrl
over "$one" 1 5
let_go
xdotool keyup ctrl
expect_saved one.txt $'alpha beta\ngammaalpha\n'
keys ctrl+z

# Escape gives up; a press that doesn't wait selects anew; a click on the selection ends it.
hold 0 2
over "$one" 1 5
keys Escape
let_go
xdotool mousemove --window "$one" "$(column_x 3)" "$(row_y 0)" mousedown 1 \
  mousemove --window "$one" "$(column_x 8)" "$(row_y 0)" sleep 0.05 mouseup 1
expect_primary 'ha be'
click "$(column_x 4)" "$(row_y 0)"
type_text '!'
expect_saved one.txt $'alph!a beta\ngamma\n'
keys ctrl+z
save

# To another window text is copied, columns as columns.
xdotool keydown alt
drag "$(column_x 1)" "$(row_y 0)" "$(column_x 3)" "$(row_y 1)"
xdotool keyup alt
expect_primary $'lp\nam'
hold 0 2
over "$two" 0 2
let_go
wait_window 'two.txt'
expect_saved two.txt $'filprst\nseamcond\nthird\n'
file_is one.txt $'alpha beta\ngamma\n'
wait_window 'one.txt'
hold 0 2
over "$other" 0 1
let_go
wait_window 'other.txt'
expect_saved other.txt $'flpar\naamway\n'
keys ctrl+q
is_gone() { ! kill -0 "$other_pid" 2>/dev/null; }
wait_until is_gone
wait_window 'one.txt'
keys ctrl+q
is_gone() { ! is_running; }
wait_exit
