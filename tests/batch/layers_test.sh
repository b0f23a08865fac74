# Of preferences with the same selector the one of the higher layer wins: the user's own over
# installed ones, those over the machine's, and these over what ships.
program=$1
export XDG_DATA_DIRS=$PWD/machine
user=$XDG_DATA_HOME/Quirnote
printf '{"name": 1}\n' >file.json

# Adds a preference to the layer in a folder, by which the name of a symbol becomes another.
add_layer() {
  local bundle=$1/Test.qnbundle
  mkdir -p "$bundle/Preferences"
  cat >"$bundle/info.plist" <<XML
<plist><dict>
<key>name</key><string>$2</string>
<key>uuid</key><string>00000000-0000-4000-8000-0000000000$3</string>
</dict></plist>
XML
  cat >"$bundle/Preferences/Symbols.qnPreferences" <<XML
<plist><dict>
<key>name</key><string>$2</string>
<key>uuid</key><string>00000000-0000-4000-8000-1000000000$3</string>
<key>scope</key>
<string>source.json support.type.property-name - source.json meta.mapping meta.mapping - text</string>
<key>settings</key><dict>
<key>showInSymbolList</key><integer>1</integer>
<key>symbolTransformation</key><string>s/.*name.*/$2/</string>
</dict></dict></plist>
XML
}
expect() {
  local symbols
  symbols=$("$program" --batch --print symbols file.json)
  [[ $symbols == $'0\t'"$1" ]] || { echo "$symbols, not $1"; exit 1; }
}

expect name
add_layer "$XDG_DATA_DIRS/Quirnote/Bundles" machine 01
expect machine
add_layer "$user/Pristine Copy/Bundles" installed 02
expect installed
add_layer "$user/Bundles" own 03
expect own
