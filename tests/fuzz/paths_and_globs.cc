#include "fuzz/fuzz.h"
#include "path/expand_braces.h"
#include "path/glob.h"
#include "path/path.h"

// A glob, a newline and a path: alternatives are bounded and expanded once and for all, a path that
// is normalized stays so, and a name and its folder make the path again.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string path(data, data + size);
  std::string const glob = take_until('\n', path);

  constexpr std::size_t max_bytes = 1 << 16;
  std::size_t bytes = 0;
  auto const alternatives = path::expand_braces(glob, max_bytes);
  for (std::string const& text : alternatives) bytes += text.size();
  if (alternatives.empty() || bytes > std::max(max_bytes, glob.size())) std::abort();

  std::string const normal = path::normalize(path);
  if (path::normalize(normal) != normal) std::abort();
  bool const has_folder = normal.find('/') != normal.npos && path::name(normal) != "..";
  if (has_folder && path::join(path::parent(normal), path::name(normal)) != normal) std::abort();
  path::glob_t const pattern(glob);
  for (std::string const& text : {path, normal}) pattern.does_match(text);
  return 0;
}
