#pragma once

#include "platform/pasteboard.h"

#include <QClipboard>
#include <QObject>

#include <memory>

namespace widgets {

/// The desktop's clipboard or primary selection. Text and files go in the usual formats, all other
/// types together under a format of our own, as a property list in XML.
class QtPasteboard final : public platform::pasteboard {
 public:
  explicit QtPasteboard(QClipboard::Mode mode);

  void set(plist::dictionary types) override;
  plist::value get(std::string_view type) const override;
  std::uint64_t change_count() const override { return change_count_; }

 private:
  QClipboard::Mode mode_;
  std::uint64_t change_count_ = 0;
  QObject connection_;
};

/// The primary selection, kept in memory where the window system has none.
std::unique_ptr<platform::pasteboard> make_primary_selection();

}  // namespace widgets
