# Sourced by tests: $bundle is a bundle of the user's, to which command_item adds commands.
bundle=$XDG_DATA_HOME/Quirnote/Bundles/Test.qnbundle
mkdir -p "$bundle/Commands"
cat >"$bundle/info.plist" <<'XML'
<plist><dict><key>name</key><string>Test</string>
<key>uuid</key><string>00000000-0000-4000-8000-000000000001</string></dict></plist>
XML

# command_item NAME OUTPUT SCRIPT [XML]: with further keys and their values.
command_item() {
  cat >"$bundle/Commands/$1.qnCommand" <<XML
<plist><dict><key>name</key><string>$1</string><key>uuid</key><string>TEST-$1</string>
<key>output</key><string>$2</string>
<key>command</key><string>$(sed 's/&/\&amp;/g; s/</\&lt;/g' <<<"$3")</string>${4-}</dict></plist>
XML
}
