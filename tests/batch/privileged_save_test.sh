# Saving what the user may not write: the program that writes files for it alone, then the editor
# with a pkexec that gives the rights, refuses them or is missing.
program=$1
writer=$(dirname "$program")/../lib/quirnote/quirnote-write-file

fail() {
  echo "$*" >&2
  exit 1
}
identity() {
  python3 -c 'import os, sys; s = os.stat(sys.argv[1]); print(s.st_dev, s.st_ino, s.st_size,
    s.st_mtime_ns, sep=":")' "$1"
}
here=$PWD

# writes STATUS SIZE IDENTITY PATH: with "new text" on standard input.
writes() {
  local status=0
  printf 'new text' | "$writer" "${@:2}" >identity 2>err || status=$?
  [[ $status == "$1" ]] || fail "status $status instead of $1: ${*:2}: $(<err)"
}
mkdir folder
printf 'the old text' >folder/file
printf 'other' >other
ln -s file folder/link
ln -s folder via
ln -s nowhere folder/dangling
mkfifo pipe
this=$(identity folder/file)
while read -r status size identity path; do
  writes "$status" "$size" "$identity" "$path"
done <<END
2 8 $this
2 8x $this $here/folder/file
2 -8 $this $here/folder/file
2 99999999999999999999 $this $here/folder/file
2 8 ${this%:*} $here/folder/file
2 8 new $here/folder/none
2 8 new:1644 $here/folder/none
2 8 new:64x $here/folder/none
2 8 new:-1 $here/folder/none
2 8 New:644 $here/folder/none
2 8 $this folder/file
1 7 $this $here/folder/file
1 9 $this $here/folder/file
1 0 $this $here/folder/file
2 8 $(stat -c %d:%i folder/file) $here/folder/file
2 8 $this: $here/folder/file
1 8 $(identity other) $here/folder/file
1 8 ${this%:*:*}:13:${this##*:} $here/folder/file
1 8 ${this}1 $here/folder/file
1 8 new:644 $here/folder/file
1 8 new:644 $here/folder/dangling
1 8 new:644 $here/none/file
1 8 new:644 $here/folder/
1 8 $this $here/folder/link
1 8 $this $here/via/file
1 8 $this $here/folder/../folder/file
1 8 $this $here//folder/file
1 8 $this $here/./folder/file
1 8 $(identity pipe) $here/pipe
1 8 $(identity folder) $here/folder
1 8 $(identity /dev/null) /dev/null
END
[[ $(<folder/file) == 'the old text' && $(ls folder | wc -l) == 3 ]] || fail 'a refusal wrote'

chmod 4640 folder/file
ln folder/file folder/second
writes 0 8 "$this" "$here/folder/file"
this=$(identity folder/file)
[[ $(<identity) == "$this" ]] || fail "printed $(<identity) for $this"
[[ $(<folder/second) == 'new text' && $(stat -c %a folder/file) == 4640 ]] || fail "not in place"
for mode in 600 664; do
  name="folder/a $mode"$'\n'
  (umask 077; writes 0 8 "new:$mode" "$here/$name")
  [[ $(<"$name") == 'new text' && $(stat -c %a "$name") == "$mode" ]] || fail "mode $mode"
  [[ $(<identity) == "$(identity "$name")" ]] || fail "printed $(<identity) for a new file"
done
# No byte before the mode.
if strace -o calls -e openat,fchmod,write "$writer" 1 new:600 "$here/folder/calls" <<<'' >&2; then
  perl -0ne 'exit !/O_EXCL[^\n]*, 0600\)[^\n]*\nfchmod\([^\n]*\nwrite/' calls || fail "mode: $(<calls)"
fi
# What doesn't fit leaves the old text, and a new file is taken away again.
(ulimit -f 1 && head -c 9000 /dev/zero | "$writer" 9000 "$this" "$here/folder/file") 2>err && fail fits
(ulimit -f 1 && head -c 9000 /dev/zero | "$writer" 9000 new:644 "$here/folder/big") 2>err && fail fits
[[ $(<folder/second) == 'new text' && ! -e folder/big ]] || fail 'half-written'
rm -rf folder via

# The editor. As root it does without the right to write everything.
drop=()
[[ $(id -u) != 0 ]] || drop=(setpriv --bounding-set=-dac_override,-dac_read_search)
mkdir bin
echo '<plist><array><dict><key>command</key><string>insertText:</string><key>argument</key>
<string>new </string></dict></array></plist>' >type
edit() { # edit STATUS ARGUMENTS...
  local status=0
  PATH=$here/bin:/usr/bin:/bin "${drop[@]}" "$program" --batch --macro type --print state \
    "${@:2}" >out 2>err </dev/null || status=$?
  [[ $status == "$1" ]] || fail "status $status instead of $1: ${*:2}: $(<out) $(<err)"
}
pkexec() { printf '#!/bin/bash\n%s\n' "$1" >bin/pkexec && chmod +x bin/pkexec; }
# Gives the rights by which its owner writes the file, for so long.
gives='[[ $1 == --disable-internal-agent && $# == 5 ]] || exit 99
folder=${5%/*} mode=$(stat -c %a "$5" 2>&-)
chmod u+w "$folder"; [[ ! $mode ]] || chmod u+w "$5"
sleep 0.2
"${@:2}"; status=$?
[[ ! $mode ]] || chmod "$mode" "$5"
chmod u-w "$folder"
exit $status'

mkdir folder
seq 1 200000 >folder/file
ln -s folder via
old=$(sha1sum <folder/file)
new=$( (printf 'new '; seq 1 200000) | sha1sum)
chmod 0460 folder/file
chmod a-w folder
untouched() { [[ $(sha1sum <folder/file) == "$old" && $(ls folder) == file ]] || fail "$1"; }

# Who can change the program that writes would get the rights that are asked for.
part=$writer
part=$(realpath "$part")
while [[ $part != / && $(stat -c %u "$part") == 0 && $((0$(stat -c %a "$part") & 022)) == 0 ]]; do
  part=$(dirname "$part")
done
if [[ $part != / ]]; then
  pkexec 'touch called'
  edit 3 --save folder/file
  untouched 'a program that others may change'
  grep -q 'others may change the program' out || fail 'no reason given'
  [[ ! -e called ]] || fail 'pkexec was called'
  exit 0
fi

edit 3 --save folder/file
untouched 'missing pkexec'
grep -q 'Permission denied' out
pkexec 'exit 126'
edit 3 --save folder/file
untouched 'dismissed'
pkexec 'kill -9 $$'
edit 3 --save folder/file
untouched 'killed'
grep -q 'incomplete' out && fail 'told of damage that is none'
pkexec 'printf x | "${@:2}"'
edit 3 --save folder/file
untouched 'a text that breaks off'
grep -q 'did not arrive whole' out

pkexec 'chmod u+w "$5"; echo more >>"$5"; chmod u-w "$5"; '"$gives"
edit 3 --save folder/file
grep -q 'Another program has changed it' out || fail 'a change while the password is asked for'
[[ $(tail -n 1 folder/file) == more ]] || fail 'a change while the password is asked for is lost'
seq 1 200000 >whole && chmod u+w folder/file && cat whole >folder/file && chmod u-w folder/file

pkexec "$gives"
edit 0 --save via/file
[[ $(sha1sum <folder/file) == "$new" && $(stat -c %a folder/file) == 460 ]] || fail 'not saved'
grep -q '"alerts":\[\]' out
copies() { compgen -G "$XDG_STATE_HOME/Quirnote/SafetyCopy-*"; }
copies && fail 'a safety copy is left'
edit 0 --save-as "$here/folder/made" other
[[ $(<folder/made) == 'new other' ]]
edit 3 --save-as "$here/none/made" other
# A new file is nobody's to read who might not read the one that the text is of.
for mode in 600 644; do
  printf 'secret' >other && chmod $mode other
  (umask 022; edit 0 --save-as "$here/folder/made $mode" other)
  [[ $(stat -c %a "folder/made $mode") == "$mode" ]] || fail "made with $(stat -c %a folder/made*)"
done
rm -f other && seq 3 >other
(umask 077; edit 0 --save-as "$here/folder/umask" other)
[[ $(stat -c %a folder/umask) == 600 ]] || fail "umask: $(stat -c %a folder/umask)"

chmod 0460 folder/made
# Somebody replaces the file as soon as it is written: the next save doesn't take theirs for ours.
cp type once
echo '<plist><array><dict><key>command</key><string>saveDocument:</string></dict>
<dict><key>command</key><string>insertText:</string><key>argument</key><string>again </string></dict>
</array></plist>' >twice
sed -i 's|</array></plist>||' type
sed 's|<plist><array>||' twice >>type
pkexec "${gives%exit*}"'if [[ ! -e replaced ]]; then
  touch replaced; chmod u+w folder; echo theirs >folder/x; chmod 0460 folder/x; mv -f folder/x "$5"; chmod u-w folder
fi
exit $status'
edit 3 --save folder/made
[[ $(<folder/made) == theirs ]] || fail "replaced meanwhile: $(<folder/made)"
grep -q 'modified by another application' out || fail "no word of the change: $(<out)"
mv once type
pkexec "$gives"


# A disk that fails halfway: the text stands in a safety copy.
pkexec 'chmod u+w "$5"; echo torn >"$5"; chmod u-w "$5"
echo "quirnote-write-file: write: Input/output error" >&2
exit 3'
edit 3 --save folder/file
grep -q 'Input/output error. The file on disk is incomplete' out
tail -n +2 folder/file | grep -q . && fail 'not torn'
[[ $(tail -c 7 "$(copies)") == 200000 ]]
