# Lines wrapped at column 10 are drawn, marked in the gutter, clicked at and selected.
# Cells are 29 by 59 pixels; the gutter takes 44.
with_large_letters '<key>WynTextViewRightMarginColumn</key><integer>10</integer>'
printf 'aaaa bbbb cccc dddd\nxx\n' >file.txt
edit file.txt
column_x() { echo $((48 + $1 * 29)); }
row_y() { echo $((24 + $1 * 59 + 29)); }
click_at() { click "$(column_x "$2")" "$(row_y "$1")" "${@:3}"; }

# cut ROW X WIDTH FILE: of what the window shows.
cut() { import -window "$window" -crop "${3}x59+$2+$((24 + $1 * 59))" +repage "$4"; }
looks_alike() {
  cut "$1" "$3" "$4" a.png && cut "$2" "$3" "$4" b.png && [[ $(different_pixels a.png b.png) -eq 0 ]]
}
differ() { ! looks_alike "$@"; }

# After the first row there is text and a mark in the gutter; at the third no mark.
keys alt+z ctrl+End
wait_until differ 1 2 0 44
wait_until looks_alike 0 2 0 44
wait_until looks_alike 4 5 48 500
looks_alike 0 1 338 100

# Clicks and drags go to what is shown in a row; three clicks take the whole line.
click_at 1 2
type_text 'X'
expect_saved file.txt $'aaaa bbbb ccXcc dddd\nxx\n'
drag "$(column_x 5)" "$(row_y 0)" "$(column_x 3)" "$(row_y 1)"
expect_primary 'bbbb ccX'
click_at 1 8 1 3
expect_primary 'aaaa bbbb ccXcc dddd'
click_at 2 1
keys Up End
keys Home
type_text '?'
expect_saved file.txt $'aaaa bbbb ?ccXcc dddd\nxx\n'
keys ctrl+z

# Unwrapped, the second row is the second line, and the gutter is gone.
keys alt+z
click $((4 + 29)) "$(row_y 1)"
type_text 'Y'
expect_saved file.txt $'aaaa bbbb ccXcc dddd\nxYx\n'
quit
