#pragma once

#include "desktop/QtPasteboard.h"

namespace widgets {

/// What is dragged over a widget.
class DroppedContent final : public platform::pasteboard_content {
 public:
  explicit DroppedContent(QMimeData const& data) : data_(data) {}
  plist::value get(std::string_view type) const override { return value_of(data_, type); }

 private:
  QMimeData const& data_;
};

/// What a drop held when it came, for a time when its source may be gone.
class KeptContent final : public platform::pasteboard_content {
 public:
  explicit KeptContent(QMimeData const& data) {
    for (std::string_view const type :
         {platform::pasteboard_type::text, platform::pasteboard_type::file_list,
          platform::pasteboard_type::color, platform::pasteboard_type::quirnote})
      types_.emplace(type, value_of(data, type));
  }
  plist::value get(std::string_view type) const override {
    auto const found = types_.find(type);
    return found == types_.end() ? plist::value() : found->second;
  }

 private:
  plist::dictionary types_;
};

}  // namespace widgets
