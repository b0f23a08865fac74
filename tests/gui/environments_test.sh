# A desktop that isn't as it should be: no display, closed descriptors, missing files, no memory.
printf 'one\n' >file.txt

# refused VARIABLE=VALUE...: the program says that there is no window, and ends with 1.
refused() {
  local status=0
  timeout 20 env "$@" "$editor" file.txt >out 2>err || status=$?
  if [[ $status != 1 || -s out ]] || ! grep -q '^quirnote: no window can be opened: ' err; then
    echo "$*: status $status: $(<err)" >&2
    return 1
  fi
}
refused DISPLAY=:4711
refused DISPLAY= WAYLAND_DISPLAY= QT_QPA_PLATFORM=
refused QT_QPA_PLATFORM=nonsense
refused QT_QPA_PLATFORM=wayland WAYLAND_DISPLAY=nothing DISPLAY=
refused QT_QPA_PLATFORM=xcb:nonsense DISPLAY=:4711

# What follows "--" is no option, neither to us nor to the window system.
printf 'platform\n' >./-platform
start_editor -- -platform
wait_window '.platform'
type_text 'A'
expect_saved ./-platform $'Aplatform\n'
quit

# With all standard descriptors closed, no socket gets their numbers.
start bash -c 'exec "$@" <&- >&- 2>&-' - "$editor" file.txt
wait_window 'file.txt'
type_text 'B'
expect_saved file.txt $'Bone\n'
quit

# Without menus there are those for saving, and the window says why.
copy_program tree
echo '<plist><dict>' >tree/share/Quirnote/menus.plist
start tree/bin/quirnote file.txt
wait_window '^Quirnote$'
keys Return
wait_window 'file.txt'
type_text 'C'
expect_saved file.txt $'BCone\n'
quit

# What there is no memory for is refused, and what stands in the window can be saved. The address
# sanitizer itself ends a program that has no memory left.
if ! grep -q __asan_init "$editor"; then
  head -c 120000000 /dev/zero | tr '\0' 'a' >large.txt
  start_editor large.txt
  wait_window '^Quirnote$'
  keys Return
  wait_window 'large.txt'
  vm=
  is_idle() {
    local before=$vm
    vm=$(awk '/VmSize/ { print $2 }' "/proc/$editor_pid/status")
    [[ $vm == "$before" ]]
  }
  wait_until is_idle
  prlimit --pid "$editor_pid" --as=$(((vm + 60000) * 1024)):
  keys ctrl+a ctrl+c
  wait_window '^Quirnote$'
  keys Return
  prlimit --pid "$editor_pid" --as=unlimited:
  wait_window 'large.txt'
  keys ctrl+End
  type_text 'Z'
  keys ctrl+s
  wait_until eval '[[ $(tail -c 1 large.txt) == Z ]]'
  quit
fi

# Where logical pixels are no whole device pixels, what is drawn bit by bit looks like what is drawn
# at once: carets leave nothing where they were, and areas fit together.
text_area() { import -window "$window" -crop 1000x600+0+0 +repage "$1"; }
looks_drawn_at_once() {
  text_area anew.png
  [[ $(different_pixels bits.png anew.png) == 0 ]]
}
select_by_way_of() {
  xdotool mousemove --window "$window" "$1" 60 mousedown 1
  for y in "${@:2}"; do xdotool mousemove --window "$window" "$1" "$y" sleep 0.04; done
  xdotool mouseup 1
}
with_defaults '<key>WynTextViewSmoothScrolling</key><false/>'
for n in {1..60}; do echo "{ line $n (gjpqy) 漢字 | بب"; done >scaled.txt
for scale in 1.25 1.5; do
  QT_SCALE_FACTOR=$scale start_editor scaled.txt
  wait_window 'scaled.txt'
  for part in caret selection columns; do
    case $part in
      caret) keys ctrl+End ctrl+Home Down Down Right Down Up shift+Down shift+Down Right ;;
      selection) select_by_way_of 150 77 130 190 300 270 220 420 ;;
      columns)
        xdotool keydown alt
        select_by_way_of 130 200 310 240 170
        xdotool keyup alt
        ;;
    esac
    wait_until eval 'text_area bits.png && looks_drawn_at_once'  # all is done
    xdotool mousemove --window "$window" 200 300 click 5 click 4
    wait_until -t 10 looks_drawn_at_once  # but for a caret that blinks
  done
  quit
done
