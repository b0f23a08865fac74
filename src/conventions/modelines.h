#pragma once

#include <optional>
#include <string_view>

#include "conventions/indentation.h"
#include "text/storage.h"

namespace conventions {

/// What lines written for other editors say about a text: "vim: set et sw=4:" in the first or last
/// five lines, "-*- tab-width: 4 -*-" in the first (or the second, after an interpreter), and
/// "Local Variables:" near the end. Only what an allow-list names is read, all of it passive: no
/// line can name a program, a file or an expression to be evaluated.
struct modeline {
  conventions::indentation indentation;
  std::optional<bool> final_newline;
  friend bool operator==(modeline const&, modeline const&) = default;
};

/// What comes last in the text holds.
modeline modeline_of(text::storage const& text);

}  // namespace conventions
