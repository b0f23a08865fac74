#pragma once

#include "grammar/scope_path.h"
#include "plist/value.h"
#include "styles/scope_style.h"
#include "text/pos.h"

#include <string>
#include <vector>

namespace grammar {
class tokenize_filter;
}
namespace text {
class view;
struct iterator;
}  // namespace text

namespace styles {

/// What reports and lists about scopes need of the view whose text they look at. Names and meaning
/// are WynTextView's, which implements it. Main thread only.
class styled_view {
 public:
  /// Null while there is no document.
  virtual text::view* view() const = 0;
  /// Null before the document has had a language.
  virtual grammar::tokenize_filter* tokenizer() const = 0;

  virtual bit_stack::storage graphPathForIterator(text::iterator const& it) const = 0;
  virtual std::vector<std::string> scopeForContext(bit_stack::storage const& path) const = 0;
  virtual plist::value stylesForContext(bit_stack::storage const& path) const = 0;
  virtual style_candidates styleCandidates(std::vector<std::string> const& scopes) const = 0;
  virtual plist::value stylesOfPath(grammar::path_tree::id id) const = 0;
  virtual bool isSymbol(grammar::path_tree::id id) const = 0;
  virtual bool knowsSymbol(grammar::path_tree::id id) const = 0;

  /// The list of symbols is another one now.
  virtual void symbolsDidChange() = 0;
  /// The caret is in another symbol.
  virtual void currentSymbolDidChange(std::string const& name) = 0;

 protected:
  ~styled_view() = default;
};

}  // namespace styles
