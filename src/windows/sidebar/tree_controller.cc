#include "windows/sidebar/tree_controller.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "documents/printable_name.h"
#include "path/file_system.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "platform/unicode.h"
#include "platform/utf.h"
#include "projects/file_kind.h"

namespace windows {
namespace {

namespace key = platform::function_key;
namespace mod = platform::modifier;
using projects::item_kind;

constexpr double typing_pause = 1;     // seconds after which typing begins anew
constexpr double reading_shows = 0.3;  // seconds that a reading takes before it is mentioned

}  // namespace

tree_controller::tree_controller(tree_owner& owner, projects::file_tree& tree)
    : owner_(owner),
      tree_(tree),
      rows_(tree.roots()),
      background_(platform::desktop::current().loop()) {
  addActions();
  addFileActions();
  addGroupActions();
}

tree_controller::~tree_controller() {
  if (host_ != nullptr) host_->client_goes();
}

// Rows.

projects::tree_rows& tree_controller::rows() {
  if (!rows_.is_valid()) settle();
  return rows_;
}

// What the keyboard was at may have gone: it is at the row in its place then.
void tree_controller::settle() {
  bool has_current = false, has_anchor = false, had_selection = !selected_.empty();
  selected_.clear();
  for (item* const marked : rows_.marked()) {
    if (marked->is_selected) selected_.push_back(marked);
    has_current = has_current || marked == current_;
    has_anchor = has_anchor || marked == anchor_;
    marked->is_pinned = marked->is_pinned && (marked == current_ || marked == anchor_);
  }
  if (!has_anchor) anchor_ = nullptr;
  if (has_current) {
    current_row_ = rows_.row_of(*current_).value_or(0);
  } else {
    bool const is_lost = std::exchange(current_, nullptr) != nullptr;
    is_renaming_ = false;
    if (is_lost && rows_.count() != 0) {
      setCurrent(rows_.at(std::min(current_row_, rows_.count() - 1)).item);
      if (had_selection && selected_.empty()) setSelected(*current_, true);
    }
  }
}

void tree_controller::changeRows() {
  rows_.invalidate();
  marksDidChange();
}

void tree_controller::treeDidChange() {
  changeRows();
  followTarget();
}

void tree_controller::marksDidChange() {
  if (host_ != nullptr) host_->rows_changed();
}

std::optional<std::size_t> tree_controller::rowOfDraft() {
  if (!draft_) return std::nullopt;
  projects::tree_rows& all = rows();
  if (draft_->alive.expired() || !draft_->folder->is_expanded) {
    draft_.reset();
    return std::nullopt;
  }
  auto const row = all.row_of(*draft_->folder);
  return row ? std::optional(*row + 1) : std::nullopt;
}

std::size_t tree_controller::count() {
  return rows().count() + (rowOfDraft() ? 1 : 0);
}

projects::project_item* tree_controller::itemAt(std::size_t row) {
  if (auto const at = rowOfDraft(); at && row >= *at) {
    if (row == *at) return nullptr;
    --row;
  }
  return row < rows().count() ? rows().at(row).item : nullptr;
}

std::optional<std::size_t> tree_controller::shownRow(item const& of) {
  auto row = rows().row_of(of);
  if (auto const at = rowOfDraft(); row && at && *row >= *at) ++*row;
  return row;
}

std::string tree_controller::detailOf(item const& of) {
  if (of.is_missing) return "missing";
  if (of.kind() != item_kind::folder) return "";
  if (of.error())
    return of.error()->code == ELOOP ? "leads back to a folder above" : of.error()->message;
  double const now = platform::desktop::current().loop().now();
  bool const is_slow = of.state() == projects::reading::under_way && of.is_expanded &&
                       now - opened_at_ >= reading_shows;
  return is_slow ? "is being read" : "";
}

platform::tree_row tree_controller::row(std::size_t index) {
  platform::tree_row shown;
  auto const at = rowOfDraft();
  if (at && index == *at) {
    shown.depth = rows().at(*at - 1).depth + 1;
    shown.can_open = draft_->is_folder;
    shown.icon = draft_->is_folder ? platform::tree_icon::folder : platform::tree_icon::file;
    return shown;
  }
  auto const [of, depth] = rows().at(at && index > *at ? index - 1 : index);
  std::string const path = of->path();
  shown.title = documents::printable(of->name());
  shown.detail = detailOf(*of);
  shown.tip = documents::printable(path::abbreviate_with_tilde(path));
  if (!shown.detail.empty()) shown.tip += "\n" + shown.detail;
  shown.icon = of->kind() == item_kind::folder  ? platform::tree_icon::folder
               : of->kind() == item_kind::group ? platform::tree_icon::group
                                                : projects::icon_of(of->name());
  shown.depth = depth;
  shown.can_open = of->kind() != item_kind::file;
  shown.is_open = of->is_expanded;
  shown.is_selected = of->is_selected;
  shown.is_current = of == current_;
  shown.is_missing = of->is_missing;
  shown.is_link = of->is_link;
  // What is in an ignored folder is ignored too.
  for (item const* at = of; at != nullptr && !shown.is_pale; at = at->parent())
    shown.is_pale = at->is_ignored;
  if (of->kind() == item_kind::file) {
    auto const state = owner_.stateOfFile(path);
    shown.has_tab = state.has_tab;
    shown.is_edited = state.is_edited;
    shown.is_shown = state.is_shown;
  }
  return shown;
}

// Selecting.

projects::project_item* tree_controller::current() {
  rows();
  return current_;
}

std::optional<std::size_t> tree_controller::current_row() {
  item* const at = current();
  return at != nullptr ? shownRow(*at) : std::nullopt;
}

void tree_controller::setCurrent(item* to) {
  if (current_ != nullptr && current_ != anchor_) current_->is_pinned = false;
  current_ = to;
  if (to == nullptr) return;
  to->is_pinned = true;
  if (rows_.is_valid()) current_row_ = rows_.row_of(*to).value_or(0);
}

void tree_controller::setAnchor(item* to) {
  if (anchor_ != nullptr && anchor_ != current_) anchor_->is_pinned = false;
  anchor_ = to;
  if (to != nullptr) to->is_pinned = true;
}

void tree_controller::setSelected(item& of, bool selected) {
  if (of.is_selected == selected) return;
  of.is_selected = selected;
  if (selected)
    selected_.push_back(&of);
  else
    std::erase(selected_, &of);
}

void tree_controller::deselectAll() {
  for (item* const each : selected()) each->is_selected = false;
  selected_.clear();
}

void tree_controller::selectOnly(std::size_t row) {
  item* const at = itemAt(row);
  if (at == nullptr) return;
  deselectAll();
  setSelected(*at, true);
  setCurrent(at);
  setAnchor(at);
  marksDidChange();
}

void tree_controller::selectTo(std::size_t row) {
  item* const at = itemAt(row);
  if (at == nullptr) return;
  if (anchor_ == nullptr) setAnchor(current_ != nullptr ? current_ : at);
  std::size_t const from = shownRow(*anchor_).value_or(row);
  deselectAll();
  for (std::size_t n = std::min(from, row); n <= std::max(from, row); ++n)
    if (item* const each = itemAt(n); each != nullptr && !each->is_selected) {
      each->is_selected = true;
      selected_.push_back(each);
    }
  setCurrent(at);
  marksDidChange();
}

void tree_controller::goTo(std::size_t row, bool extends) {
  if (extends)
    selectTo(row);
  else
    selectOnly(row);
  if (host_ != nullptr) host_->show_row(row);
}

void tree_controller::setOpen(item& of, bool open) {
  if (of.kind() == item_kind::file || of.is_expanded == open) return;
  if (open) {
    auto& loop = platform::desktop::current().loop();
    opened_at_ = loop.now();
    opened_timer_ = loop.schedule(reading_shows + 0.05, false, [this] { marksDidChange(); });
  } else if (auto const row = rows().row_of(of)) {
    // What isn't seen can't be selected.
    bool hides_current = false, hides_selected = false;
    for (std::size_t n = rows_.count_below(*row); n > 0; --n) {
      item* const each = rows_.at(*row + n).item;
      hides_current = hides_current || each == current_;
      hides_selected = hides_selected || each->is_selected;
      if (each == anchor_) setAnchor(nullptr);
      each->is_selected = false;
    }
    std::erase_if(selected_, [](item* each) { return !each->is_selected; });
    if (hides_current) setCurrent(&of);
    if (hides_selected) setSelected(of, true);
  }
  tree_.set_expanded(of, open);
  changeRows();
}

void tree_controller::toggle(std::size_t row, bool all) {
  item* const at = itemAt(row);
  if (at == nullptr) return;
  bool const opens = !at->is_expanded;
  if (all)
    projects::visit_items(at->children(), [&](item& each) {
      if (each.kind() != item_kind::file && !each.is_missing) tree_.set_expanded(each, opens);
      return true;
    });
  setOpen(*at, opens);
}

// Keys.

bool tree_controller::key_down(platform::key_event const& event) {
  target_.clear();
  if (event.characters.empty()) return false;
  char16_t const c = event.characters.front();
  std::uint32_t const modifiers = event.modifiers;
  bool const extends = modifiers & mod::shift;
  if (modifiers & (mod::command | mod::option | mod::control)) return false;
  std::size_t const rows = count();
  std::size_t const at = current_row().value_or(0), page = host_ ? host_->page_size() : 1;
  auto const go = [&](std::size_t row) {
    if (rows != 0) goTo(std::min(row, rows - 1), extends);
    return true;
  };
  // Letters that come after another key begin a name anew.
  bool const is_typing = c >= 0x20 && !(0xF700 <= c && c <= 0xF8FF);
  if (!is_typing && c != key::escape) typed_.clear();
  switch (c) {
    case key::up:
      return current() == nullptr ? go(0) : go(at == 0 ? 0 : at - 1);
    case key::down:
      return current() == nullptr ? go(0) : go(at + 1);
    case key::home:
      return go(0);
    case key::end:
      return go(rows);
    case key::page_up:
      return go(at > page ? at - page : 0);
    case key::page_down:
      return go(at + page);
    case key::left:
      return goOut(modifiers);
    case key::right:
      return goIn(modifiers);
    case key::return_key:
    case key::enter:
      return openCurrent();
    case key::escape:
      if (typed_.empty()) owner_.focusText();
      typed_.clear();
      return true;
    case key::tab:
    case key::back_tab:
      owner_.focusText();
      return true;
    case key::forward_delete:
      return performSelectorWithObject("projectRemove:", {}), true;
    case key::f1 + 1:
      return performSelectorWithObject("projectRename:", {}), true;
    default:
      return typed(event.characters);
  }
}

bool tree_controller::goOut(std::uint32_t) {
  item* const at = current();
  if (at == nullptr) return true;
  if (at->is_expanded) return setOpen(*at, false), true;
  if (at->parent() != nullptr) goTo(shownRow(*at->parent()).value_or(0), false);
  return true;
}

bool tree_controller::goIn(std::uint32_t) {
  item* const at = current();
  if (at == nullptr || at->kind() == item_kind::file) return true;
  if (!at->is_expanded) return setOpen(*at, true), true;
  if (!at->children().empty()) goTo(shownRow(*at->children().front()).value_or(0), false);
  return true;
}

bool tree_controller::openCurrent() {
  item* const at = current();
  if (at == nullptr) return true;
  if (at->kind() != item_kind::file) return setOpen(*at, !at->is_expanded), true;
  if (owner_.showTreeFile(at->path(), true))
    owner_.focusText();
  else
    platform::beep();
  return true;
}

// Selects the next row that begins so; the first letter once more goes on to the one after it.
bool tree_controller::typed(std::u16string const& characters) {
  if (characters.front() < 0x20 || (0xF700 <= characters.front() && characters.front() <= 0xF8FF))
    return false;
  double const now = platform::desktop::current().loop().now();
  if (now - typed_at_ > typing_pause) typed_.clear();
  item* const at = current();
  if (characters == u" " && typed_.empty()) {
    if (at == nullptr) return true;
    if (at->kind() != item_kind::file)
      setOpen(*at, !at->is_expanded);
    else if (!owner_.showTreeFile(at->path(), false))
      platform::beep();
    return true;
  }
  std::string const letters = unicode::lowercase(unicode::to_utf8(characters));
  bool const is_repeated = typed_ == letters;
  if (!is_repeated) typed_ += letters;
  typed_at_ = now;
  std::size_t const rows = count(), here = current_row().value_or(0);
  std::size_t const first = typed_ == letters && at != nullptr ? here + 1 : here;
  for (std::size_t n = 0; n < rows; ++n) {
    std::size_t const row = (first + n) % rows;
    item const* const each = itemAt(row);
    if (each == nullptr ||
        !unicode::lowercase(each->name().substr(0, 4 * typed_.size())).starts_with(typed_))
      continue;
    goTo(row, false);
    return true;
  }
  platform::beep();
  return true;
}

// The mouse.

void tree_controller::mouse_down(std::size_t row, std::uint32_t modifiers) {
  target_.clear();
  item* const at = itemAt(row);
  if (at == nullptr) return;
  if (modifiers & mod::shift) return selectTo(row);
  if (modifiers & mod::command) {
    rows();
    setSelected(*at, !at->is_selected);
    setCurrent(at);
    setAnchor(at);
    return marksDidChange();
  }
  // A drag may begin, of all that is selected.
  if (at->is_selected) return setCurrent(at), marksDidChange();
  selectOnly(row);
}

void tree_controller::mouse_up(std::size_t row, std::uint32_t modifiers) {
  item* const at = itemAt(row);
  if (at == nullptr || (modifiers & (mod::shift | mod::command))) return;
  selectOnly(row);
  if (at->kind() != item_kind::file) return setOpen(*at, !at->is_expanded);
  owner_.showTreeFile(at->path(), false);
}

void tree_controller::double_click(std::size_t row) {
  item* const at = itemAt(row);
  if (at == nullptr || at->kind() != item_kind::file) return;
  if (owner_.showTreeFile(at->path(), true))
    owner_.focusText();
  else
    platform::beep();
}

void tree_controller::mouse_down_outside() {
  target_.clear();
  deselectAll();
  marksDidChange();
}

// What is to be selected once it is there.

bool tree_controller::reveal(std::string const& path) {
  if (tree_.item_with_path(path) == nullptr && !tree_.holds_file(path)) return false;
  target_ = path;
  followTarget();
  return true;
}

void tree_controller::followTarget() {
  if (target_.empty()) return;
  for (;;) {
    item* const found = tree_.item_on_way(target_);
    if (found == nullptr) return target_.clear();
    for (item* above = found->parent(); above != nullptr; above = above->parent())
      setOpen(*above, true);
    if (found->path() == target_) {
      target_.clear();
      if (auto const row = shownRow(*found)) goTo(*row, false);
      return;
    }
    if (found->is_expanded) return;  // it comes when the folder has been read
    setOpen(*found, true);
    if (found->state() == projects::reading::under_way) return;
  }
}

}  // namespace windows
