# Ways to end the program, and what each keeps.
printf 'a\n' >a.txt
printf 'b\n' >b.txt

# Quitting by a key of a window whose changes aren't wanted, while another one is asked about.
with_defaults '<key>WynOpenFilesTogether</key><false/>'
start_editor a.txt b.txt
wait_window 'b.txt'
type_text 'B'
wait_window 'a.txt'
type_text 'A'
keys ctrl+q
wait_window '^Quirnote$'
summary=$window
keys Return
next_question() { find_window '^Quirnote$' && [[ $window != "$summary" ]]; }
wait_until next_question
wait_window '^Quirnote$'
keys Tab Tab space
wait_no_window 'a.txt'
answer Escape
wait_window 'b.txt'
expect_saved b.txt $'Bb\n'
expect_file a.txt $'a\n'

# Ctrl with the wheel changes the size of the text; a signal ends the program, and the size is kept.
xdotool keydown ctrl
click 100 60 4 2
xdotool keyup ctrl
kill -TERM "$editor_pid"
wait_exit
grep -A 1 WynTextViewNormalFontSize "$XDG_CONFIG_HOME/Quirnote/Defaults.plist" | grep -q '>14<'

# No dialog holds a signal up, whatever is open within it.
shown() { xdotool search --onlyvisible --class quirnote | wc -l; }
shows() { [[ $(shown) == "$1" ]]; }
for dialog in question replacing menu; do
  rm -rf "$XDG_STATE_HOME/Quirnote"
  edit b.txt
  before=$(shown)
  type_text 'unsaved'
  case $dialog in
    question)
      keys ctrl+q
      wait_window '^Quirnote$'
      ;;
    replacing)
      keys ctrl+shift+s
      wait_window '^Save As'
      keys ctrl+a
      type_text "$PWD/a.txt"
      keys Return
      wait_until shows $((before + 2))
      ;;
    menu)
      keys ctrl+o
      wait_window '^Quirnote: Open'
      click 200 150 3
      wait_until shows $((before + 2))
      ;;
  esac
  kill -HUP "$editor_pid"
  wait_exit
  expect_file b.txt $'Bb\n'
  grep -q unsaved "$XDG_STATE_HOME"/Quirnote/SafetyCopy-*
done
