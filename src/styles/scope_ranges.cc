#include "styles/scope_ranges.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <mutex>
#include <optional>

#include "grammar/tokenize_filter.h"
#include "platform/utf.h"
#include "styles/styled_view.h"
#include "text/views/view.h"

namespace styles {

namespace {

using path_id = grammar::path_tree::id;
using names = std::vector<std::string>;

constexpr std::chrono::seconds longest_wait{10};  // for one line; then with what is known

/// The scopes of a text, token by token.
class scope_reader {
 public:
  explicit scope_reader(styled_view const& text_view)
      : storage_(*text_view.view()->storage), tokenizer_(text_view.tokenizer()) {}

  text::storage const& storage() const { return storage_; }
  /// False where no unit has a scope.
  bool has_scopes() const { return tokenizer_ != nullptr && tokenizer_->paths() != nullptr; }

  /// Of a line that exists.
  grammar::line_tokens tokens(std::size_t line) const {
    tokenizer_->wait_for(line, longest_wait);
    std::lock_guard const lock(storage_.mutex);
    return tokenizer_->tokens(line);
  }
  names const& scopes(path_id path) {
    auto const [known, is_new] = known_.try_emplace(path);
    if (is_new) known->second = tokenizer_->paths()->scopes(path);
    return known->second;
  }

 private:
  text::storage& storage_;
  grammar::tokenize_filter* const tokenizer_;
  std::map<path_id, names> known_;
};

void append_escaped(std::u16string& out, text::unit_view units) {
  for (char16_t const unit : units) {
    switch (unit) {
      case u'<':
        out += u"&lt;";
        break;
      case u'>':
        out += u"&gt;";
        break;
      case u'&':
        out += u"&amp;";
        break;
      default:
        out += unit;
    }
  }
}

/// Opens and closes elements.
class element_writer {
 public:
  explicit element_writer(std::u16string& out) : out_(out) {}

  void go_to(names const& scopes) {
    auto const common = static_cast<std::size_t>(
        std::mismatch(open_.begin(), open_.end(), scopes.begin(), scopes.end()).first -
        open_.begin());
    while (open_.size() > common) {
      out_ += u"</" + unicode::to_utf16(open_.back()) + u">";
      open_.pop_back();
    }
    for (std::size_t n = common; n < scopes.size(); ++n) {
      out_ += u"<" + unicode::to_utf16(scopes[n]) + u">";
      open_.push_back(scopes[n]);
    }
  }

 private:
  std::u16string& out_;
  names open_;
};

/// Asks once for each path.
class path_test {
 public:
  path_test(scope_reader& reader, std::function<bool(names const&)> const& holds)
      : reader_(reader), holds_(holds) {}

  bool operator()(path_id path) {
    auto const [known, is_new] = known_.try_emplace(path, false);
    if (is_new) known->second = holds_(reader_.scopes(path));
    return known->second;
  }

 private:
  scope_reader& reader_;
  std::function<bool(names const&)> const& holds_;
  std::map<path_id, bool> known_;
};

text::pos widened_right(scope_reader const& reader, text::pos at, path_test& holds) {
  std::size_t const last_line = reader.storage().lines() - 1;
  while (true) {
    auto const tokens = reader.tokens(at.line);
    std::size_t const size = reader.storage().size(at.line);
    while (at.column < size) {
      auto const next = std::find_if(tokens.begin(), tokens.end(),
                                     [&](auto const& token) { return token.column > at.column; });
      if (!holds(tokens.at(at.column).path)) return at;
      std::size_t const end = next == tokens.end() ? size : (*next).column;
      at = {at.line, std::min(end, size)};
    }
    if (at.line == last_line || !holds(tokens.back().path)) return at;
    at = {at.line + std::size_t{1}, 0};
  }
}

text::pos widened_left(scope_reader const& reader, text::pos at, path_test& holds) {
  auto tokens = reader.tokens(at.line);
  while (true) {
    while (at.column > 0) {
      auto const token = tokens.at(at.column - 1);
      if (!holds(token.path)) return at;
      at.column = std::min(token.column, at.column - 1);
    }
    if (at.line == 0) return at;
    tokens = reader.tokens(at.line - std::size_t{1});
    if (!holds(tokens.back().path)) return at;
    at = {at.line - std::size_t{1}, reader.storage().size(at.line - std::size_t{1})};
  }
}

}  // namespace

std::u16string scope_markup(styled_view const& text_view, text::pos first, text::pos last) {
  scope_reader reader(text_view);
  std::u16string out;
  element_writer elements(out);
  for (std::size_t line = first.line; line <= last.line; ++line) {
    text::unit_view const units = reader.storage().line_units(line);
    std::size_t at = line == first.line ? first.column : 0;
    std::size_t const end = line == last.line ? last.column : units.size();
    bool const has_end = line != last.line;
    auto const tokens = reader.has_scopes() ? reader.tokens(line) : grammar::line_tokens();
    for (auto token = tokens.begin(); token != tokens.end(); ++token) {
      auto const next = token + 1;
      std::size_t const stop =
          next == tokens.end() ? end : std::min<std::size_t>((*next).column, end);
      bool const covers_end = next == tokens.end() && has_end;
      if (stop <= at && !covers_end) continue;
      if (reader.has_scopes()) elements.go_to(reader.scopes((*token).path));
      append_escaped(out, units.substr(at, stop - std::min(at, stop)));
      at = std::max(at, stop);
    }
    if (has_end) out += u'\n';
  }
  elements.go_to({});
  return out;
}

std::pair<text::pos, text::pos> scope_extent(
    styled_view const& text_view, text::pos first, text::pos last,
    std::function<bool(std::vector<std::string> const&)> const& holds) {
  scope_reader reader(text_view);
  if (!reader.has_scopes()) return {first, last};
  path_test test(reader, holds);
  return {widened_left(reader, first, test), widened_right(reader, last, test)};
}

}  // namespace styles
