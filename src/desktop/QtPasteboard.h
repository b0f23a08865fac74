#pragma once

#include "desktop/ClipboardOwner.h"
#include "platform/pasteboard.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QMimeData>
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
  void when_answered(std::function<void()> then) override;

 private:
  bool is_answered(QMimeData const& data) const;

  QClipboard::Mode mode_;
  std::uint64_t change_count_ = 0;
  mutable QElapsedTimer silence_;  // since an owner was last found not to answer
  QObject connection_;
  std::unique_ptr<ClipboardOwner> owner_;
};

/// For the clipboard or a drag; what is in it is converted when it is asked for.
std::unique_ptr<QMimeData> mime_data_of(plist::dictionary content);
/// What a pasteboard that holds `data` has under `type`.
plist::value value_of(QMimeData const& data, std::string_view type);
/// Whether it holds anything that a text view can take.
bool has_known_format(QMimeData const& data);

/// The primary selection, kept in memory where the window system has none.
std::unique_ptr<platform::pasteboard> make_primary_selection();

}  // namespace widgets
