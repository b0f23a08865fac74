#include "bundles/item_file.h"

#include "path/file_writer.h"
#include "platform/desktop.h"
#include "platform/replace_file.h"
#include "plist/xml_reader.h"
#include "plist/xml_writer.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <random>
#include <set>

namespace bundles {

namespace fs = std::filesystem;

void complain(std::string const& message) {
  static std::mutex mutex;
  static std::set<std::string> told;
  std::lock_guard const lock(mutex);
  if (told.insert(message).second) std::fprintf(stderr, "Quirnote: %s\n", message.c_str());
}

plist::value read_dictionary(std::string const& path) {
  std::string bytes;
  if (int const error = platform::read_file(path, bytes, platform::file_calls::system())) {
    complain(path + ": " + std::strerror(error));
    return {};
  }
  plist::read_result read = plist::read_xml(bytes);
  if (read.error) {
    complain(path + ":" + std::to_string(read.error->line) + ":" +
             std::to_string(read.error->column) + ": " + read.error->message);
    return {};
  }
  if (!read.value.as_dictionary()) {
    complain(path + ": the property list is no dictionary");
    return {};
  }
  return std::move(read.value);
}

bool write_dictionary(std::string const& path, plist::dictionary const& content) {
  plist::write_result const written = plist::write_xml(content);
  if (written.error) {
    complain(path + ": " + *written.error);
    return false;
  }
  auto const error = path::write_in_place(path, path::contents_of(written.text));
  if (error) complain(path + ": " + error->message);
  return !error;
}

std::vector<std::string> string_array(plist::value const& dictionary, std::string_view key) {
  std::vector<std::string> result;
  for (plist::value const& element : dictionary[key].elements())
    if (auto const* text = element.as_string()) result.push_back(*text);
  return result;
}

namespace {

void copy_entry(fs::path const& from, fs::path const& to, bool skip_hidden) {
  fs::file_status const status = fs::symlink_status(from);
  if (fs::is_symlink(status)) return fs::copy_symlink(from, to);
  if (!fs::is_directory(status)) {
    // What is neither, such as a named pipe, has no content to be copied.
    if (fs::is_regular_file(status)) fs::copy_file(from, to);
    return;
  }
  fs::create_directory(to);
  for (fs::directory_entry const& entry : fs::directory_iterator(from)) {
    std::string const name = entry.path().filename().string();
    if (!skip_hidden || name.front() != '.') copy_entry(entry.path(), to / name, skip_hidden);
  }
}

}  // namespace

bool copy_tree(std::string const& from, std::string const& to, bool skip_hidden) {
  try {
    copy_entry(from, to, skip_hidden);
    return true;
  } catch (fs::filesystem_error const& error) {
    complain(from + ": " + error.code().message());
    return false;
  }
}

void remove_tree(std::string const& folder) {
  std::error_code ignored;
  fs::remove_all(folder, ignored);
}

std::vector<std::string> visible_names(std::string const& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (auto it = fs::directory_iterator(folder, error); !error && it != fs::directory_iterator();
       it.increment(error)) {
    std::string name = it->path().filename().string();
    if (name.front() != '.') names.push_back(std::move(name));
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string stringWithUUID() {
  std::random_device random;
  std::uniform_int_distribution<int> digit(0, 15);
  std::string result = "xxxxxxxx-xxxx-4xxx-Nxxx-xxxxxxxxxxxx";
  for (char& c : result) {
    if (c == 'x') c = "0123456789ABCDEF"[digit(random)];
    if (c == 'N') c = "89AB"[digit(random) & 3];
  }
  return result;
}

void beep() {
  if (auto* const desktop = platform::desktop::current_or_null()) desktop->beep();
}

}  // namespace bundles
