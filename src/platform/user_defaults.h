#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "platform/system/replace_file.h"
#include "plist/value.h"

namespace platform {

/// Settings by key that survive a restart, kept in one XML property list that several processes
/// share. A key is looked up in three layers: what holds for this run alone, what the user set, and
/// what was registered as its default; else it is nothing. The file is read at the first look-up.
/// Main thread only.
///
///     auto& defaults = platform::user_defaults::standard();
///     defaults.register_defaults({{"WynTabSize", 4}});
///     auto size = defaults.integer("WynTabSize");
///     defaults.set("WynTabSize", 8);  // seen at once, in the file at the next check_for_changes
///
/// A file that is no property list is reported on standard error and left alone, as another process
/// may be writing it: what was known before stays in effect, or nothing at the first look. When
/// something is to be stored that file is kept as Defaults.plist.damaged-N beside a new one. What
/// can't be read or written for other reasons is reported once and tried again later; it is never
/// overwritten unread.
class user_defaults {
 public:
  /// Posted through notification_center::standard(), with this as the object, whenever a look-up
  /// may give another value than before. Registering posts nothing.
  static constexpr char const* did_change = "UserDefaultsDidChange";
  /// Posted when a damaged file has been kept beside a new one, with its "path", the path under
  /// which it is "kept", and the "reason", which begins with a line and a column.
  static constexpr char const* did_set_aside = "UserDefaultsDidSetAside";

  /// With an empty path nothing is read or written: settings in memory, for tests.
  explicit user_defaults(std::string path, file_calls& calls = file_calls::system());

  /// Those of the process, at first Defaults.plist in config_folder().
  static user_defaults& standard();
  /// Replaces them and returns the former ones, if there were any. References go stale.
  static std::unique_ptr<user_defaults> set_standard(std::unique_ptr<user_defaults> replacement);

  plist::value get(std::string_view key);
  bool boolean(std::string_view key, bool fallback = false);
  std::int64_t integer(std::string_view key, std::int64_t fallback = 0);
  double real(std::string_view key, double fallback = 0);
  std::string string(std::string_view key, std::string_view fallback = {});
  /// Empty when the value is of another kind.
  plist::array array(std::string_view key);
  plist::dictionary dictionary(std::string_view key);
  /// Every key that any layer has, with the value that get() gives.
  plist::dictionary all();

  /// Adds to the registered defaults; a later registration of a key replaces an earlier one.
  void register_defaults(plist::dictionary const& defaults);
  /// Says what is wrong with a value, as a sentence without its full stop; nothing of a good one.
  /// Faulty values in the file count as not set, and are reported once. They stay there until the
  /// key is set or removed.
  using check = std::function<std::string(std::string_view key, plist::value const& v)>;
  void set_check(check fault_of);
  bool has_check() const { return fault_of_ != nullptr; }

  /// Setting nothing removes. Observers of the change get `note` as the notification's info, by
  /// which they can recognise changes of their own kind; so do those of what observers change in
  /// answer. False if the file can't hold the value
  /// (see plist::write_xml): it then holds for this run alone, and that is reported.
  bool set(std::string_view key, plist::value v, plist::value const& note = {});
  void remove(std::string_view key);
  /// Overrides every other layer until the process ends; never stored. Nothing lifts the override.
  void set_volatile(std::string_view key, plist::value v);

  /// Stores what was set and takes over what other processes stored. The run loop calls this every
  /// second or so, and save() at the end. Without changes it costs one stat.
  void check_for_changes();
  /// Puts what was set or removed since the last time into the file, under a lock and on top of
  /// what stands there now, so that no other process's keys are lost. True if all is stored. Waits
  /// two seconds for a file that is damaged because another process has just begun to write it.
  bool save();

 private:
  struct signature {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = -1;
    std::int64_t modified_ns = 0;
    friend bool operator==(signature const&, signature const&) = default;
  };
  struct file_state {
    plist::dictionary entries;
    signature seen;
    std::optional<std::string> damage;  // line, column and reason
    int error = 0;                      // an errno
  };
  static signature signature_of(struct stat const& info);
  void load();
  void take(plist::dictionary entries);
  void reload();
  bool store(bool at_once);
  int store_pending(bool at_once);
  static bool is_young(file_state const& state);
  file_state read_current();
  int set_aside(file_state& damaged);
  void store_layer(std::string_view key, std::optional<plist::value> v,
                   plist::value const& note = {});
  void report(std::string const& message);
  void post(plist::value const& note = {});

  std::string path_;
  file_calls& calls_;
  bool loaded_ = false;
  signature seen_;
  check fault_of_;
  plist::dictionary stored_;                   // the file as last seen, without what is faulty
  std::set<std::string, std::less<>> faulty_;  // the other keys of the file
  std::map<std::string, std::optional<plist::value>, std::less<>> pending_;  // nullopt: removed
  plist::dictionary volatile_;
  plist::dictionary registered_;
  std::set<std::string> reported_;
  plist::value note_;  // of the change that observers are being notified of
};

}  // namespace platform
