# Commands of bundles as filters: what they write is printed, and their status tells how it went.
program=$1
source "$(dirname "$0")/../command_bundle.sh"
mkdir "$bundle/Support"
command_item Upper replaceSelectedText 'tr a-z A-Z'
command_item Count showAsTooltip 'wc -c | tr -d " "'
command_item Page showAsHTML 'echo "b"; cat'
command_item Where discard 'printf "%s|%s|%s\n" "$QN_FILENAME" "$QN_BUNDLE_SUPPORT" "$PWD"'
command_item Bad replaceDocument 'echo broken; exit 3'
command_item Needs replaceDocument cat \
  '<key>requiredCommands</key><array><string>no-such</string></array>'
command_item Odd replaceDocument 'printf "\377"'
expect() {
  local status=0 printed
  printed=$("${@:3}" 2>errors; echo x) || true
  "${@:3}" >/dev/null 2>&1 || status=$?
  [[ ${printed%x} == "$2" && $status -eq $1 ]] ||
    { echo "${*:3}: printed ${printed%x} with status $status"; cat errors; exit 1; }
}
printf 'a\nb' >text
expect 0 $'A\nB' "$program" --batch --item Upper --input text
expect 0 $'A\nB' "$program" --batch --item Upper --print text text
[[ $("$program" --batch --item Upper --input - <text) == $'A\nB' ]]
expect 0 $'3\n' "$program" --batch --item Count --input text
expect 0 $'3\n' "$program" --batch --item Count text
expect 0 $'b\na\nb' "$program" --batch --item Page text
expect 0 "text|$bundle/Support|$PWD"$'\n' "$program" --batch --item Where --input text
expect 1 $'broken\n' "$program" --batch --item Bad --input text
expect 1 '' "$program" --batch --item Bad --save text
expect 1 '' "$program" --batch --item Needs --input text
expect 1 '' "$program" --batch --item Needs --save text
expect 1 '' "$program" --batch --item Odd --input text
expect 3 '' "$program" --batch --item Upper --input none
expect 2 '' "$program" --batch --item Upper --input text text
expect 2 '' "$program" --batch --input text
[[ $(cat text) == $'a\nb' ]]

# A file's name, and what stands in its folder, are never run.
mkdir hostile
cd hostile
printf '#!/bin/sh\ntouch %q\n' "$PWD/touched" >wc
chmod +x wc
cp wc tr
name=$'-$(touch touched)`touch touched`\';touch touched;"\n.txt'
printf 'x' >"./$name"
PATH=.:$PATH expect 0 $'1\n' "$program" --batch --set 'WynShellVariables=plist:()' --item Count --input "./$name"
expect 0 "$name|$bundle/Support|$PWD"$'\n' "$program" --batch --item Where --input "./$name"
[[ ! -e touched ]]
cd ..

# As markup, which is the text again without its tags.
printf 'int a = 1 < 2; // "x" & y\n' >a.c
"$program" --batch --print xml a.c >markup
grep -q '<comment.line' markup
sed 's/<[^>]*>//g; s/&lt;/</g; s/&gt;/>/g; s/&amp;/\&/g' markup | cmp - a.c

# The signal that ends the program ends its command, too.
command_item Long discard 'echo $$ >pid; exec sleep 60'
"$program" --batch --item Long text &
until [[ -s pid ]]; do sleep 0.05; done
kill -INT $! 2>/dev/null || true
kill -TERM $!
wait $! || true
for _ in {1..100}; do kill -0 "$(cat pid)" 2>/dev/null || exit 0; sleep 0.05; done
echo "the command goes on"
exit 1
