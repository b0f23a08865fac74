# The harness itself, with xev, which prints the events that its window gets.
start xev -geometry 300x200+100+100
wait_window 'Event Tester'

saw() { grep -A3 "$1 event" program.log | grep -qF "$2"; }
type_text 'q'
wait_until saw KeyPress 'keysym 0x71, q'
click 40 60 3
wait_until saw ButtonPress '(40,60)'
wait_until saw ButtonPress 'button 3'
drag 50 70 90 110
wait_until saw MotionNotify '(70,90)'
wait_until saw ButtonRelease '(90,110)'

screenshot a.png
[[ $(identify -format '%wx%h' a.png) == 300x200 ]]
convert a.png -fill red -draw 'rectangle 0,0 1,4' b.png
[[ $(different_pixels a.png a.png) == 0 ]]
[[ $(different_pixels a.png b.png) == 10 ]]

printf 'text' | xclip -i -selection clipboard
expect_clipboard text
printf 'a\n\n' >file
expect_file file $'a\n\n'
if (trap - ERR; file_is file $'a\n'); then false; fi

# A test that fails says so, leaves a picture, and nothing keeps running.
cat >failing.sh <<'END'
start xev
wait_window 'Event Tester'
echo $DISPLAY $editor_pid >"$OLD_FILES/ids"
[[ 1 == 2 ]]
END
status=0
OLD_FILES=$PWD "$gui/run_gui_test" failing.sh >failing.log 2>&1 || status=$?
[[ $status -eq 1 ]]
grep -q 'failed: \[\[ 1 == 2 \]\]' failing.log
[[ $(identify -format '%wx%h' failing.png) == 1280x800 ]]
read -r display pid <ids
if xdpyinfo -display "$display" >/dev/null 2>&1; then false; fi
if kill -0 "$pid" 2>/dev/null; then false; fi
