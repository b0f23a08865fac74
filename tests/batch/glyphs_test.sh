# Scripts that the font of the text doesn't have come from other fonts, and still fill their cells:
# nothing reaches over them, is squeezed into a part of them, or comes apart where it is joined.
picture() {
  printf '%s\n' "$2" >text
  "$editor" --batch --set WynTextViewNormalFontSize=36 \
    --set WynTextViewNormalFontName='DejaVu Sans Mono' --render "$1.png" --size 24x1 text
}
# What a picture has that the one of blanks hasn't: width, and distance from the left.
ink() {
  convert "$1.png" "$2.png" -compose difference -composite -threshold 10% -trim \
    -format '%w %X\n' info:
}
# The width of the widest part that hangs together.
widest_part() {
  convert "$1.png" "$2.png" -compose difference -composite -threshold 10% \
    -define connected-components:verbose=true -connected-components 8 null: |
    awk 'NR > 1 && $NF !~ /^(black|gray\(0\)|srgb\(0,0,0\))$/ { split($2, box, "x"); print box[1] }' |
    sort -n | tail -n 1
}

editor=$1
picture bars '|'
picture more_bars '|     |'
read -r thickness left < <(ink bars more_bars)  # of the second one, six cells after the first
picture next_bars '|      |'
read -r _ right < <(ink bars next_bars)
cell=$((right - left)) failed=0
begin=$((left - 5 * cell - (cell - thickness) / 2))  # of the cell after the first bar

while read -r language cells shape text; do
  # A machine without such a font shows boxes.
  [[ -n $(fc-list ":lang=$language" family) ]] || continue
  picture blank "|$(printf '%*s' "$cells" '')|"
  picture shown "|$text|"
  read -r width at < <(ink blank shown)
  room=$((cells * cell)) from=$((at - begin))
  problem=
  ((from >= -1 && from + width <= room + 1)) || problem='is not in its cells'
  ((2 * width >= room)) || problem='is squeezed'
  if [[ $shape == joined ]]; then
    (($(widest_part blank shown) * 10 >= width * 9)) || problem='comes apart'
  fi
  if [[ -n $problem ]]; then
    echo "$language $text $problem: $width pixels at $from of $room" >&2
    failed=1
  fi
done <<'END_OF_ROWS'
ar 4 joined بببب
ar 6 any مرحبا!
fa 5 any کتابخ
he 4 any שלום
hi 2 joined क्षि
bn 4 any বাংলা
ta 4 any தமிழ்
th 7 any ภาษาไทย
ja 4 any 漢字
ko 6 any 한국어
und-zsye 2 any 👨‍👩‍👧
und-zsye 4 any 👍🏽🇩🇪
END_OF_ROWS
((failed == 0))
