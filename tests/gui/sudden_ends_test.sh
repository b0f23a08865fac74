# Ends that ask nothing: what isn't saved is offered at the next start.
question_after() { find_window '^Quirnote$' && [[ $window != "$1" ]]; }
copies() { find "$XDG_STATE_HOME/Quirnote" -name 'SafetyCopy-*' | wc -l; }

for end in TERM HUP display; do
  printf 'saved\n' >file.txt
  edit file.txt
  keys ctrl+End
  type_text "by $end"
  keys ctrl+n
  wait_window 'untitled'
  type_text "nowhere by $end"
  if [[ $end == display ]]; then
    wait_until shows "nowhere by $end"
    keys ctrl+plus  # a setting that isn't stored yet
    xdotool windowkill "$window"
    wait_exit 1
  else
    kill -"$end" "$editor_pid"
    wait_exit
  fi
  expect_file file.txt $'saved\n'
  [[ $(copies) == 2 ]]

  start_editor
  wait_window '^Quirnote$'
  first=$window
  keys Return
  wait_until question_after "$first"
  answer Return
  wait_window 'untitled.*\*'
  wait_until shows "nowhere by $end"
  keys ctrl+w
  wait_window '^Quirnote$'
  keys Tab Tab space
  wait_window 'file.txt\*'
  wait_until shows $'saved\nby '"$end"
  expect_saved file.txt $'saved\nby '"$end"$'\n'
  quit
  [[ $(copies) == 0 ]]
done

# Where no folder takes the text, as no file can be opened, the program says so, and with its status.
printf 'saved\n' >file.txt
edit file.txt
type_text 'nowhere '
wait_window 'file.txt\*'
prlimit --pid "$editor_pid" --nofile=6:
kill -TERM "$editor_pid"
wait_exit 1
grep -q '^Quirnote: the text of file.txt is lost: ' program.log
expect_file file.txt $'saved\n'
[[ $(copies) == 0 ]]

# A terminal that is closed sends its signal several times over, faster than a large text is kept.
head -c 3000000 /dev/zero | tr '\0' x | fold >large.txt
for end in TERM HUP; do
  edit large.txt
  keys b
  wait_window 'large.txt\*'
  for ((n = 0; n < 50; ++n)); do
    kill -"$end" "$editor_pid" 2>/dev/null || break
    sleep 0.002
  done
  wait_exit
  grep -q bxxx "$XDG_STATE_HOME"/Quirnote/SafetyCopy-*
  rm "$XDG_STATE_HOME"/Quirnote/SafetyCopy-*
done
