# A C file shows in the colours of its language and of the theme, which change with the text, with
# the language and with the theme.
printf 'int main(void) {\n  return 0;\n}\n' >file.c
with_defaults '<key>WynTextViewAntiAliasEnabled</key><false/>'
# color_of WORD STYLE...: how batch mode says that the run with this word is drawn.
color_of() {
  "$editor" --batch --print styles file.c | awk -v word="$1" '
    !/^[0-9]+\t/ { at = index($0, word) - 1; next }
    at >= 0 && $1 == at { print $2; exit }'
}
shows_color() {
  screenshot now.png
  convert now.png -format %c histogram:info:- | grep -q "$1"
}
hides_color() { ! shows_color "$1"; }

keyword=$(color_of return)
[[ $keyword == '#'?????? ]]
edit file.c
wait_until shows_color "$keyword"

type_text '/*'
wait_until hides_color "$keyword"
keys ctrl+z
wait_until shows_color "$keyword"

# What Show Scope says can be selected and copied, as far as it goes.
keys ctrl+alt+p
wait_window '^Scope$'
keys ctrl+a ctrl+c Escape
copied_scopes() { xclip -o -selection clipboard | grep -qx '  source.c'; }
wait_until copied_scopes
wait_no_window '^Scope$'
wait_window 'file.c'

# The View menu: the first theme.
keys alt+v
keys Down Down Down Down Down Right Return
wait_until shows_color '#000000'
wait_until hides_color "$keyword"
# Batch mode draws in the theme that was chosen as soon as the window has stored it.
has_changed() {
  themed=$(color_of return)
  [[ $themed == '#'?????? && $themed != "$keyword" ]]
}
wait_until has_changed
screenshot dark.png
wait_until shows_color "$themed"
