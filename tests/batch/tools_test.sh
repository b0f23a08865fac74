# What the Text menu makes of whole files, against the shell's tools where the rules are the same.
program=$1
root=$(cd "$(dirname "$0")/../.." && pwd)

# Real files: those with tabs, and plain words, which fmt and textwrap don't take for sentences.
mkdir real plain words
cp "$root"/docs/*.md "$root"/src/text/*.cc "$root"/share/menus.plist real
for file in real/*; do
  LC_ALL=C grep -q -P '[^\x00-\x7f]' "$file" || cp "$file" plain
  tr -cs 'A-Za-z\n' ' ' <"$file" | sed 's/^ *//; s/ *$//' | awk '{ print } NR % 10 == 0 { print "" }' |
    cat -s | sed -e '1{/^$/d}' -e '${/^$/d}' >"words/${file#*/}"
done

wrapped() {
  python3 -c '
import sys, textwrap
print("\n\n".join(textwrap.fill(part, 78, break_on_hyphens=False)
                  for part in sys.stdin.read().split("\n\n")), end="")'
}

# check FOLDER TAB_SIZE ACTIONS COMMAND: all files of the folder, in one run of the program.
check() {
  local folder=$1 size=$2 actions=$3 command=$4 action file
  {
    echo '<plist version="1.0"><array>'
    for action in selectAll: $actions; do
      echo "<dict><key>command</key><string>$action</string></dict>"
    done
    echo '</array></plist>'
  } >macro
  rm -rf made && cp -r "$folder" made
  "$program" --batch --strict --set WynTextViewTabSize="$size" \
    --set WynDetectIndentation=false --macro macro --save made/*
  for file in made/*; do
    LC_ALL=C bash -c "$command" <"$folder/${file#*/}" | cmp - "$file" ||
      { echo "$actions differs from $command in $file" >&2; exit 1; }
  done
}

export -f wrapped
check plain 8 changeTabsToSpaces: 'expand -t 8'
check plain 3 changeTabsToSpaces: 'expand -t 3'
check plain 8 changeSpacesToTabs: 'expand -t 8 | unexpand -a -t 8'
check plain 4 changeSpacesToTabs: 'expand -t 4 | unexpand -a -t 4'
check real 4 sortLines: sort
check real 4 'sortLines: uniqueLines:' 'sort | uniq'
check real 4 uniqueLines: "awk '!seen[\$0]++'"
check real 4 reverseLines: tac
check words 4 unwrapText: 'fmt -w 2500'
check words 4 reformatText: 'wrapped; echo'
