# Memory that runs out at any point: a file is done, or refused with its name and exit status 3,
# with nothing printed or written for it. Never a signal, never half a result.
program=$1
macro() {
  echo '<plist><array>'
  local step
  for step; do
    echo "<dict><key>command</key><string>${step%%=*}</string>"
    [[ $step == *=* ]] && echo "<key>argument</key><string>${step#*=}</string>"
    echo '</dict>'
  done
  echo '</array></plist>'
}
macro selectAll: copy: moveToEndOfDocument: paste: paste: undo: >grow
macro moveToEndOfDocument: deleteToBeginningOfLine: insertText:=x selectAll: uppercaseWord: >edit
seq 40000 | sed 's/.*/int f&(void) { return "&"; }/' >text.c
printf small >small
cp text.c original.c
size=$(stat -c %s text.c)

refused=0 done=0
for kilobytes in {24..144..20}; do
  for arguments in '--print text' '--print scopes' '--macro grow --print text' \
    '--macro edit --save' '--macro grow --save-as copy.c'; do
    rm -f copy.c
    cp original.c text.c
    status=0
    (
      ulimit -v $((kilobytes * 1000))
      timeout 100 "$program" --batch $arguments text.c >out 2>err
    ) || status=$?
    case $status in
      0) done=$((done + 1)) ;;
      3)
        refused=$((refused + 1))
        grep -q 'memory' err || { cat err; exit 1; }
        [[ ! -e copy.c ]] && cmp text.c original.c
        [[ $arguments == *scopes ]] || [[ ! -s out ]]
        ;;
      127) ;; # not even the program could be loaded
      *)
        echo "status $status with $kilobytes MB: $arguments" >&2
        cat err >&2
        exit 1
        ;;
    esac
  done
done
echo "$done done, $refused refused"
((done > 5 && refused > 5))
