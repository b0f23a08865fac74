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
  timeout 60 "$program" --batch "$@" >out 2>err </dev/null || status=$?
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

# A step that is misspelt never lets the steps around it empty a file.
macro misspelt selectAll: uppercaseWrod: deleteBackward:
printf 'kept' >kept
run 3 --macro misspelt --save kept
is err "beep: uppercaseWrod:\nquirnote: kept: not saved, as there is no action uppercaseWrod:\n"
[[ $(cat kept) == kept ]] || fail "a misspelt macro was saved"

# Under --strict a file for which anything failed stays as it is, and the others are saved.
printf 'y' >keeps
macro first_line insertText:=Q moveDown: moveDown:
run 1 --strict --macro first_line --save keeps a
is keeps 'y'
is a 'Qone\ntwo\n'
grep -q '^quirnote: keeps: not saved' err
run 0 --macro first_line --save keeps
is keeps 'Qy'
printf 'one\ntwo\n' >a

# An answer that nothing asked for, or with a button that nothing has, is one under --strict.
for answer in "No Such Title=OK" "Couldn't Open=Perhaps"; do
  run 0 --answer "$answer" b
  run 1 --strict --answer "$answer" b
  is err "quirnote: nothing asked for --answer \"$answer\"\n"
done
run 3 --strict --answer "Couldn't Open=Continue" /dev/null
! grep -q 'nothing asked' err

# Wrong usage stops before anything is done.
for wrong in --bogus -x '--set X' '--set X=plist:{' '--print all' '--size 3' \
  '--size 100000x100000' '--save --save-as c' '--save-as c a' '--save -' '--strict=yes' \
  '--macro - -' '--save-as - --print text'; do
  run 2 --macro type --save $wrong a
  is out ''
  grep -q '^usage: ' err
  is a 'one\ntwo\n'
done

# Help and version are there in every mode, whatever else is asked for.
for words in --help -h '--batch --help' '--batch --print text a --help'; do
  "$program" $words 2>err | grep -q '^usage: '
  is err ''
done
[[ $("$program" --batch --version) == Quirnote\ * ]]
"$program" --list-settings >out
grep -q '^| `WynTextViewTabSize` | an integer from 1 to 64 | `4` | ' out
for words in -x --bogus '--print text' '-- --batch -' '-'; do
  [[ $words != --\ * ]] || continue
  status=0
  "$program" $words >out 2>err || status=$?
  [[ $status == 2 ]] || fail "$words: $status"
  grep -q '^usage: ' err
done

# A file that can't be used leaves the others alone, and nothing is printed or written for it.
mkdir folder
truncate -s 3G large
run 3 --print text nothing folder large /dev/null b
is out '==> b <==\nx'
[[ $(wc -l <err) == 4 ]]
grep -q '^quirnote: large: .*“large” could not be read\. It has 3\.0 GiB' err
printf 'kept' >kept
run 3 --macro type --save-as kept large
is kept 'kept'
run 3 --macro type --save large
[[ $(stat -c %s large) == 3221225472 ]]
rm large
run 3 --strict --macro fails --print text nothing b

# A macro with anything wrong in it isn't begun, and is told with its place.
printf '<plist><array>\n<dict></array></plist>' >torn
step='<dict><key>command</key><string>insertText:</string><key>argument</key><string>S</string></dict>'
printf '<plist><array>%s<dict><key>comand</key><string>x</string></dict></array></plist>' "$step" >odd
printf '<plist><array>%s<string>x</string></array></plist>' "$step" >stray
printf '<plist><array><dict><key>command</key><string>x</string><key>arguments</key><true/></dict></array></plist>' >misspelt
printf '<plist><dict><key>comands</key><array/></dict></plist>' >shapeless
for wrong in torn:2: odd stray misspelt shapeless missing; do
  run 3 --macro type --macro "${wrong%%:*}" --print text --save a nothing
  is out ''
  is a 'one\ntwo\n'
  grep -q "^quirnote: $wrong" err && [[ $(wc -l <err) == 1 ]] || fail "$wrong: $(<err)"
done

# Pipes and standard input are read as text; a pipe can't be saved, but written elsewhere.
mkfifo pipe
printf 'p' >pipe & run 0 --macro type --print text pipe
is out 'Qp'
printf 'p' >pipe & run 3 --save pipe
printf 's\r\nt' | "$program" --batch --macro type --print text --print state - >out
grep -q '^Qs$' out && grep -q '"lineEnding":"crlf"' out
printf '\xEF\xBB\xBFs\r\nt\r\n' | "$program" --batch --macro type --save-as - - >out
is out '\xEF\xBB\xBFQs\r\nt\r\n'
"$program" --batch --print text <(printf sub) | cmp - <(printf sub)
status=0
"$program" --batch --print text - <&- >out 2>err || status=$?
[[ $status == 3 && ! -s out ]] && grep -q 'standard input' err

# Text is printed with line feeds and without a mark, whatever the file has.
printf '\xEF\xBB\xBFa\r\nb\rc\n' >marked
run 0 --print text marked
is out 'a\nb\nc\n'

# Header lines begin lines, and names don't break them; -0 gives names and texts as they are.
odd=$'od\nd\\\xFF\xE2\x80\xAE'
printf 'n' >"$odd"
run 0 --print text b "$odd" a
is out '==> b <==\nx\n==> od\\nd\\\\\\xFF\\xE2\\x80\\xAE <==\nn\n==> a <==\none\ntwo\n'
run 0 -0 --print text "$odd" b
printf '%s\0n\0b\0x\0' "$odd" | cmp - out
run 0 --null --print text b
is out 'b\0x\0'
run 3 "$odd"$'\n'
is err 'quirnote: od\\nd\\\\\\xFF\\xE2\\x80\\xAE\\n: no such file\n'
ln -s loop loop
run 3 loop
is err 'quirnote: loop: Too many levels of symbolic links\n'
mkdir "bundle$odd"
run 1 --check-bundle "bundle$odd"
is out 'bundleod\\nd\\\\xFF\\xE2\\x80\\xAE/info.plist: No such file or directory\n'
mkdir -p "data/Quirnote/Bundles/$odd.qnbundle"
XDG_DATA_HOME=$PWD/data run 0 --print scopes b
grep -qF '\xFF\xE2\x80\xAE.qnbundle/info.plist: No such file' err
# In a folder that has been deleted a name leads nowhere, and not to the root folder.
mkdir deleted
(cd deleted && rmdir ../deleted && ! "$program" --batch --save-as quirnote-test "$OLDPWD/b" 2>/dev/null)
[[ ! -e /quirnote-test ]]

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
for words in '--batch --print text long' '--batch --save-as - long' '--batch --print text b' \
  '--batch --check-bundle nothing' --help --version; do
  for output in /dev/full closed; do
    status=0
    if [[ $output == closed ]]; then
      "$program" $words >&- 2>err || status=$?
    else
      "$program" $words >"$output" 2>err || status=$?
    fi
    [[ $status == 3 ]] && grep -q 'standard output' err || fail "$words >$output: $status $(<err)"
  done
done

# A pipe that whoever reads it has set not to wait.
for words in '--print text' '--save-as -'; do
  python3 -c '
import os, subprocess, sys, time
reader, writer = os.pipe()
os.set_blocking(writer, False)
process = subprocess.Popen(sys.argv[1:], stdout=writer)
os.close(writer)
time.sleep(0.1)
sys.stdout.buffer.write(os.fdopen(reader, "rb").read())
sys.exit(process.wait())' "$program" --batch $words long >out
  cmp out long
done

# With all of them closed no file gets the number of a stream that is written to.
"$program" --batch --macro type --print text --save-as closed b <&- >&- 2>&- || true
is closed 'QQx'

# Saved under a new name, a file has the old one's permissions less what the umask takes.
(
  printf 'x' >private && chmod 600 private
  printf 'x' >shared && chmod 666 shared
  printf 'x' >runs && chmod 4755 runs
  printf 'x' >other.new && chmod 604 other.new
  umask 027
  for name in private:600 shared:640 runs:750; do
    run 0 --save-as "${name%:*}.new" "${name%:*}"
    [[ $(stat -c %a "${name%:*}.new") == "${name#*:}" ]] || fail "$name: $(stat -c %a *.new)"
    run 0 --save-as other.new "${name%:*}"
    [[ $(stat -c %a other.new) == 604 ]] || fail "$name: $(stat -c %a other.new)"
  done
)

# Settings hold for the run; a file of settings or key bindings that is torn doesn't stop it.
run 0 --set WynTextViewTabSize=7 --print state b
grep -q '"tabSize":7' out
for wrong in WynTextViewTabSize=0 WynTextViewTabSize=plist:\(7\) WynTextViewTabsize=7; do
  run 0 --set "$wrong" --print state b
  grep -q '"tabSize":4' out
  grep -q "^quirnote: --set: .*${wrong%=*}" err
  cp a same
  run 2 --set "$wrong" --strict --macro type --save a
  cmp a same
done
run 0 --set org.example.width=7 --strict b
is err ''
mkdir -p "$XDG_CONFIG_HOME/Quirnote" "$XDG_DATA_HOME/Quirnote"
echo '<plist><dict>' >"$XDG_CONFIG_HOME/Quirnote/Defaults.plist"
echo "{ 'a' = " >"$XDG_DATA_HOME/Quirnote/KeyBindings.dict"
run 0 --print state b
grep -q '"tabSize":4' out
[[ $(<"$XDG_CONFIG_HOME/Quirnote/Defaults.plist") == '<plist><dict>' ]]  # its owner is to mend it
rm "$XDG_CONFIG_HOME/Quirnote/Defaults.plist"

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
