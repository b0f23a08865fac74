#include "encoding/harmonize_units.h"

#include <algorithm>
#include <cstring>

#include "encoding/lanes.h"

// Most files have no CR at all, and then this is one scan that writes nothing and counts the
// lines on its way. Where there are CRs, what stands between them is moved as a whole.

namespace encoding {
namespace {

/// The first CR in [first, last), or last; adds the LFs before it to `lf`.
char16_t* find_cr(char16_t* first, char16_t* last, std::size_t& lf) {
  first += lanes::skip_to_cr(first, (last - first) & ~std::ptrdiff_t{7}, lf);
  for (; first != last && *first != u'\r'; ++first) lf += *first == u'\n';
  return first;
}

}  // namespace

harmonized harmonize_units(char16_t* first, char16_t* last) {
  line_ending::counts n;
  char16_t* in = find_cr(first, last, n.lf);
  char16_t* out = in;
  while (in != last) {
    ++in;
    bool const crlf = in != last && *in == u'\n';
    ++(crlf ? n.crlf : n.cr);
    in += crlf;
    *out++ = u'\n';
    char16_t* const next = find_cr(in, last, n.lf);
    std::memmove(out, in, (next - in) * sizeof(char16_t));
    out += next - in;
    in = next;
  }
  return {out, n};
}

}  // namespace encoding
