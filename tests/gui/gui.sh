# What a GUI test can do. Started by run_gui_test as
#   bash gui.sh SCRIPT PICTURE PROGRAM
# it sources SCRIPT. Nothing sleeps for a fixed time: a test names what must come to be seen and
# waits until it is. The variable editor is the program's path, editor_pid its process, window
# the window that the functions below act on.
set -Eeuo pipefail
script=$1
picture=$2
editor=$3
gui=$(dirname "${BASH_SOURCE[0]}")
editor_pid=
window=

# wait_until [-t SECONDS] COMMAND...: until the command succeeds; fails after 20 seconds.
wait_until() {
  local seconds=20
  if [[ $1 == -t ]]; then
    seconds=$2
    shift 2
  fi
  local end=$((SECONDS + seconds))
  until "$@" >/dev/null 2>&1; do
    if ((SECONDS >= end)); then
      echo "gave up after $seconds s: $*" >&2
      return 1
    fi
    sleep 0.05
  done
}

# start PROGRAM ARGUMENT...: in the background as editor_pid, its output in program.log.
start() {
  "$@" >>program.log 2>&1 &
  editor_pid=$!
}

# copy_program FOLDER: as it would be installed there, as FOLDER/bin/quirnote.
copy_program() {
  mkdir -p "$1"/{bin,lib,share}
  cp "$editor" "$1/bin"
  cp -r "$(dirname "$editor")/../lib/quirnote" "$1/lib"
  cp -r "$gui/../../share" "$1/share/Quirnote"
}

start_editor() { start "$editor" "$@"; }

# with_defaults XML: the user defaults of the next start, as the inside of a dictionary.
with_defaults() {
  mkdir -p "$XDG_CONFIG_HOME/Quirnote"
  printf '<?xml version="1.0" encoding="UTF-8"?>\n<plist version="1.0"><dict>%s</dict></plist>\n' \
    "$1" >"$XDG_CONFIG_HOME/Quirnote/Defaults.plist"
}
# with_large_letters [XML]: cells of 29 by 59 pixels are easy to hit, whatever the menu bar's size.
# Without line numbers the first of them is at the window's edge, and rows look alike.
with_large_letters() {
  with_defaults "<key>WynTextViewNormalFontName</key><string>DejaVu Sans Mono</string>
    <key>WynTextViewNormalFontSize</key><real>36</real>
    <key>WynTextViewLineNumbersEnabled</key><false/>
    <key>WynTextViewHighlightCurrentLine</key><false/>${1-}"
}

is_running() { kill -0 "$editor_pid" 2>/dev/null; }
is_gone() { ! is_running; }

# wait_exit [STATUS]: until the program ended, with that status (default 0).
wait_exit() {
  local status=0
  wait_until is_gone
  wait "$editor_pid" || status=$?
  editor_pid=
  if [[ $status -ne ${1:-0} ]]; then
    echo "the program ended with $status" >&2
    return 1
  fi
}

find_window() {
  window=$(xdotool search --onlyvisible --name "$1" 2>/dev/null | tail -n 1)
  [[ -n $window ]]
}
has_focus() { [[ $(xdotool getwindowfocus -f) == "$window" ]]; }
no_window() { ! xdotool search --onlyvisible --name "$1"; }

# wait_window TITLE: until a window whose title matches the regular expression is seen and has
# the focus; it becomes the window that the test acts on.
wait_window() {
  wait_until find_window "$1"
  wait_until comes_to_front
}
# One that opens at the same moment may take the focus again.
comes_to_front() {
  has_focus && return
  xdotool windowactivate "$window"
  sleep 0.1
  has_focus
}

# wait_no_window TITLE: until no window has such a title.
wait_no_window() { wait_until no_window "$1"; }

# edit FILE: starts the editor with the file.
edit() {
  start_editor "$1"
  wait_window "$1"
}
quit() {
  keys ctrl+q
  wait_exit
}
# answer KEY...: to the question that comes.
answer() {
  wait_window '^Quirnote$'
  keys "$@"
  wait_no_window '^Quirnote$'
}
# is_focused TITLE: whether the keys go to a window, or a panel in one, whose title begins so.
is_focused() { [[ $(xdotool getwindowfocus -f getwindowname) == "$1"* ]]; }
# shows TEXT: whether this is the text of the window; selects it.
shows() {
  keys ctrl+a ctrl+c
  selection_is clipboard "$1"
}

type_text() { xdotool type --delay 15 -- "$1"; }

# keys KEY...: by X names, e.g. keys ctrl+s Return.
keys() { xdotool key --delay 15 -- "$@"; }

# click X Y [BUTTON [COUNT]]: in pixels from the window's upper left corner.
click() {
  xdotool mousemove --window "$window" "$1" "$2" click --repeat "${4:-1}" --delay 60 "${3:-1}"
}

# drag X1 Y1 X2 Y2: with the left button, by way of the middle, at a pace at which motions are
# not merged into one.
drag() {
  xdotool mousemove --window "$window" "$1" "$2" mousedown 1 sleep 0.03 \
    mousemove --window "$window" $((($1 + $3) / 2)) $((($2 + $4) / 2)) sleep 0.03 \
    mousemove --window "$window" "$3" "$4" sleep 0.03 mouseup 1
}

# screenshot FILE: the window as a PNG picture.
screenshot() { import -window "$window" "$1"; }

# different_pixels FILE FILE: prints how many; pictures of different sizes fail.
different_pixels() { compare -metric AE "$1" "$2" null: 2>&1 || [[ $? -eq 1 ]]; }

selection_is() { [[ $(xclip -o -selection "$1") == "$2" ]]; }
file_is() { printf %s "$2" | cmp -s - "$1"; }

# expect_file FILE TEXT: waits until the file holds just this text; trailing newlines count.
expect_file() {
  wait_until file_is "$1" "$2" && return
  printf %s "$2" | diff -u --label expected --label "$1" - "$1" >&2 || return 1
}

expect_saved() {
  keys ctrl+s
  expect_file "$@"
}

# expect_clipboard TEXT, expect_primary TEXT: wait until the clipboard, or what was selected
# last, holds this text.
expect_clipboard() { expect_selection clipboard "$1"; }
expect_primary() { expect_selection primary "$1"; }
expect_selection() {
  wait_until selection_is "$1" "$2" && return
  echo "the $1 selection holds: $(xclip -o -selection "$1")" >&2
  return 1
}

report_failure() {
  local status=$? frame
  trap - ERR
  for ((frame = 1; frame < ${#BASH_SOURCE[@]} - 1; ++frame)); do
    [[ ${BASH_SOURCE[frame]} != "$script" ]] || break
  done
  echo "$script:${BASH_LINENO[frame - 1]}: failed: $1" >&2
  import -window root "$picture" && echo "the screen is in $picture" >&2
  [[ ! -s program.log ]] || sed 's/^/program: /' program.log >&2
  exit "$status"
}

stop_program() {
  [[ -n $editor_pid ]] && is_running || return 0
  kill "$editor_pid" || true
  wait_until -t 5 is_gone || kill -KILL "$editor_pid"
}

trap 'report_failure "$BASH_COMMAND"' ERR
trap stop_program EXIT
source "$script"
