# Windows with the output of commands: pages in the real browser, what their scripts may do and
# what not, places in files.
source "$gui/../command_bundle.sh"
mkdir sub

# page NAME KEY: a command that Ctrl+Super+KEY runs; its text comes by standard input.
page() {
  command_item "$1" showAsHTML "$(cat)" "
    <key>keyEquivalent</key><string>^@$2</string><key>input</key><string>none</string>"
}

# What its scripts find is written by a command of theirs, as only scripts that run can do.
export RESULTS=$PWD/results
page Scripts 1 <<'END_OF_FILE'
cat <<'PAGE'
<!DOCTYPE html><meta charset="utf-8"><pre id="output">begun
PAGE
while [[ ! -e go_on ]]; do sleep 0.05; done
cat <<'PAGE'
file.txt:3:2: error: first
</pre><p>sub/other.txt:1: second</p>
<script>
const ended = Quirnote.system("echo out; echo err >&2; exit 3");
const busy = Quirnote.isBusy;
let read = "";
const running = Quirnote.system("echo é; cat; printf '\\342\\202'; sleep 0.1; printf '\\254'", end);
running.onreadoutput = text => { read += text; };
running.write("typed 𝄞\n");
running.close();
function end(command) {
  const all = [ended.outputString.trim(), ended.errorString.trim(), ended.status, read,
               command.status, busy, document.links.length];
  const write = Quirnote.system("cat >$RESULTS.new; mv $RESULTS.new $RESULTS", () => {});
  write.write(all.join("|"));
  write.close();
}
</script>
PAGE
END_OF_FILE

# What a page asks of this server is refused.
python3 - <<'END_OF_FILE' &
import pathlib, socket
server = socket.create_server(("127.0.0.1", 0))
pathlib.Path("port.new").write_text(str(server.getsockname()[1]))
pathlib.Path("port.new").rename("port")
server.settimeout(300)
server.accept()
pathlib.Path("reached").touch()
END_OF_FILE
server_pid=$!
wait_until eval '[[ -e port ]]'
echo 'secret' >secret.txt
PORT=$(<port)
page Forbidden 2 <<END_OF_FILE
echo '<!DOCTYPE html><meta charset="utf-8">
<img src="http://127.0.0.1:$PORT/i"><link rel="preconnect" href="http://127.0.0.1:$PORT">
<link rel="stylesheet" href="http://127.0.0.1:$PORT/s"><iframe src="http://127.0.0.1:$PORT/f"></iframe>
<form id="form" action="http://127.0.0.1:$PORT/post" method="post"></form>
<iframe id="frame" src="file://$PWD/secret.txt"></iframe>
<a id="download" download="x" href="data:text/plain,x">x</a>
<script>
const found = [];
const note = name => () => found.push(name);
const url = "http://127.0.0.1:$PORT/";
const file = "file://$PWD/secret.txt";
for (const each of [url, file, "qn-file://$PWD/secret.txt", "qn-internal://local/1.html"]) {
  fetch(each).then(note("fetch " + each)).catch(() => {});
  const request = new XMLHttpRequest();
  request.onload = note("request " + each);
  try { request.open("GET", each); request.send(); } catch (error) {}
}
new WebSocket("ws://127.0.0.1:$PORT/").onopen = note("socket");
new EventSource(url).onopen = note("events");
navigator.sendBeacon(url, "x");
if (window.RTCPeerConnection) found.push("peers");
if (window.open(url) || window.open("about:blank")) found.push("window");
try { document.getElementById("frame").contentDocument.body.textContent.includes("secret") && found.push("frame"); } catch (e) {}
document.getElementById("download").click();
document.getElementById("form").submit();
setTimeout(() => Quirnote.system("printf %s \"" + found.join() + "|\" >\$RESULTS.new; mv \$RESULTS.new \$RESULTS"), 1500);
</script>'
END_OF_FILE

page Foreign 3 <<'END_OF_FILE'
echo '<script>const made = Quirnote.system("touch $RESULTS.foreign");</script>shown'
exit 205
END_OF_FILE
sed -i 's/showAsHTML/discard/' "$bundle/Commands/Foreign.qnCommand"

page Flood 4 <<'END_OF_FILE'
echo "<pre>$BASHPID" >flood.pid; echo '<pre>'; yes 'a line of a flood that never ends'
END_OF_FILE

for n in 1 2 3 4; do echo "text $n"; done | tee file.txt >sub/other.txt
with_defaults '<key>WynCommandOutputLimit</key><integer>4096</integer>'  # no question meanwhile
start_editor file.txt
wait_window 'file.txt'
# Nothing of the browser is loaded before its first page.
has_browser() { grep -q -i 'desktop_web\|webengine' "/proc/$editor_pid/maps"; }
[[ -z $(has_browser && echo loaded) ]]
keys ctrl+super+1
wait_window '^Scripts'
has_browser
scripts=$window
touch go_on
wait_until eval '[[ -e results ]]'
expect_file results $'out|err|3|é\ntyped 𝄞\n€|0|true|2'
wait_until eval '! pgrep -f "[w]hile.*go_on"'

# F8 walks through the places, from the window with output and in the editor. A key reaches the
# program by way of the page, so its window is waited for.
go_by() {
  keys "$1"
  wait_until eval "find_window '$2' && has_focus"
}
wait_window '^Scripts'
go_by F8 'file.txt'
type_text 'A'
keys ctrl+s
expect_file file.txt $'text 1\ntext 2\ntAext 3\ntext 4\n'
go_by F8 'other.txt'
go_by shift+F8 'file.txt'
type_text 'B'
keys ctrl+s
expect_file file.txt $'text 1\ntext 2\ntBAext 3\ntext 4\n'

# The next run is shown in the same window.
rm results
keys ctrl+super+1
wait_until eval '[[ -e results ]]'
wait_window '^Scripts'
[[ $window == "$scripts" ]]

# It is printed, here into a file.
keys ctrl+alt+shift+p
wait_window '^Print'
keys Return
is_printed() { [[ $(head -c 5 "$HOME/print.pdf") == %PDF- && $(tail -c 6 "$HOME/print.pdf") == *%%EOF* ]]; }
wait_until is_printed

# A page reaches nothing: not a server on this machine, nor files, windows or downloads.
rm results
wait_window 'file.txt'
keys ctrl+super+2
wait_until eval '[[ -e results ]]'
expect_file results '|'
[[ ! -e reached ]]
kill "$server_pid"
grep -q 'Quirnote: a page may not load http://127.0.0.1' program.log

# A page of no scheme of the program's runs no commands.
wait_window 'file.txt'
keys ctrl+super+3
wait_window '^Foreign'
wait_until grep -q '^Quirnote: Offending page was loaded from qn-shown:.* (qn-shown)' program.log
[[ ! -e results.foreign ]]

# While a command prints without end, the editor answers; it ends with its window, after a question.
wait_window 'file.txt'
keys ctrl+super+4
wait_window '^Flood'
flood=$window
wait_window 'file.txt'
for letter in C D E; do
  type_text "$letter"
  keys ctrl+s
done
expect_file file.txt $'text 1\ntext 2\ntBCDEAext 3\ntext 4\n'
window=$flood
xdotool windowactivate --sync "$window"
keys ctrl+w
wait_window '^Quirnote$'
keys Return
wait_no_window '^Flood'
wait_until eval '! pgrep -f "[f]lood that never ends"'

# The browser's process costs its page only, which is shown again.
renderers() {
  local pid parent
  for pid in $(pgrep -f 'QtWebEngineProcess --type=renderer'); do
    parent=$pid
    while ((parent > 1 && parent != editor_pid)); do
      parent=$(awk '/^PPid/ { print $2 }' "/proc/$parent/status" 2>/dev/null || echo 1)
    done
    ((parent != editor_pid)) || echo "$pid"
  done
}
wait_window '^Scripts'
for pid in $(renderers); do kill -KILL "$pid"; done
wait_until grep -q "^Quirnote: the process of the page of 'Scripts' has ended" program.log
rm results
keys F5
wait_until eval '[[ -e results ]]'
wait_window 'file.txt'
keys ctrl+q
wait_exit
no_window .
