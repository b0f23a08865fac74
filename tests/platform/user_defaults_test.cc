#include "platform/user_defaults.h"

#include "path/temporary_folder.h"
#include "platform/notification_center.h"
#include "plist/xml_reader.h"
#include "test.h"

namespace fs = std::filesystem;

namespace {

using platform::user_defaults;
using plist::value;

/// Lets the call of a given number fail or end the process; counts all calls.
class faulty_calls : public platform::file_calls {
 public:
  enum class fault { none, error, exit };

  int calls = 0;
  int at = -1;  // the number of the call that goes wrong, from 0
  fault what = fault::none;
  int error = EIO;

  int open(char const* path, int flags, mode_t mode) override {
    return strikes() ? -1 : file_calls::open(path, flags, mode);
  }
  ssize_t read(int fd, void* buffer, std::size_t count) override {
    return strikes() ? -1 : file_calls::read(fd, buffer, count);
  }
  ssize_t write(int fd, void const* buffer, std::size_t count) override {
    // What is written comes in small pieces, so that a fault can leave half a file.
    return strikes() ? -1 : file_calls::write(fd, buffer, std::min<std::size_t>(count, 100));
  }
  int fstat(int fd, struct stat* s) override { return strikes() ? -1 : file_calls::fstat(fd, s); }
  int fchmod(int fd, mode_t mode) override { return strikes() ? -1 : file_calls::fchmod(fd, mode); }
  int fsync(int fd) override { return strikes() ? -1 : file_calls::fsync(fd); }
  int close(int fd) override {
    int const result = file_calls::close(fd);
    return strikes() ? -1 : result;
  }
  int rename(char const* from, char const* to) override {
    return strikes() ? -1 : file_calls::rename(from, to);
  }
  int linkat(int folder, char const* from, char const* to) override {
    return strikes() ? -1 : file_calls::linkat(folder, from, to);
  }
  int renameat2(int folder, char const* from, char const* to, unsigned flags) override {
    return strikes() ? -1 : file_calls::renameat2(folder, from, to, flags);
  }
  int unlink(char const* path) override { return strikes() ? -1 : file_calls::unlink(path); }

 private:
  bool strikes() {
    if (calls++ != at || what == fault::none) return false;
    if (what == fault::exit) ::_exit(9);
    errno = error;
    return true;
  }
};

class user_defaults_test : public testing::Test {
 protected:
  void write(std::string const& text) {
    fs::create_directories(fs::path(path_).parent_path());
    folder_.write("Quirnote/Defaults.plist", text);
  }

  value stored() {
    auto const read = plist::read_xml(folder_.read(path_));
    EXPECT_FALSE(read.error) << read.error->message;
    return read.value;
  }

  strings files() {
    strings names;
    for (auto const& entry : fs::directory_iterator(fs::path(path_).parent_path()))
      names.push_back(entry.path().filename());
    return names;
  }

  temporary_folder folder_;
  std::string const path_ = folder_ / "Quirnote/Defaults.plist";
};

std::string document(std::string const& entries) {
  return "<plist><dict>" + entries + "</dict></plist>\n";
}

TEST_F(user_defaults_test, layers) {
  user_defaults defaults(path_);
  EXPECT_FALSE(defaults.get("k"));
  EXPECT_EQ(defaults.integer("k", 9), 9);
  defaults.register_defaults({{"k", 1}, {"other", "x"}});
  EXPECT_EQ(defaults.integer("k", 9), 1);
  defaults.set("k", "2");
  EXPECT_EQ(defaults.integer("k"), 2);
  defaults.set_volatile("k", 3);
  EXPECT_EQ(defaults.integer("k"), 3);
  defaults.set("k", 4);
  EXPECT_EQ(defaults.integer("k"), 3);
  EXPECT_EQ(defaults.all(), (plist::dictionary{{"k", 3}, {"other", "x"}}));
  EXPECT_TRUE(defaults.save());
  EXPECT_EQ(stored(), value(plist::dictionary{{"k", 4}}));

  user_defaults next(path_);
  next.register_defaults({{"k", 1}});
  EXPECT_EQ(next.integer("k"), 4);
  next.remove("k");
  EXPECT_EQ(next.integer("k"), 1);
  EXPECT_TRUE(next.save());
  EXPECT_EQ(stored(), value(plist::dictionary{}));
}

TEST_F(user_defaults_test, a_faulty_value_stays_in_the_file_and_is_not_used) {
  write(document("<key>a</key><integer>7</integer><key>b</key><integer>7</integer>"));
  user_defaults defaults(path_);
  std::string const errors = errors_of([&] {
    EXPECT_EQ(defaults.integer("a"), 7);
    defaults.register_defaults({{"a", 1}});
    defaults.set_check([](std::string_view key, value const& v) {
      return key == "a" && v.integer_or(0) > 5 ? "a is too much" : "";
    });
    EXPECT_EQ(defaults.integer("a"), 1);
    defaults.set("b", 8);
    EXPECT_TRUE(defaults.save());
  });
  EXPECT_EQ(stored(), value(plist::dictionary{{"a", 7}, {"b", 8}}));
  EXPECT_EQ(errors, "Quirnote: " + path_ + ": a is too much; the default is used instead\n");
  defaults.remove("a");
  EXPECT_TRUE(defaults.save());
  EXPECT_EQ(stored(), value(plist::dictionary{{"b", 8}}));
  EXPECT_EQ(defaults.integer("a"), 1);
}

TEST_F(user_defaults_test, setting_what_is_stored_already_writes_nothing) {
  write(document("<key>a</key><integer>1</integer>"));
  faulty_calls calls;
  user_defaults defaults(path_, calls);
  defaults.register_defaults({{"b", 1}});
  EXPECT_EQ(calls.calls, 0) << "read before the first look-up";
  defaults.set("a", 1);
  defaults.remove("nothing");
  int const after_reading = calls.calls;
  EXPECT_TRUE(defaults.save());
  defaults.check_for_changes();
  EXPECT_EQ(calls.calls, after_reading);
  defaults.set("a", 2);
  defaults.set("a", 1);  // back again before anything was written
  EXPECT_TRUE(defaults.save());
  EXPECT_EQ(stored()["a"], value(1));
}

TEST_F(user_defaults_test, posts_when_a_lookup_changes) {
  user_defaults defaults(path_), other(path_);
  int posts = 0;
  auto const token = platform::notification_center::standard().observe(
      user_defaults::did_change, [&](auto const&) { ++posts; }, &defaults);
  auto const expect_posts = [&](int count, char const* after) {
    EXPECT_EQ(posts, count) << after;
    posts = 0;
  };
  defaults.register_defaults({{"r", 1}});
  expect_posts(0, "registering");
  defaults.set("a", 1);
  expect_posts(1, "setting");
  defaults.set("a", 1);
  defaults.set("r", 1);
  defaults.remove("none");
  expect_posts(0, "setting what holds already");
  defaults.set_volatile("a", 5);
  expect_posts(1, "overriding");
  defaults.set("a", 2);
  expect_posts(0, "setting what is overridden");
  defaults.check_for_changes();
  expect_posts(0, "storing");
  EXPECT_EQ(other.integer("a"), 2);
  other.set("b", 1);
  other.check_for_changes();
  defaults.check_for_changes();
  expect_posts(1, "a change by another process");
  EXPECT_EQ(defaults.integer("b"), 1);
  fs::remove(path_);
  defaults.check_for_changes();
  expect_posts(1, "removal of the file");
  EXPECT_FALSE(defaults.get("b"));
}

TEST_F(user_defaults_test, saving_keeps_what_other_processes_wrote) {
  constexpr int processes = 20, keys = 2;
  std::vector<pid_t> children;
  for (int p = 0; p < processes; ++p) {
    pid_t const child = ::fork();
    if (child == 0) {
      user_defaults defaults(path_);
      bool ok = true;
      for (int k = 0; k < keys; ++k) {
        defaults.set("k" + std::to_string(p) + "." + std::to_string(k), k);
        ok = defaults.save() && ok;
      }
      ::_exit(ok ? 0 : 1);
    }
    children.push_back(child);
  }
  for (pid_t const child : children) {
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  EXPECT_EQ(stored().entries().size(), std::size_t(processes * keys));
  EXPECT_EQ(files(), strings{"Defaults.plist"});
}

TEST_F(user_defaults_test, root_follows_no_link_of_another_user) {
  if (::geteuid() != 0) GTEST_SKIP() << "root only";
  std::string const target = path_ + ".target";
  for (uid_t const owner : {1000u, 0u}) {
    write(document(""));
    fs::rename(path_, target);
    fs::create_symlink(target, path_);
    ASSERT_EQ(::lchown(path_.c_str(), owner, owner), 0);
    user_defaults defaults(path_);
    defaults.set("a", 1);
    EXPECT_EQ(defaults.save(), owner == 0);
    EXPECT_EQ(user_defaults(target).integer("a"), owner == 0 ? 1 : 0);
    fs::remove(path_);
  }
}

TEST_F(user_defaults_test, a_process_ended_at_any_call_loses_nothing) {
  value const before = plist::dictionary{{"a", std::string(300, 'a')}, {"b", 1}};
  value const after = plist::dictionary{{"a", std::string(500, 'c')}, {"b", 1}};
  bool finished = false, saw_before = false, saw_after = false;
  for (int at = 0; !finished; ++at) {
    fs::remove_all(fs::path(path_).parent_path());
    {
      user_defaults defaults(path_);
      for (auto const& [key, v] : before.entries()) defaults.set(key, v);
      ASSERT_TRUE(defaults.save());
    }
    pid_t const child = ::fork();
    if (child == 0) {
      faulty_calls calls;
      calls.at = at;
      calls.what = faulty_calls::fault::exit;
      user_defaults defaults(path_, calls);
      defaults.set("a", after["a"]);
      ::_exit(defaults.save() ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(status == 0 || WEXITSTATUS(status) == 9) << status;
    finished = status == 0;
    value const found = stored();
    EXPECT_TRUE(found == before || found == after) << "ended at call " << at;
    (found == after ? saw_after : saw_before) = true;
    EXPECT_TRUE(found == after || !finished);

    for (std::string const& name : files()) {
      auto const file = fs::path(path_).parent_path() / name;
      if (name[0] == '.')
        fs::last_write_time(file, fs::last_write_time(file) - std::chrono::minutes(2));
    }
    user_defaults next(path_);
    next.set("b", 2);
    EXPECT_TRUE(next.save());
    EXPECT_EQ(stored()["a"], found["a"]);
    EXPECT_EQ(files(), strings{"Defaults.plist"}) << "ended at call " << at;
  }
  EXPECT_TRUE(saw_before && saw_after);
}

TEST_F(user_defaults_test, a_failing_call_is_reported_and_tried_again) {
  write(document("<key>b</key><integer>1</integer>"));
  fs::permissions(path_, fs::perms(0640));
  bool finished = false;
  for (int at = 0; !finished; ++at) {
    write(document("<key>b</key><integer>1</integer>"));
    faulty_calls calls;
    user_defaults defaults(path_, calls);
    EXPECT_EQ(defaults.integer("b"), 1);
    defaults.set("a", std::string(300, 'a'));
    calls.calls = 0;
    calls.at = at;
    calls.what = faulty_calls::fault::error;
    calls.error = at % 2 ? ENOSPC : EIO;
    bool saved = false;
    std::string const message = errors_of([&] { saved = defaults.save(), defaults.save(); });
    finished = calls.calls <= at;
    if (!saved)
      EXPECT_EQ(message,
                "Quirnote: " + path_ + ": can't be written: " + std::strerror(calls.error) + "\n");
    EXPECT_EQ(stored(), value(plist::dictionary{{"a", std::string(300, 'a')}, {"b", 1}})) << at;
    EXPECT_EQ(files(), strings{"Defaults.plist"}) << at;
    EXPECT_EQ(fs::status(path_).permissions(), fs::perms(0640)) << at;
  }
}

/// Written long ago, so that nobody is still at it.
void age(std::string const& path) {
  fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::minutes(1));
}

TEST_F(user_defaults_test, damaged_files_are_left_alone_until_something_is_stored) {
  std::string const texts[] = {document("<key>a</key>"), "", "<plist><array/></plist>",
                               document("<key>a</key><integer>1</integer>").substr(0, 30)};
  char const* const reasons[] = {"1:26: the key \"a\" has no value", "1:1: no element found",
                                 "1:1: the top level is no dictionary", "1:26: unclosed token"};
  for (int i = 0; i < 4; ++i) {
    write(texts[i]);
    age(path_);
    user_defaults defaults(path_);
    defaults.register_defaults({{"a", 7}});
    std::string const errors = errors_of([&] {
      EXPECT_EQ(defaults.integer("a"), 7);
      EXPECT_EQ(defaults.integer("b", 8), 8);
    });
    std::string const kept = path_ + ".damaged-" + std::to_string(i + 1);
    std::string const fault = "Quirnote: " + path_ + ":" + reasons[i];
    EXPECT_EQ(errors, fault + "; the settings known before hold until this is mended\n");
    EXPECT_EQ(folder_.read(path_), texts[i]);
    EXPECT_FALSE(fs::exists(kept));

    plist::value told;
    auto const token = platform::notification_center::standard().observe(
        user_defaults::did_set_aside, [&](auto const& n) { told = n.info; }, &defaults);
    std::string const kept_errors = errors_of([&] {
      defaults.set("a", 1);
      EXPECT_TRUE(defaults.save());
    });
    EXPECT_EQ(kept_errors, fault + "; the file is kept as " + kept + "\n");
    EXPECT_EQ(told["kept"].string_or(""), kept);
    EXPECT_EQ(folder_.read(kept), texts[i]);
    EXPECT_EQ(stored(), value(plist::dictionary{{"a", 1}}));
  }
}

/// Somebody writes the file without the lock, and is met at every byte of it.
TEST_F(user_defaults_test, a_file_in_the_middle_of_a_write_loses_nothing) {
  write(document("<key>a</key><integer>1</integer>"));
  user_defaults defaults(path_);
  EXPECT_EQ(defaults.integer("a"), 1);
  std::string const whole = document("<key>a</key><integer>2</integer><key>b</key><true/>");
  silenced_errors const quiet;
  defaults.set("c", 3);
  for (std::size_t size = 0; size < whole.rfind("</plist>"); ++size) {
    write(whole.substr(0, size));
    defaults.check_for_changes();
    EXPECT_EQ(folder_.read(path_), whole.substr(0, size));
    EXPECT_EQ(defaults.integer("a"), 1) << size;
  }
  write(whole);
  defaults.check_for_changes();
  EXPECT_EQ(files(), strings{"Defaults.plist"});
  EXPECT_EQ(stored(), value(plist::dictionary{{"a", 2}, {"b", true}, {"c", 3}}));

  // What is known isn't lost with a file that stays damaged.
  write("damaged");
  age(path_);
  defaults.set("d", 4);
  defaults.check_for_changes();
  EXPECT_EQ(stored(), value(plist::dictionary{{"a", 2}, {"b", true}, {"c", 3}, {"d", 4}}));
}

TEST_F(user_defaults_test, damaged_files_are_kept_aside_without_hard_links_too) {
  struct : platform::file_calls {
    int linkat(int, char const*, char const*) override {
      errno = EPERM;
      return -1;
    }
    int renameat2(int folder, char const* from, char const* to, unsigned flags) override {
      errno = EINVAL;
      return flags != 0 ? -1 : file_calls::renameat2(folder, from, to, flags);
    }
  } calls;
  silenced_errors const quiet;
  for (std::string const damage : {"one", "two"}) {
    write(damage);
    age(path_);
    user_defaults defaults(path_, calls);
    defaults.set("a", 1);
    EXPECT_TRUE(defaults.save());
  }
  EXPECT_EQ(folder_.read(path_ + ".damaged-1"), "one");
  EXPECT_EQ(folder_.read(path_ + ".damaged-2"), "two");
  EXPECT_EQ(stored(), value(plist::dictionary{{"a", 1}}));
}

TEST_F(user_defaults_test, what_cannot_be_read_is_not_overwritten) {
  fs::create_directories(path_ + "/kept");
  user_defaults defaults(path_);
  testing::internal::CaptureStderr();
  defaults.set("a", 1);
  EXPECT_FALSE(defaults.save());
  EXPECT_EQ(defaults.integer("a"), 1);
  defaults.check_for_changes();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Quirnote: " + path_ + ": Is a directory\n" +
                                                        "Quirnote: " + path_ +
                                                        ": can't be written: Is a directory\n");
  EXPECT_TRUE(fs::exists(path_ + "/kept"));
  fs::remove_all(path_);
  defaults.check_for_changes();
  EXPECT_EQ(stored(), value(plist::dictionary{{"a", 1}}));
}

TEST_F(user_defaults_test, what_the_file_cannot_hold_lasts_for_this_run) {
  user_defaults defaults(path_);
  EXPECT_NE(errors_of([&] { EXPECT_FALSE(defaults.set("a", "\x01")); }), "");
  EXPECT_EQ(defaults.string("a"), "\x01");
  EXPECT_TRUE(defaults.set("b", 1));
  EXPECT_TRUE(defaults.save());
  EXPECT_EQ(stored(), value(plist::dictionary{{"b", 1}}));
}

// A user's program may be run by root with the user's home folder.
TEST_F(user_defaults_test, what_root_writes_stays_the_users) {
  if (geteuid() != 0) GTEST_SKIP() << "needs to be root";
  constexpr unsigned user = 1234, group = 4321;
  fs::path const folder = fs::path(path_).parent_path();
  fs::create_directories(folder);
  ASSERT_EQ(chown(folder.c_str(), user, group), 0);
  for (unsigned const mode : {0600, 0640}) {  // of a new file, and of one that is there
    user_defaults defaults(path_);
    defaults.set("a", std::int64_t{mode});
    EXPECT_TRUE(defaults.save());
    EXPECT_EQ(status_of(path_).st_uid, user);
    EXPECT_EQ(status_of(path_).st_gid, group);
    EXPECT_EQ(mode_of(path_), mode);
    ASSERT_EQ(chmod(path_.c_str(), 0640), 0);
  }
}

TEST_F(user_defaults_test, a_symbolic_link_stays_one) {
  std::string const target = folder_.write("dotfiles.plist", document(""));
  fs::create_directories(fs::path(path_).parent_path());
  fs::create_symlink(target, path_);
  user_defaults defaults(path_);
  defaults.set("a", 1);
  EXPECT_TRUE(defaults.save());
  EXPECT_TRUE(fs::is_symlink(path_));
  EXPECT_EQ(plist::read_xml(folder_.read(target)).value, value(plist::dictionary{{"a", 1}}));
}

}  // namespace
