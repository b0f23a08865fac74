#include "projects/file_kind.h"

#include <map>
#include <string_view>

#include "platform/split.h"

namespace projects {
namespace {

using platform::tree_icon;

struct kind {
  tree_icon icon;
  char const* extensions;
};

constexpr kind kinds[] = {
    {tree_icon::text, "txt md markdown rst tex org adoc log csv tsv po pot srt readme license"},
    {tree_icon::source,
     "c h cc cpp cxx hpp hh hxx ipp m mm cs java kt kts scala go rs swift d zig nim v vala py pyw "
     "pyi rb pl pm t php js mjs cjs jsx ts tsx vue svelte lua tcl sh bash zsh fish ps1 awk sed sql "
     "r jl hs lhs ml mli fs fsx clj cljs ex exs erl hrl el lisp scm rkt f f90 f95 pas ada adb ads "
     "asm s vhd vhdl sv cmake mk mak gradle dart groovy cu glsl vert frag proto g y l"},
    {tree_icon::markup,
     "html htm xhtml xml xsl xslt svg css scss sass less json json5 jsonl yaml yml toml ini cfg "
     "conf desktop plist dict qnproj service properties env lock"},
    {tree_icon::image, "png jpg jpeg gif bmp ico icns tif tiff webp psd xcf avif heic"},
    {tree_icon::archive, "zip tar gz tgz bz2 xz zst 7z rar jar war deb rpm iso lz4 whl gem"},
};

std::map<std::string, tree_icon, std::less<>> const& icons() {
  static auto const& made = *new std::map<std::string, tree_icon, std::less<>>([] {
    std::map<std::string, tree_icon, std::less<>> by_extension;
    for (kind const& each : kinds)
      for (std::string const& extension : platform::split(each.extensions, ' '))
        by_extension.emplace(extension, each.icon);
    return by_extension;
  }());
  return made;
}

}  // namespace

platform::tree_icon icon_of(std::string const& name) {
  std::size_t const dot = name.rfind('.');
  std::string extension = name.substr(dot == name.npos ? 0 : dot + 1);
  for (char& c : extension)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  auto const found = icons().find(extension);
  return found == icons().end() ? tree_icon::file : found->second;
}

}  // namespace projects
