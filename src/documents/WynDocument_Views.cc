#include <algorithm>
#include <utility>

#include "documents/WynDocument.h"
#include "documents/file_metadata.h"
#include "documents/view_metadata.h"
#include "path/file_system.h"
#include "platform/notification_center.h"

// The views of a document, and what is remembered of them outside the text.

std::unique_ptr<text::view> WynDocument::makeView() {
  auto view = std::make_unique<text::view>(*storage_);
  if (path::exists(filename_)) documents::load_view_attributes(filename_, *view);
  auto const position = auxiliaryFileInfo_.find("position");
  auto const* const record =
      position == auxiliaryFileInfo_.end() ? nullptr : position->second.as_data();
  if (record != nullptr && record->size() >= documents::position_size) {
    documents::go_to_position(*view, *record);
    auxiliaryFileInfo_.erase(position);
    return view;
  }
  auto const line = auxiliaryFileInfo_.find("line");
  std::int64_t const number = line == auxiliaryFileInfo_.end() ? 0 : line->second.integer_or(0);
  if (number != 0)
    documents::go_to_line(*view, static_cast<std::size_t>(std::max<std::int64_t>(number, 1) - 1));
  return view;
}

text::view* WynDocument::obtainView() {
  if (viewCache_.empty()) viewCache_.push_back(makeView());
  openViews_.splice(openViews_.end(), viewCache_, std::prev(viewCache_.end()));
  return openViews_.back().get();
}

void WynDocument::releaseView(text::view* view) {
  auto const found = std::find_if(openViews_.begin(), openViews_.end(),
                                  [view](auto const& open) { return open.get() == view; });
  if (found != openViews_.end()) viewCache_.splice(viewCache_.end(), openViews_, found);
}

plist::value WynDocument::metaData() const {
  auto const& views = openViews_.empty() ? viewCache_ : openViews_;
  if (views.empty()) return {};
  return documents::view_metadata(*views.back());
}

void WynDocument::setMetaData(plist::value const& metadata) {
  if (!metadata.as_dictionary()) return;
  text::view* const view = obtainView();
  documents::set_view_metadata(*view, metadata);
  releaseView(view);
}

bool WynDocument::shouldSaveMetaData(std::string const& path) {
  return path::exists(path) && !documents::disable_xattr(path);
}

void WynDocument::saveMetaData(std::string const& path, text::view const& view) const {
  auto const* const stamp = path == filename_ ? (fileStamp_ ? &*fileStamp_ : nullptr)
                            : writtenElsewhere_ && writtenElsewhere_->path == path
                                ? &writtenElsewhere_->stamp
                                : nullptr;
  if (stamp && shouldSaveMetaData(path)) documents::save_view_attributes(path, stamp->target, view);
}

std::uint64_t WynDocument::addOpener(opener waiting) {
  openers_.emplace(++lastOpener_, std::move(waiting));
  platform::notification_center::standard().post(openersDidChange, this, {});
  return lastOpener_;
}

void WynDocument::removeOpener(std::uint64_t number) {
  if (openers_.erase(number) != 0)
    platform::notification_center::standard().post(openersDidChange, this, {});
}

std::vector<std::string> WynDocument::openerNames() const {
  std::vector<std::string> names;
  for (auto const& [number, each] : openers_)
    if (!each.name.empty() && std::find(names.begin(), names.end(), each.name) == names.end())
      names.push_back(each.name);
  return names;
}

bool WynDocument::textIsTaken() const {
  return filename_.empty() && std::any_of(openers_.begin(), openers_.end(),
                                          [](auto const& each) { return each.second.takes_text; });
}

void WynDocument::tellOpeners(bool is_saved) {
  for (auto const& [number, each] : std::exchange(openers_, {})) each.documentDidClose(is_saved);
}
