# Lines are folded by a key, told of in a tool tip, unfolded by a click, and kept with the file.
with_large_letters
printf 'alpha\nbeta\ngamma\ndelta\n' >file.txt
edit file.txt

# Cells are 29 by 59 pixels; the text begins right below a menu bar of about 20, and 39 pixels to
# the right when there is a fold.
keys ctrl+Home shift+Down shift+Down shift+Down ctrl+alt+period Down Home
type_text 'x'
expect_saved file.txt $'alpha\nbeta\ngamma\nxdelta\n'

# The tip shows under a resting mouse and goes with the next key.
tip_shows() { screenshot_all now.png && [[ $(different_pixels before.png now.png) -gt 800 ]]; }
tip_is_gone() { ! tip_shows; }
screenshot_all() { import -window root "$1"; }
xdotool mousemove --window "$window" 400 400
screenshot_all before.png
xdotool mousemove --window "$window" 228 51 sleep 0.1 mousemove --window "$window" 230 52
wait_until tip_shows
keys Escape
wait_until tip_is_gone

# Folded again when it is opened again.
quit
edit file.txt
keys ctrl+Home Down Home
type_text 'y'
expect_saved file.txt $'alpha\nbeta\ngamma\nyxdelta\n'

# A click on the ellipsis.
click 230 52
keys ctrl+Home Down Home
type_text 'z'
expect_saved file.txt $'alpha\nzbeta\ngamma\nyxdelta\n'
quit
