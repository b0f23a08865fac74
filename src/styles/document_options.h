#pragma once

#include "settings/limits.h"

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

/// Where user defaults hold them, by language; see scoped_settings. `rightMargin` is one for all.
inline constexpr char const* soft_tabs_domain = "WynTextViewScopedSoftTabs";
inline constexpr char const* tab_size_domain = "WynTextViewScopedTabSize";
inline constexpr char const* soft_wrap_domain = "WynTextViewScopedSoftWrap";
inline constexpr char const* right_margin_key = "WynTextViewRightMarginColumn";

using settings::max_margin;
using settings::max_tab_size;

}  // namespace styles
