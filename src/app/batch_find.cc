#include "app/batch_find.h"

#include "app/AppDelegate.h"
#include "app/batch_output.h"
#include "documents/WynDocument.h"
#include "documents/file_text.h"
#include "documents/replace_text.h"
#include "headless/headless_desktop.h"
#include "path/file_system.h"
#include "path/path.h"
#include "platform/utf.h"
#include "projects/file_chooser.h"
#include "projects/project_file.h"
#include "search/project_results.h"
#include "search/project_search.h"
#include "windows/WynProjectController.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace app {
namespace {

enum exit_status { found = 0, not_found = 1, wrong_usage = 2, file_trouble = 3 };

class find_run {
 public:
  explicit find_run(batch_options const& options)
      : options_(options), find_(options.find), app_({}, "") {
    desktop_.shows_windows = false;
    desktop_.files().watch_no_more();
    for (auto const& [title, button] : options.answers) desktop_.alerts().answer(title, button);
  }

  int run() {
    for (std::string const& name : options_.files) add_root(name);
    if (find_.list)
      list_files();
    else if (!find_.rank.empty())
      go_to_file();
    else if (!search())
      return wrong_usage;
    if (binary_files_ != 0)
      std::fprintf(stderr, "quirnote: %zu binary %s not searched\n", binary_files_,
                   binary_files_ == 1 ? "file was" : "files were");
    if (int const error = output_.flush()) complain("standard output", std::strerror(error));
    return has_trouble_ ? file_trouble : has_found_ ? found : not_found;
  }

 private:
  void complain(std::string const& name, std::string const& reason) {
    std::fprintf(stderr, "quirnote: %s: %s\n", platform::escaped_name(name).c_str(),
                 reason.c_str());
    has_trouble_ = true;
  }

  void complain(std::vector<path::file_error> const& errors) {
    for (path::file_error const& error : errors) complain(shown(error.path), error.message);
  }

  void add_root(std::string const& name) {
    std::string const path = path::standardize(folder_.empty() ? name : path::join(folder_, name));
    struct stat info;
    if (::stat(path.c_str(), &info) != 0) return complain(name, std::strerror(errno));
    auto const standard = projects::filter_patterns::standard();
    if (projects::extension_of(path) != "qnproj" || !S_ISREG(info.st_mode)) {
      roots_.push_back({path, S_ISDIR(info.st_mode), standard});
      names_.emplace_back(path, name);
      return;
    }
    auto const project = projects::read_project_file(path);
    if (project.error) return complain(name, *project.error);
    auto const all = projects::walk_roots_of(project.contents.items, standard);
    roots_.insert(roots_.end(), all.begin(), all.end());
  }

  // As the user has called it: a path in a folder that was named begins with that name.
  std::string shown(std::string const& path) const {
    for (auto const& [root, name] : names_) {
      if (path == root) return name;
      std::string const folder = root == "/" ? root : root + "/";
      if (path.starts_with(folder))
        return (name.ends_with('/') ? name : name + "/") + path.substr(folder.size());
    }
    return path;
  }

  projects::walk_options files() const { return {find_.included, find_.excluded, find_.gitignore}; }

  std::string end_of_name() const { return options_.null_separated ? std::string(1, '\0') : ":"; }
  std::string as_printed(std::string const& path) const {
    return options_.null_separated ? shown(path) : platform::escaped_name(shown(path));
  }

  void list_files() {
    projects::file_walk walk(roots_, files());
    for (std::string path; walk.next(path);) {
      has_found_ = true;
      output_.put(as_printed(path) + (options_.null_separated ? std::string(1, '\0') : "\n"));
    }
    complain(walk.errors());
  }

  void go_to_file() {
    projects::file_walk walk(roots_, files());
    auto const offered = projects::offered_extensions::standard();
    auto const found = std::make_shared<projects::file_batch>();
    for (std::string path; walk.next(path);)
      if (offered.take(path)) found->add(path);
    found->finish();
    complain(walk.errors());
    projects::typed_file_name const typed(unicode::to_utf16(find_.rank));
    projects::file_chooser chooser;
    chooser.set_top(roots_.size() == 1 ? path::parent(roots_.front().path) : "");
    chooser.add(found);
    chooser.search(typed);
    std::string place;
    for (std::size_t const number : {typed.line, typed.column})
      if (number != 0) place += ":" + std::to_string(number);
    for (std::size_t row = 0; row < chooser.size(); ++row)
      output_.put(as_printed(chooser.path(row)) + place +
                  (options_.null_separated ? std::string(1, '\0') : "\n"));
    has_found_ = chooser.size() != 0;
  }

  bool search() {
    if (find_.replacement &&
        search::match_replacement(*find_.replacement, !find_.is_text).has_failed()) {
      complain("--replace", "this is no replacement text");
      return false;
    }
    search::project_search_request request;
    file_query_ = {.sought = unicode::to_utf16(find_.pattern),
                   .regular_expression = !find_.is_text,
                   .ignore_case = find_.ignore_case,
                   .rules = WynProjectController::textFileRules(),
                   .supplementary_pairs = documents::preserves_supplementary_characters(),
                   .only_count = find_.count || find_.replacement};
    if (std::string fault; !find_.scope.empty()) {
      file_query_.scopes = search::scope_filter::make(find_.scope, fault);
      if (file_query_.scopes == nullptr) {
        complain("--scope", fault);
        return false;
      }
    }
    request.query = file_query_;
    request.roots = roots_;
    request.files = files();
    try {
      complain(search::search_project(
          request, [this](search::file_result result) { take(std::move(result)); }, never_));
    } catch (std::invalid_argument const& fault) {
      complain("--find", search::text_query::message_of(fault));
      return false;
    }
    return true;
  }

  void take(search::file_result result) {
    using outcome = search::file_result::outcome;
    if (result.what == outcome::binary) ++binary_files_;
    if (result.what == outcome::unreadable) complain(shown(result.path), result.reason);
    if (result.what == outcome::gave_up)
      complain(shown(result.path), "the search took too long; there may be more matches");
    if (result.count == 0) return;
    if (find_.replacement) return replace(result.path);
    has_found_ = true;
    if (find_.count)
      output_.put(as_printed(result.path) + end_of_name() + std::to_string(result.count) + "\n");
    else
      print(result);
  }

  void print(search::file_result const& result) {
    std::string const name = as_printed(result.path) + end_of_name();
    for (search::file_match const& match : result.matches)
      output_.put(name + std::to_string(match.first.line + 1) + ":" +
                  std::to_string(match.first.column + 1) + ":" + match.line + "\n");
  }

  std::shared_ptr<WynDocument> open(std::string const& path) {
    desktop_.alerts().shown.clear();
    auto document = WynDocument::documentWithContentsOfFile(path);
    if (!document) complain_of_alert(path);
    return document;
  }

  void complain_of_alert(std::string const& path) {
    auto const& alerts = desktop_.alerts().shown;
    complain(shown(path),
             alerts.empty() ? "cannot be used" : alerts.back().title + ": " + alerts.back().text);
  }

  // Looked for once more in the document, as the file may have been changed meanwhile.
  void replace(std::string const& path) {
    auto const document = open(path);
    if (!document) return;
    std::u16string const text = document->storage().whole_text();
    file_query_.only_count = false;
    search::file_searcher searcher(file_query_, never_);
    search::file_result result = searcher.search(path, text);
    if (result.matches.empty()) return;
    search::match_replacement replacement(*find_.replacement, !find_.is_text);
    has_found_ = true;
    documents::replace_text(document->storage(), text::text_block::copy(search::with_replacements(
                                                     text, result.matches, replacement)));
    desktop_.alerts().shown.clear();
    if (document->isDocumentEdited() && !document->writeToFile(document->filename())) {
      document->dropUnsavedText();
      return complain_of_alert(path);
    }
    output_.put(as_printed(path) + end_of_name() + " " + std::to_string(result.matches.size()) +
                " replaced\n");
  }

  batch_options const& options_;
  batch_find_options const& find_;
  headless::headless_desktop desktop_;
  AppDelegate app_;
  batch_output output_{batch_output::heading::none};
  std::string const folder_ = path::cwd();
  search::file_query file_query_;
  std::vector<projects::walk_root> roots_;
  std::vector<std::pair<std::string, std::string>> names_;  // of the roots: path, and as given
  std::atomic<bool> const never_ = false;
  std::size_t binary_files_ = 0;
  bool has_found_ = false, has_trouble_ = false;
};

}  // namespace

int run_batch_find(batch_options const& options) {
  return find_run(options).run();
}

}  // namespace app
