# Files around the text: what others do to them, recent ones, panels, and the window's place.

state_of() { find_window "$1"; }
geometry() { xdotool getwindowgeometry --shell "$window" | grep -E '^(WIDTH|HEIGHT|X|Y)='; }
geometry_is() { [[ $(geometry) == "$1" ]]; }

# An empty window offers what was opened last; the list goes with the first letter.
mkdir folder
printf 'one\n' >folder/one.txt
printf 'two\n' >two.txt
printf 'hidden\n' >folder/.hidden
start_editor folder/one.txt
wait_window one.txt
keys ctrl+q
wait_exit
edit two.txt
keys ctrl+q
wait_exit
start_editor
wait_window untitled
keys Down Down Return
wait_window one.txt
wait_until shows 'one'

# Panels begin in the folder of the document; hidden files are not shown before they are wanted.
keys ctrl+o
wait_window 'Quirnote: Open'
keys ctrl+h
type_text '.hidden'
keys Return
wait_window '^\.hidden'
keys ctrl+w
wait_window one.txt
keys ctrl+n
wait_window untitled
keys ctrl+w
wait_window one.txt

# Deleted, moved away, replaced by a folder and brought back.
rm folder/one.txt
wait_until state_of 'one.txt \(deleted\)'
mkdir folder/one.txt
wait_until state_of 'one.txt \(deleted\)'
rmdir folder/one.txt
printf 'one\n' >folder/one.txt
wait_until state_of 'one.txt[^(]*$'
git -c init.defaultBranch=main init -q folder
git -C folder add one.txt
git -C folder -c user.name=a -c user.email=a commit -qm one
git -C folder checkout -qb other
git -C folder rm -q one.txt
wait_until state_of 'one.txt \(deleted\)'
git -C folder checkout -qf main
wait_until state_of 'one.txt[^(]*$'
keys ctrl+End
type_text mine
cp two.txt folder/one.txt
wait_until state_of 'one.txt \(changed on disk\)'
answer Return
wait_window 'one.txt \(changed on disk\)'
keys ctrl+z
keys ctrl+w
answer Escape
wait_window 'one.txt \(changed on disk\)'
keys ctrl+s
wait_until state_of 'one.txt[^(]*$'
expect_file folder/one.txt $'one\n'

# The window comes back where it was.
xdotool windowsize --sync "$window" 600 400 windowmove --sync "$window" 310 170
placed=$(geometry)
quit
edit two.txt
wait_until geometry_is "$placed"
quit
