#pragma once

#include "platform/html/html_tokens.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform {

/// HTML as plain text, as it comes: without tags, scripts and styles, lines and blanks about as a
/// page shows them.
class html_text final : private html_tokens::sink {
 public:
  struct span {
    std::string text;
    std::string link;  ///< where it leads; mostly empty
  };

  /// The text of what comes next.
  std::vector<span> put(std::string_view bytes);
  std::vector<span> finish();

 private:
  void text(std::string_view raw) override;
  void tag(std::string_view name, bool closes, std::string_view raw) override;
  void other(std::string_view) override {}
  void add(std::string_view text);
  void add_plain(std::string_view text);
  void end_line(int lines);

  html_tokens tokens_;
  std::vector<span> spans_;
  std::string entity_;  // one whose end hasn't come
  std::string link_;
  int preformatted_ = 0, newlines_ = 2;  // elements open; line feeds at the end of what went out
  bool blank_ = false, skips_newline_ = false;
};

}  // namespace platform
