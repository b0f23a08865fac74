#include "windows/WynFileChooser.h"

#include "documents/printable_name.h"
#include "path/file_system.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "platform/utf.h"
#include "settings/store.h"

#include <algorithm>
#include <utility>

namespace windows {
namespace {

constexpr std::size_t most_lists = 2;

bool is_same(projects::file_collector::request const& a,
             projects::file_collector::request const& b) {
  return a.wanted.denied == b.wanted.denied && a.wanted.allowed == b.wanted.allowed &&
         std::equal(a.roots.begin(), a.roots.end(), b.roots.begin(), b.roots.end(),
                    [](projects::walk_root const& x, projects::walk_root const& y) {
                      return x.path == y.path && x.is_folder == y.is_folder &&
                             x.patterns == y.patterns;
                    });
}

}  // namespace

std::shared_ptr<file_lists::list> file_lists::open(
    projects::file_collector::request const& request) {
  auto const known = std::find_if(lists_.begin(), lists_.end(), [&](auto const& each) {
    return is_same(each->request, request);
  });
  if (known != lists_.end()) {
    lists_.splice(lists_.begin(), lists_, known);
  } else {
    lists_.push_front(std::make_shared<list>());
    lists_.front()->request = request;
    if (lists_.size() > most_lists) lists_.pop_back();
  }
  list& found = *lists_.front();
  if (found.walk == nullptr) {
    found.walk = std::make_unique<projects::file_collector>(request);
    found.top = found.walk->top();
  }
  return lists_.front();
}

}  // namespace windows

WynFileChooser::WynFileChooser(request wanted, windows::file_lists& lists, opener open)
    : request_(std::move(wanted)),
      open_(std::move(open)),
      list_(lists.open(request_.files)),
      background_(platform::desktop::current().loop()) {
  chooser_.set_top(list_->top);
  showFirst({});
  for (auto const& each : list_->files) chooser_.add(each);
  take_new_rows(0);
  if (request_.recent.empty()) return;
  auto roots =
      request_.takes_all_recent ? std::vector<projects::walk_root>() : request_.files.roots;
  background_.run([this, recent = request_.recent, roots = std::move(roots),
                   offered = request_.files.wanted]() -> projects::background::answer {
    return
        [this, found = projects::files_to_offer(recent, roots, offered)] { foundRecent_ = found; };
  });
}

/// Those before all others: the open files, these, and at last the one in front.
void WynFileChooser::showFirst(std::vector<std::string> const& recent) {
  auto const files = std::make_shared<projects::file_batch>();
  std::vector<std::string> added{request_.current};
  auto const add = [&](std::string const& path) {
    if (std::find(added.begin(), added.end(), path) != added.end()) return;
    if (!request_.files.wanted.take(path)) return;
    added.push_back(path);
    files->add(path);
  };
  for (std::string const& path : request_.open) add(path);
  for (std::string const& path : recent) add(path);
  if (!request_.current.empty() && request_.files.wanted.take(request_.current))
    files->add(request_.current);
  files->finish();
  chooser_.set_first(files);
}

bool WynFileChooser::is_filling() const {
  return list_->walk != nullptr || foundRecent_ || background_.is_busy();
}

std::optional<std::size_t> WynFileChooser::take_new_rows(std::size_t chosen) {
  std::string const path = chosen < chooser_.size() ? chooser_.path(chosen) : "";
  bool has_changed = foundRecent_.has_value();
  if (foundRecent_) showFirst(*std::exchange(foundRecent_, std::nullopt));
  if (list_->walk != nullptr) {
    bool const is_done = list_->walk->is_done();
    auto& taken = list_->is_whole ? list_->fresh : list_->files;
    for (auto& batch : list_->walk->take()) {
      has_changed = has_changed || !list_->is_whole;
      if (!list_->is_whole) chooser_.add(batch);
      taken.push_back(std::move(batch));
    }
    if (is_done) {
      if (list_->is_whole) {
        has_changed = true;
        list_->files = std::exchange(list_->fresh, {});
        chooser_.replace(list_->files);
      }
      list_->is_cut = list_->walk->is_cut();
      list_->is_whole = true;
      list_->walk.reset();
    }
  }
  if (!has_changed) return std::nullopt;
  if (path.empty()) return first_row();
  auto const now = chooser_.row_of(path);
  return now ? *now : first_row();
}

void WynFileChooser::set_filter(std::string const& text) {
  typed_ = projects::typed_file_name(unicode::to_utf16(text));
  chooser_.search(typed_);
}

std::string WynFileChooser::filterString() const {
  std::u16string result;
  for (std::u16string const& folder : typed_.folders) result += folder + u"/";
  return unicode::to_utf8(result + typed_.letters);
}

std::size_t WynFileChooser::first_row() const {
  std::string const letters = filterString();
  if (letters.empty()) return 0;
  std::string const bound =
      projects::bound_file(settings::store().array("WynFileChooserBindings"), letters);
  return bound.empty() ? 0 : chooser_.row_of(bound).value_or(0);
}

platform::picker_row WynFileChooser::row(std::size_t index) const {
  std::string const path = chooser_.path(index);
  platform::picker_row result;
  std::size_t const slash = path.rfind('/');
  result.title = unicode::to_utf16(std::string_view(path).substr(slash + 1));
  if (!typed_.letters.empty()) result.matched = chooser_.mask(index);
  std::size_t begin = slash;
  for (std::size_t n = chooser_.components_shown(index); n > 1 && begin != 0; --n)
    begin = path.rfind('/', begin - 1);
  if (begin != slash)
    result.detail = "\u2014 " + documents::printable(path.substr(begin + 1, slash - begin - 1));
  else if (!typed_.folders.empty() && slash != 0)
    result.detail = "\u2014 " + documents::printable(folderBelowTop(path.substr(0, slash)));
  return result;
}

std::string WynFileChooser::folderBelowTop(std::string const& folder) const {
  std::string const top = list_->top.ends_with('/') ? list_->top : list_->top + "/";
  return folder.starts_with(top) ? folder.substr(top.size()) : path::abbreviate_with_tilde(folder);
}

std::string WynFileChooser::help(std::size_t index) const {
  return documents::printable(path::abbreviate_with_tilde(chooser_.path(index)));
}

std::string WynFileChooser::note() const {
  std::string const all = std::to_string(chooser_.total());
  std::string result = chooser_.size() == chooser_.total()
                           ? all + (chooser_.total() == 1 ? " file" : " files")
                           : std::to_string(chooser_.size()) + " of " + all + " files";
  if (list_->walk != nullptr && !list_->is_whole) return result + " so far\u2026";
  if (list_->is_cut) result += "; there are more files, in too many folders to list them all";
  return result;
}

bool WynFileChooser::accept(platform::picked_row chosen) {
  std::string const path = chooser_.path(chosen.row);
  std::optional<text::line_place> place;
  if (typed_.line != 0) place = text::line_place{typed_.line, typed_.column};
  std::string const letters = filterString();
  if (!letters.empty())
    settings::store().set(
        "WynFileChooserBindings",
        projects::bindings_after(settings::store().array("WynFileChooserBindings"), letters, path,
                                 chosen.row == 0));
  return open_(path, place, chosen.way);
}
