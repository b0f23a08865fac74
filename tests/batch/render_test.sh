# A picture begins with the first line when the caret is there, and shows the caret elsewhere.
first_row() { convert "$1" -crop 600x18+0+0 +repage "$2"; }
pixels_unlike() { compare -metric AE "$1" "$2" null: 2>&1 || [[ $? -eq 1 ]]; }

{ echo first; seq 50; } >long
echo first >short
"$1" --batch --render long.png --size 80x10 long
"$1" --batch --render short.png --size 80x10 short
first_row long.png a.png
first_row short.png b.png
[[ $(pixels_unlike a.png b.png) == 0 ]]
[[ $(convert a.png -format '%k' info:) -gt 1 ]]

cat >end <<'END'
<plist version="1.0"><array>
  <dict><key>command</key><string>moveToEndOfDocument:</string></dict>
</array></plist>
END
"$1" --batch --macro end --render end.png --size 80x10 --print selection long
first_row end.png c.png
[[ $(pixels_unlike a.png c.png) != 0 ]]

# What can't be written whole leaves the old picture, and is said.
cp short.png kept.png
status=0
(ulimit -f 1 && "$1" --batch --render kept.png long 2>err) || status=$?
[[ $status == 3 ]]
grep -q 'kept.png: File too large' err
cmp short.png kept.png
