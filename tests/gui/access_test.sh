# What a screen reader gets to know over the bus of assistive programs, while the user types.
if ! /usr/bin/python3 -c 'import gi; gi.require_version("Atspi", "2.0")' 2>/dev/null; then
  echo "skipped: python3-gi and gir1.2-atspi-2.0 aren't installed"
  exit 0
fi
gdbus call --session --dest org.a11y.Bus --object-path /org/a11y/bus \
  --method org.freedesktop.DBus.Properties.Set org.a11y.Status IsEnabled '<true>'
printf 'int main() {\n\treturn 1; // x\n}\n' >file.cc
edit file.cc
/usr/bin/python3 "$(dirname "${BASH_SOURCE[0]}")/access_reader.py"
keys ctrl+s
quit
