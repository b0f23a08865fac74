# The tree beside the text: by keys and by the mouse, and what becomes of the files. Each row begins
# with another letter, as letters that come slowly are no word.
mkdir -p work/cage work/empty work/far other
for n in {100..180}; do printf '%s' "$n" >"work/far/$n.txt"; done
for name in alpha beta gamma; do printf '%s' "$name" >"work/$name.txt"; done
printf outside >other/outside.txt
odd=$(printf 'n\xff')
printf odd >"work/$odd"
start_editor work
wait_window '^untitled — work'
project=$window
work=$PWD/work

exists() { [[ -e $1 ]]; }
is_absent() { [[ ! -e $1 ]]; }
has_windows() { [[ $(xdotool search --onlyvisible --class quirnote | wc -l) -eq $1 ]]; }
# to_tree LETTER: the keyboard goes to the row that begins so, wherever it was.
to_tree() { keys ctrl+b ctrl+b ctrl+shift+e Home "$1"; }
# shows_file LETTER TITLE: opens a file by the tree. As long as it isn't there, Enter closes and
# opens the first folder.
shows_file() {
  to_tree "$1"
  keys Return
  find_window "^$2 — work"
}
# menu KEY: of the row where the keyboard is.
menu() {
  wait_until has_windows 1
  keys shift+F10
  wait_until has_windows 2
  keys "$1"
  wait_until has_windows 1
}
# is_selected PATH: alone.
is_selected() {
  keys ctrl+c
  selection_is clipboard "$1"
}
# row_y N: where the mouse finds one of the first rows, about 26 pixels high, below the menu bar.
row_y() { echo $((35 + 26 * $1)); }

# Typing finds rows, Enter opens and goes to the text.
wait_until shows_file b beta.txt
wait_window '^beta.txt — work'
type_text X
expect_saved work/beta.txt Xbeta

# Names are changed in place. The stem is selected, a name that is taken is refused, and a file that
# is open goes along.
to_tree b
keys F2
type_text alpha
keys Return Escape F2
type_text delta
keys Return
wait_window '^delta.txt — work'
exists work/delta.txt
is_absent work/beta.txt
file_is work/alpha.txt alpha

# What is new stands in the folder that the keyboard is at. F10 and Escape leave it there.
to_tree e
keys F10
wait_until has_windows 2
keys Escape Escape
menu n
type_text 'made here.txt'
keys Return
wait_window '^made here.txt — work'
type_text new
expect_saved 'work/empty/made here.txt' new

# Duplicated, and moved to the trash after a question.
to_tree g
menu d
wait_until is_selected "$work/gamma copy.txt"
file_is 'work/gamma copy.txt' gamma
keys Delete
answer Return
wait_until is_absent 'work/gamma copy.txt'
file_is "$XDG_DATA_HOME/Trash/files/gamma copy.txt" gamma

# Cut and pasted is moved, copied and pasted is copied. Names that are no UTF-8 are kept.
to_tree n
keys ctrl+x
to_tree c
keys ctrl+v
wait_until file_is "work/cage/$odd" odd
is_absent "work/$odd"
to_tree g
wait_until is_selected "$work/gamma.txt"
to_tree c
keys ctrl+v
wait_until file_is work/cage/gamma.txt gamma
exists work/gamma.txt

# What others make is there at once, also where there are more rows than the window has.
to_tree f
keys Right
printf late >'work/far/z late.txt'
wait_until shows_file z 'z late.txt'
wait_window '^z late.txt — work'
to_tree f
keys Left

# A click shows a file, a second file takes its place, a double click keeps it.
to_tree c
keys Left
click 90 "$(row_y 1)"
wait_window '^alpha.txt — work'
click 90 "$(row_y 3)" 1 2
wait_window '^delta.txt — work'
keys End
type_text '!'
expect_saved work/delta.txt 'Xbeta!'

# Dragged onto a folder it is moved, if the user wants; from another window it is copied.
grab() { xdotool mousemove --window "$1" 90 "$(row_y "$2")" mousedown 1 sleep 0.1; }
# drop WINDOW ROW: there, in steps.
drop() {
  local y
  y=$(row_y "$2")
  xdotool mousemove --window "$1" 110 $((y + 9)) sleep 0.1 mousemove --window "$1" 95 "$y" \
    sleep 0.1 mousemove --window "$1" 96 "$y" sleep 0.2 mouseup 1
}
grab "$project" 1
drop "$project" 2
answer Return
wait_until file_is work/cage/alpha.txt alpha
wait_until is_absent work/alpha.txt
wait_window ' — work'
row_1_is() {
  click 90 "$(row_y 1)"
  is_selected "$1"
}
wait_until row_1_is "$work/cage"
project_pid=$editor_pid
start_editor --new-instance other
wait_window '^untitled — other'
wait_until row_1_is "$PWD/other/outside.txt"
xdotool windowsize --sync "$project" 560 600 windowmove "$project" 20 40
xdotool windowsize --sync "$window" 560 600 windowmove "$window" 660 40
wait_until eval 'xdotool getwindowgeometry "$window" | grep -q "Position: 66"'
grab "$window" 1
drop "$project" 1
wait_until file_is work/cage/outside.txt outside
exists other/outside.txt
quit
editor_pid=$project_pid
wait_window ' — work'

# Ctrl+B takes the tree away, and the text gets the keys. Its width and side are kept.
to_tree c
keys ctrl+b
wait_until shows 'Xbeta!'
keys ctrl+b
drag 240 300 300 300
keys alt+v
wait_until has_windows 2
keys b
wait_until has_windows 3
keys o
quit
setting() { grep -A 1 "<key>$1</key>" "$XDG_CONFIG_HOME/Quirnote/Defaults.plist" | tail -n 1; }
[[ $(setting WynProjectDrawerSide) == *'>right<'* ]]
[[ $(setting WynProjectDrawerWidth) =~ \>(29.|30.)\< ]]
start_editor work
wait_window ' — work'
xdotool windowsize --sync "$window" 700 600
# Its rows come when the folder has been read.
shows_delta() {
  click 500 "$(row_y 2)" 1 2
  find_window '^delta.txt — work'
}
wait_until shows_delta
wait_until shows 'Xbeta!'
quit
