#pragma once

#include "platform/accessible_text.h"
#include "text/storage_observer.h"
#include "text/unit_offsets.h"
#include "textview/mouse/pointed_view.h"

#include <vector>

namespace textview {

/// The text of a view for assistive programs. Exists only while one listens: it follows each change
/// of the text. The view must show a document for as long as this lives.
class text_access final : public platform::accessible_text, private text::storage_observer {
 public:
  text_access(pointed_view& text_view, platform::accessible_text_observer& observer);
  ~text_access() override;
  text_access(text_access const&) = delete;
  text_access& operator=(text_access const&) = delete;

  /// Tells the observer what has changed since the last call: after each action of the user, and
  /// after changes from elsewhere.
  void tell();

  std::size_t length() const override;
  std::u16string text(platform::unit_range range) override;
  std::size_t caret() override;
  std::size_t selection_count() override;
  platform::unit_range selection(std::size_t index) override;
  void select(std::size_t anchor, std::size_t caret) override;
  platform::unit_range character_at(std::size_t offset) override;
  platform::unit_range row_at(std::size_t offset) override;
  platform::unit_range line_at(std::size_t offset) override;
  platform::rect rect_of(std::size_t offset) override;
  std::size_t offset_at(platform::point p) override;
  platform::accessible_style style_at(std::size_t offset) override;
  void replace(platform::unit_range range, std::u16string_view text) override;
  void scroll_to(platform::unit_range range) override;

 private:
  struct change {
    bool is_insertion;
    std::size_t at;
    std::u16string text;
  };

  void will_insert(text::iterator const& at, int length) override;
  void did_insert(text::iterator const& first, text::iterator const& last) override;
  void will_erase(text::iterator const& first, text::iterator const& last) override;

  void note(bool is_insertion, text::iterator const& first, text::iterator const& last);
  platform::unit_range line_range(std::size_t line);
  text::view& view() const { return *text_view_.view(); }

  pointed_view& text_view_;
  platform::accessible_text_observer& observer_;
  text::storage& storage_;
  mutable text::unit_offsets offsets_;
  std::vector<change> changes_;  ///< of which the observer hasn't heard yet
};

}  // namespace textview
