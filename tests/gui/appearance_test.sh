# Light and dark: as the desktop says at the start and when it changes, text and window alike.
portal=$(dirname "$editor")/offer_portal
mkfifo input
"$portal" 1 <input &
exec 9>input
offers() { gdbus introspect --session --dest org.freedesktop.portal.Desktop --object-path / >/dev/null; }
wait_until offers
# brightness X Y: of a pixel of the window, as a percentage.
brightness() {
  screenshot now.png
  convert now.png -format "%[fx:round(100*p{$1,$2}.lightness)]" info:
}
# The middle of the text, the right end of the menu bar, and the status bar.
shows_dark() { [[ $(brightness 400 300) -lt 40 && $(brightness "$1" 8) -lt 40 ]]; }
shows_light() { [[ $(brightness 400 300) -gt 80 && $(brightness "$1" 8) -gt 80 ]]; }

printf 'some text\n' >file.txt
edit file.txt
read -r right < <(xdotool getwindowgeometry --shell "$window" | sed -n 's/^WIDTH=//p')
((right -= 20))
wait_until shows_dark "$right"
echo 2 >&9
wait_until shows_light "$right"
echo 1 >&9
wait_until shows_dark "$right"
# No preference is light.
echo 0 >&9
wait_until shows_light "$right"
# High contrast is black on white, and white on black: the window's ground and the text's.
is_black() { [[ $(brightness 400 300) -eq 0 && $(brightness "$right" 8) -eq 0 ]]; }
is_white() { [[ $(brightness 400 300) -eq 100 && $(brightness "$right" 8) -eq 100 ]]; }
echo c1 >&9
wait_until is_white
echo 1 >&9
wait_until is_black
echo c0 >&9
wait_until shows_dark "$right"
! is_black
quit
# Nobody has chosen any of that.
! grep -s Theme "$XDG_CONFIG_HOME/Quirnote/Defaults.plist"
exec 9>&-
