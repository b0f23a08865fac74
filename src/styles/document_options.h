#pragma once

#include "conventions/indentation.h"
#include "settings/limits.h"

#include <string>
#include <string_view>

namespace styles {

/// The options that each document has for itself: what a tab is, and where lines are wrapped.
struct document_options {
  unsigned tabSize = 4;  ///< in columns, from 1
  bool softTabs = false;
  bool softWrap = false;
  int rightMargin = -1;  ///< a column; below 1 there is none

  /// What is stored for documents of a language, which is named by its root scope.
  static document_options stored(std::string_view root_scope);
};

/// Who says what a tab is, the least first. Each is asked for the style and for the width by
/// itself.
enum class indent_source {
  user_default,  ///< the user default, or what was chosen for other languages
  bundle,        ///< the language's custom
  language,      ///< what was chosen for the document's language
  detection,     ///< the lines of the text
  editorconfig,  ///< of the project
  modeline,      ///< in the text
  hand           ///< what was chosen for this document
};

/// What the sources above the user default say of one document.
struct indent_sources {
  conventions::indentation modeline, editorconfig, detection, language, bundle, hand;
  /// The language allows no other style than the bundle's. What was chosen for the document or the
  /// language holds all the same.
  bool style_is_fixed = false;

  /// The entries for the language itself, but for those that nobody has made.
  static conventions::indentation stored_for(std::string_view root_scope);
};

/// Where the tab size and the style of a document come from.
struct indent_origin {
  indent_source size = indent_source::user_default, style = indent_source::user_default;
};

/// Sets what the sources know and leaves the rest as it is.
indent_origin apply_sources(indent_sources const& sources, document_options& options);

/// For the status bar: a few words on why, with the language's name; "" for a plain default.
std::string explain(indent_source source, std::string const& language);

/// Where user defaults hold them, by language; see scoped_settings. `rightMargin` is one for all.
inline constexpr char const* soft_tabs_domain = "WynTextViewScopedSoftTabs";
inline constexpr char const* tab_size_domain = "WynTextViewScopedTabSize";
inline constexpr char const* soft_wrap_domain = "WynTextViewScopedSoftWrap";
inline constexpr char const* right_margin_key = "WynTextViewRightMarginColumn";

using settings::max_margin;
using settings::max_tab_size;

}  // namespace styles
