# What scripts rely on: exit statuses, what goes where, several files with one macro.
program=$1

fail() {
  echo "$*" >&2
  exit 1
}
# run STATUS ARGUMENTS...: leaves standard output in ./out and standard error in ./err.
run() {
  local expected=$1 status=0
  shift
  "$program" --batch "$@" >out 2>err </dev/null || status=$?
  [[ $status == "$expected" ]] || fail "status $status instead of $expected: $* : $(<err)"
}
# is FILE TEXT: the file holds the text, in which \n and the like are escapes.
is() { printf "$2" | cmp - "$1" || fail "$1 is: $(cat -A "$1")"; }
# macro NAME STEP...: each step is SELECTOR or SELECTOR=ARGUMENT.
macro() {
  local name=$1 step
  shift
  {
    echo '<plist version="1.0"><dict><key>commands</key><array>'
    for step; do
      echo "<dict><key>command</key><string>${step%%=*}</string>"
      [[ $step == *=* ]] && echo "<key>argument</key><string>${step#*=}</string>"
      echo '</dict>'
    done
    echo '</array></dict></plist>'
  } >"$name"
}

printf 'one\ntwo\n' >a
printf 'x' >b
macro type insertText:=Q
macro fails insertText:=Q noSuchThing: undo: undo: insertText:=R

# Nothing asked for is nothing printed; several prints come in their order, with nothing between.
run 0
is out ''
run 0 --print text --print selection --print text b
is out 'xx'
is err ''
run 0 --macro type --print text a b
is out '==> a <==\nQone\ntwo\n==> b <==\nQx'
is a 'one\ntwo\n'

# Beeps are named, and count under --strict only.
run 0 --macro fails --print text b
is out 'Rx'
is err 'beep: noSuchThing:\nbeep: undo:\n'
run 1 --strict --macro fails --print text b
is out 'Rx'
run 0 --strict --macro type b

# Wrong usage stops before anything is done.
for wrong in --bogus '--set X' '--set X=plist:{' '--print all' '--size 3' \
  '--save --save-as c' '--save-as c a'; do
  run 2 --macro type --save $wrong a
  is out ''
  grep -q '^usage: ' err
  is a 'one\ntwo\n'
done

# A file that can't be used leaves the others alone.
mkdir folder
mkfifo pipe
run 3 --print text nothing folder pipe /dev/null b
is out '==> nothing <==\n==> folder <==\n==> pipe <==\n==> /dev/null <==\n==> b <==\nx'
[[ $(wc -l <err) == 4 ]]
run 3 --strict --macro fails --print text nothing b

# What is wrong in a macro is told with its place; the rest is used.
printf '<plist><array>\n<dict></array></plist>' >torn
run 3 --macro torn --macro type --print text b
is out 'Qx'
grep -q '^quirnote: torn:2:[0-9]*: ' err
run 3 --macro missing --macro type --print text b
is out 'Qx'
cat >odd <<'XML'
<plist><array><string>x</string><dict/>
<dict><key>command</key><string>insertText:</string><key>argument</key><string>S</string></dict>
</array></plist>
XML
run 3 --macro odd --print text b
is out 'Sx'
[[ $(grep -c '^quirnote: odd: step' err) == 2 ]]

# Standard input is read for --macro - and else by nobody, closed or not.
"$program" --batch --macro - --print text b <type >out
is out 'Qx'
"$program" --batch --print text b <&- >out
is out 'x'

# Saving: in place, elsewhere, only with consent where a file is read-only.
run 0 --macro type --save a b
is out ''
is a 'Qone\ntwo\n'
is b 'Qx'
run 0 --macro type --save-as c b
is b 'Qx'
is c 'QQx'
run 3 --save
run 3 --save-as none/such/folder b
chmod a-w b
if [[ $(id -u) == 0 ]]; then
  echo "root may write everything: read-only files are left out" >&2
else
  run 3 --macro type --save b
  is b 'Qx'
  run 0 --macro type --save --answer "Couldn't Save=Overwrite" b
  is b 'QQx'
fi

# Output that can't be written is a file that can't be written.
status=0
seq 1 100000 >long
"$program" --batch --print text long >/dev/full 2>err || status=$?
[[ $status == 3 ]]

# Settings hold for the run; a file of settings or key bindings that is torn doesn't stop it.
run 0 --set WynTextViewTabSize=7 --print state b
grep -q '"tabSize":7' out
mkdir -p "$XDG_CONFIG_HOME/Quirnote" "$XDG_DATA_HOME/Quirnote"
echo '<plist><dict>' >"$XDG_CONFIG_HOME/Quirnote/Defaults.plist"
echo "{ 'a' = " >"$XDG_DATA_HOME/Quirnote/KeyBindings.dict"
run 0 --print state b
grep -q '"tabSize":4' out
grep -rqF "<plist><dict>" "$XDG_CONFIG_HOME/Quirnote"  # kept for its owner to mend

# A lone surrogate comes as its three bytes, and a pair as one character.
printf '\xFE\xFF\xD8\x00\x00a\xD8\x3D\xDE\x00' >half
run 0 --print text half
is out '\xED\xA0\x80a\xF0\x9F\x98\x80'

# What typing does depends on the language at the caret, however soon it is typed.
printf '// .\nx =  \n' >quotes.c
macro quotes moveRight: moveRight: moveRight: "insertText:='" moveDown: "insertText:='"
run 0 --macro quotes --print text quotes.c
is out "// '.\nx = '' \n"

# A macro that is repeated does what its steps do when they stand there so often, one failing too.
printf 'a\nb\nc\n' >three
macro line insertText:=x moveDown: moveToBeginningOfLine:
run 0 --macro line --repeat 5 --print text three
is out 'xa\nxb\nxc\nxx'
run 1 --strict --macro line --repeat 5 three
is err 'beep: moveDown:\n'
