# Find and replace in folders, beside grep and sed.
program=$1
find_in() { timeout 100 "$program" --batch --find "$@"; }
mkdir -p tree/sub/.git tree/build
cp /usr/include/*.h tree/sub/
cp /usr/include/linux/*.h tree/
printf 'caf\xe9 int\n' >tree/latin.c
printf 'int \0 int' >tree/data
ln -s .. tree/sub/round
printf 'build\n' >tree/.gitignore
echo int >tree/build/made.txt
echo int >tree/sub/.git/hidden

# The lines and their numbers are those of grep, as far as that knows charsets and folders.
same() { # PATTERN, grep's options
  local pattern=$1
  shift
  find_in "$pattern" --exclude latin.c tree | cut -d: -f1,2 | sort -u >ours || test ! -s ours
  LC_ALL=C.UTF-8 grep -rnIP "$@" --exclude-dir=.git --exclude=.gitignore --exclude=latin.c \
    -- "$pattern" tree | cut -d: -f1,2 | sort -u >theirs || test ! -s theirs
  cmp ours theirs
}
same 'int'
same '^#define\s+_\w+$'
same 'size_t \*?\w+\)'
same '\bu(?:8|16)\b'
same '[^/\n]\*/$'
same 'no such text anywhere'
find_in INT --ignore-case --fixed --count tree/sub | sort >ours
grep -rcIi int tree/sub --exclude-dir=.git | grep -v ':0$' | sort >lines
test "$(cut -d: -f1 ours)" = "$(cut -d: -f1 lines)"

# Names, globs, .gitignore, what is left out, and the exit status.
test "$(find_in 'int$' --include 'm*.txt' tree)" = tree/build/made.txt:1:1:int
find_in int --include '*.txt' --gitignore tree && exit 1 || test $? = 1
find_in 'caf.' --fixed tree && exit 1 || test $? = 1
test "$(find_in 'caf. ' tree/latin.c)" = "tree/latin.c:1:1:caf$(printf '\u00e9') int"
find_in int tree/data 2>said && exit 1 || test $? = 1
grep -q '1 binary file was not searched' said
find_in '(' tree 2>said && exit 1 || test $? = 2
grep -q 'find' said
find_in int missing 2>said && exit 1 || test $? = 3
find_in int -0 --count tree/latin.c | od -c | grep -q '\\0   1  \\n'
test "$(timeout 100 "$program" --batch --list-files tree | sort)" = \
  "$(find tree -type f ! -path '*/.git/*' ! -name '.*' | sort)"

# By scope, whose grammar is that of the file's language.
cat >scopes.c <<'END'
int a; /* int */
char const* s = "int"; // int
END
test "$(find_in int --scope comment scopes.c | cut -d: -f2,3)" = "$(printf '1:11\n2:27')"
test "$(find_in int --scope 'source - string - comment' scopes.c | cut -d: -f2,3)" = 1:1
test "$(find_in int --scope string --count scopes.c)" = scopes.c:1

# Replaced is what sed replaces, in the charset of each file; no other file is touched.
cp -r tree theirs.d
cp -r tree before
find_in '(\w+)_t\b' --replace '<$1>' tree >report
find theirs.d -type f -name '*.h' -exec perl -i -pe 's/(\w+)_t\b/<$1>/g' {} +
diff -r --no-dereference tree theirs.d
test "$(cut -d: -f1 report | sort)" = \
  "$(diff -rq --no-dereference before tree | sed 's/.* and \(.*\) differ/\1/' | sort)"
find_in int --replace '\u00e9' --fixed tree/latin.c >/dev/null
find_in int --scope comment --replace 'X$0' scopes.c >/dev/null
grep -q '^int a; /\* Xint \*/' scopes.c

# A project finds what its file lists.
mkdir moved
cat >moved/p.qnproj <<'END'
<plist version="1.0"><dict><key>documents</key><array>
<dict><key>filename</key><string>../scopes.c</string></dict>
<dict><key>sourceDirectory</key><string>../tree/build</string></dict></array></dict></plist>
END
test "$(find_in int --count moved/p.qnproj | wc -l)" = 2

# Files by a few letters.
mkdir -p names/one/two names/other
touch names/one/two/fooBar.c names/other/fabric.c names/other/fooBar.c
go_to() { timeout 100 "$program" --batch --go-to-file "$1" names; }
test "$(go_to fb:3:4)" = "$(printf 'names/%s:3:4\n' one/two/fooBar.c other/fooBar.c other/fabric.c)"
test "$(go_to o/t/fb)" = names/one/two/fooBar.c
go_to xyz && exit 1 || test $? = 1
