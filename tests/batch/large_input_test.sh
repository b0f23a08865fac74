# Input that is out of the ordinary in size or kind: no crash, no hang, no memory by the square.
program=$1
ulimit -v 4000000
macro() {
  echo '<plist><array>'
  local step
  for step; do
    if [[ $step == columns:* ]]; then
      echo "<dict><key>command</key><string>selectToLine:andColumn:</string><key>argument</key>
        <dict><key>line</key><integer>${step#*:}</integer><key>column</key><integer>1</integer>
        <key>columnSelection</key><true/></dict></dict>"
    else
      echo "<dict><key>command</key><string>${step%%=*}</string>
        <key>argument</key><string>${step#*=}</string></dict>"
    fi
  done
  echo '</array></plist>'
}

# A key typed, and one taken back, in a hundred thousand lines at a time.
seq 1 100000 >lines
macro columns:100000 insertText:=x insertText:=yz deleteBackward: >type
timeout 100 "$program" --batch --macro type --print text lines >typed
sed 's/^/xy/' lines | cmp - typed
macro columns:100000 insertText:=x insertText:=yz undo: undo: redo: >undo
timeout 100 "$program" --batch --macro undo --print text lines | cmp - <(sed 's/^/x/' lines)

# One line of 50 MB.
head -c 50000000 /dev/zero | tr '\0' 'a' >long
macro moveToEndOfDocument:= insertText:=b moveLeft:= insertText:=c moveToBeginningOfLine:= >ends
timeout 100 "$program" --batch --macro ends --print text long | tail -c 4 >end
[[ $(<end) == aacb ]]

# Any bytes at all, and files of nothing but zeros, come back as they were.
head -c 1000000 /dev/zero >zeros
timeout 100 "$program" --batch --save zeros
[[ $(tr -d '\0' <zeros | wc -c) == 0 && $(wc -c <zeros) == 1000000 ]]
for n in 1 2 3; do
  head -c 300000 /dev/urandom >"random$n"
done
timeout 100 "$program" --batch --macro ends --print state random* >/dev/null

# A thousand files in one run, and real ones.
mkdir many
for n in {1..1000}; do echo "$n" >"many/$n"; done
macro moveToEndOfLine: insertText:=! >mark
timeout 100 "$program" --batch --macro mark --save many/*
[[ $(cat many/{1..1000}) == "$(seq -f '%g!' 1 1000)" ]]
for file in /usr/include/*.h; do
  timeout 100 "$program" --batch --print text "$file" | cmp - "$file"
done
