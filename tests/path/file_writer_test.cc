#include "path/file_writer.h"
#include "platform/system/temporary_files.h"

#include <new>

#include "path/faulting_calls.h"
#include "path/other_user.h"
#include "path/temporary_folder.h"
#include "test.h"

namespace {

using write_function = std::optional<path::write_error> (*)(std::string const&,
                                                            path::file_contents const&,
                                                            path::file_system_calls&);
struct way {
  char const* name;
  write_function write;
  bool in_place;
};
constexpr way ways[] = {{"in place", path::write_in_place, true},
                        {"atomic", path::write_atomically, false}};

using write_with_options = std::optional<path::write_error> (*)(std::string const&,
                                                                path::file_contents const&,
                                                                path::write_options const&,
                                                                std::optional<path::file_version>&,
                                                                path::file_system_calls&);
constexpr write_with_options ways_with_options[] = {path::write_in_place, path::write_atomically};

/// Comes in pieces of 1000 bytes.
path::file_contents in_pieces(std::string const& bytes) {
  return {bytes.size(), [&bytes](path::byte_sink const& sink) {
            for (std::size_t i = 0; i < bytes.size(); i += 1000) {
              auto const* piece = reinterpret_cast<unsigned char const*>(bytes.data()) + i;
              if (!sink(piece, std::min<std::size_t>(1000, bytes.size() - i))) return false;
            }
            return true;
          }};
}

std::string write(way const& w, std::string const& path, std::string const& bytes) {
  auto const error = w.write(path, path::contents_of(bytes), path::file_system_calls::system());
  return error ? error->message : "";
}

TEST(file_writer, writes_new_shorter_and_longer_files) {
  for (auto const& w : ways) {
    temporary_folder folder;
    for (std::string const& bytes : {std::string("some text"), std::string("text"), std::string(),
                                     std::string(300000, 'x'), std::string("\0\xFF", 2)}) {
      EXPECT_EQ(write(w, folder / "file", bytes), "") << w.name;
      EXPECT_TRUE(folder.read(folder / "file") == bytes) << w.name << bytes.size();
    }
    EXPECT_EQ(folder.names(), std::set<std::string>{"file"}) << w.name;
  }
}

TEST(file_writer, keeps_what_belongs_to_the_file) {
  for (auto const& w : ways) {
    bool const in_place = w.in_place;
    temporary_folder folder;
    std::string const file = folder.write("file", "old");
    if (geteuid() == 0) ASSERT_EQ(chown(file.c_str(), 1234, 4321), 0);
    ASSERT_EQ(chmod(file.c_str(), 06640), 0);
    if (in_place) ASSERT_EQ(link(file.c_str(), (folder / "hard").c_str()), 0);
    ASSERT_EQ(symlink("file", (folder / "soft").c_str()), 0);
    bool const has_attributes = setxattr(file.c_str(), "user.note", "kept", 4, 0) == 0;
    give_access_list(file);
    std::string const access_list = access_list_of(file);
    auto const before = status_of(file);

    EXPECT_EQ(write(w, folder / "soft", "new text"), "") << w.name;
    auto const after = status_of(file);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
    EXPECT_EQ(after.st_mode & 0777, before.st_mode & 0777);
    EXPECT_EQ(after.st_ino == before.st_ino, in_place);
    char note[4] = "";
    if (has_attributes) EXPECT_EQ(getxattr(file.c_str(), "user.note", note, 4), 4);
    EXPECT_EQ(access_list_of(file), access_list);
    EXPECT_TRUE(S_ISLNK(status_of(folder / "soft").st_mode));
    EXPECT_EQ(folder.read(file), "new text");
    if (in_place) {
      EXPECT_EQ(folder.read(folder / "hard"), "new text");
    } else {
      ASSERT_EQ(link(file.c_str(), (folder / "hard").c_str()), 0);
      EXPECT_EQ(write(w, file, "newer"), "Too many links");
      EXPECT_EQ(folder.read(folder / "hard"), "new text");
    }
  }
}

TEST(file_writer, refuses_what_must_not_be_overwritten) {
  for (auto const& w : ways) {
    temporary_folder folder;
    std::string const read_only = folder.write("read only", "old");
    ASSERT_EQ(chmod(read_only.c_str(), 0444), 0);
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    ASSERT_EQ(symlink("loop", (folder / "loop").c_str()), 0);
    auto const names = folder.names();
    EXPECT_EQ(write(w, read_only, "new"), "Permission denied") << w.name;
    EXPECT_EQ(folder.read(read_only), "old");
    EXPECT_EQ(write(w, folder.path(), "new"), "It is a folder") << w.name;
    EXPECT_EQ(write(w, folder / "pipe", "new"), "It is a named pipe") << w.name;
    EXPECT_EQ(write(w, "/dev/null", "new"), "It is a device") << w.name;
    EXPECT_EQ(write(w, folder / "loop", "new"), "Too many levels of symbolic links") << w.name;
    EXPECT_EQ(write(w, folder / "no/file", "new"), "No such file or directory") << w.name;
    EXPECT_EQ(write(w, read_only + "/file", "new"), "Not a directory") << w.name;
    EXPECT_EQ(folder.names(), names) << w.name;
  }
}

TEST(file_writer, writes_through_a_link_that_leads_nowhere_yet) {
  for (auto const& w : ways) {
    temporary_folder folder;
    ASSERT_EQ(symlink("target", (folder / "link").c_str()), 0);
    EXPECT_EQ(write(w, folder / "link", "text"), "") << w.name;
    EXPECT_EQ(folder.read(folder / "target"), "text");
    EXPECT_EQ(folder.names(), (std::set<std::string>{"link", "target"})) << w.name;
  }
}

/// Notes what others than its owner may do with a file at each call, and which rights it has if the
/// program is killed there.
class rights_at_each_call : public watched_calls {
 public:
  explicit rights_at_each_call(std::string const& path) : path_(path) {}
  unsigned seen = 0;

 protected:
  bool before(char const*) override {
    seen |= status_of(path_).st_mode & 07777;
    return true;
  }

 private:
  std::string const path_;
};

TEST(file_writer, lends_the_right_to_write_to_the_owner_alone) {
  for (write_with_options const write : ways_with_options)
    for (bool const as_root : {false, true}) {
      temporary_folder folder;
      std::string const file = folder.write("file", "old");
      ASSERT_EQ(chmod(file.c_str(), 0444), 0);
      if (geteuid() == 0 && !as_root) {
        ASSERT_EQ(chown(file.c_str(), other_user::id, other_user::id), 0);
        ASSERT_EQ(chown(folder.path().c_str(), other_user::id, other_user::id), 0);
      }
      rights_at_each_call calls(file);
      path::write_options options;
      options.even_read_only = true;
      std::optional<path::file_version> written;
      {
        std::optional<other_user> user;
        if (!as_root) user.emplace();
        EXPECT_FALSE(write(file, path::contents_of("new"), options, written, calls));
      }
      EXPECT_EQ(folder.read(file), "new");
      EXPECT_EQ(status_of(file).st_mode & 07777, 0444u);
      EXPECT_EQ(written, path::version_of(status_of(file)));
      EXPECT_EQ(calls.seen & ~(geteuid() == 0 && as_root ? 0444u : 0644u), 0u)
          << std::oct << calls.seen;
    }
}

/// Lets the call of one number fail, or the owner lock others out before it.
class private_bytes : public watched_calls {
 public:
  private_bytes(std::string const& path, int at, bool locks)
      : path_(path), at_(at), locks_(locks) {}
  bool has_struck() const { return count_ >= at_; }
  std::string leaked;  // the call before which others could read the new bytes

 protected:
  bool before(char const* call) override {
    std::ifstream const file(path_);
    std::string const bytes = (std::ostringstream() << file.rdbuf()).str();
    if (bytes.find("new") != bytes.npos && (status_of(path_).st_mode & 0077)) leaked = call;
    if (++count_ != at_) return true;
    errno = EIO;
    return locks_ && chmod(path_.c_str(), 0600) == 0;
  }

 private:
  std::string const path_;
  int const at_;
  bool const locks_;
  int count_ = 0;
};

TEST(file_writer, lets_nobody_read_what_is_to_be_private) {
  for (write_with_options const write : ways_with_options)
    for (bool const locks : {false, true})
      for (int at = 1; at < 100; ++at) {
        temporary_folder folder;
        std::string const file = folder.write("file", "the old bytes");
        ASSERT_EQ(chmod(file.c_str(), 0644), 0);
        path::write_options options;
        if (!locks) {
          options.attributes = status_of(file);
          options.attributes->st_mode = S_IFREG | 0600;
        }
        private_bytes calls(file, at, locks);
        std::optional<path::file_version> written;
        auto const error = write(file, path::contents_of("new"), options, written, calls);
        mode_t const mode = status_of(file).st_mode & 0777;
        if (!calls.has_struck()) break;
        if (locks) {
          EXPECT_EQ(mode, 0600u) << at;
        } else {
          EXPECT_EQ(calls.leaked, "") << at;
          if (folder.read(file) == "the old bytes") EXPECT_EQ(mode, 0644u) << at;
        }
        EXPECT_TRUE(error || folder.read(file) == "new") << at;
      }
}

/// Lets each system call fail in turn: what is on the disk afterwards must be what is reported.
TEST(file_writer, survives_the_failure_of_any_call) {
  std::string const fresh(5000, 'n');
  for (auto const& w : ways) {
    for (std::string const& old : {std::string(), std::string(20, 'o'), std::string(9000, 'o')}) {
      for (int code : {EIO, ENOSPC}) {
        for (int nth = 1;; ++nth) {
          temporary_folder folder;
          std::string const file = folder / "file";
          if (!old.empty()) folder.write("file", old);
          faulting_calls calls(nth, code);
          auto const error = w.write(file, in_pieces(fresh), calls);
          if (!calls.has_failed()) {
            EXPECT_GT(nth, 5);
            break;
          }
          SCOPED_TRACE(std::string(w.name) + " " + std::to_string(old.size()) + ": " +
                       calls.failed_call());
          bool const written = std::filesystem::exists(file) && folder.read(file) == fresh;
          bool const untouched =
              old.empty() ? !std::filesystem::exists(file) : folder.read(file) == old;
          EXPECT_TRUE(error || written);
          EXPECT_TRUE(written || untouched || error->target_damaged);
          EXPECT_TRUE(!error || !error->target_damaged || w.in_place);
          EXPECT_EQ(error && error->is_in_place, error && written && !w.in_place);
          EXPECT_LE(folder.names().size(), 1u);
        }
      }
    }
  }
}

TEST(file_writer, carries_on_after_interruptions_and_short_writes) {
  std::string const bytes(5000, 'n');
  for (auto const& w : ways) {
    temporary_folder folder;
    folder.write("file", std::string(9000, 'o'));
    stuttering_calls calls;
    EXPECT_FALSE(w.write(folder / "file", in_pieces(bytes), calls)) << w.name;
    EXPECT_TRUE(folder.read(folder / "file") == bytes) << w.name;
  }
}

TEST(file_writer, removes_what_killed_writes_have_left) {
  temporary_folder folder;
  std::string const file = folder.write("file", "old");
  auto const leave = [&](std::string const& name, std::time_t age) {
    timespec const times[2] = {{std::time(nullptr) - age, 0}, {std::time(nullptr) - age, 0}};
    EXPECT_EQ(utimensat(AT_FDCWD, folder.write(name, "x").c_str(), times, 0), 0);
  };
  std::set<std::string> const kept = {".file.quirnote-2",  ".file.quirnote-3", ".file.quirnote-a",
                                      ".files.quirnote-1", ".file.1",          "file"};
  for (std::string const& name : kept) leave(name, 3600);
  leave(".file.quirnote-1", 3600);
  leave(".file.quirnote-2", 5);  // somebody may be about to hold it
  int const held = open((folder / ".file.quirnote-3").c_str(), O_RDONLY);
  platform::hold_temporary(held);
  EXPECT_EQ(write(ways[1], file, "new"), "");
  close(held);
  EXPECT_EQ(folder.names(), kept);

  // A program that is killed: its name is of that form, and the file is held until then.
  pid_t const child = fork();
  if (child == 0) {
    path::write_atomically(file, {3, [](path::byte_sink const&) -> bool { abort(); }});
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  auto const names = folder.names();
  ASSERT_EQ(names.size(), kept.size() + 1);
  for (std::string const& name : names) leave(name, 3600);
  EXPECT_EQ(write(ways[1], file, "newer"), "");
  EXPECT_EQ(folder.names(),
            (std::set<std::string>{".file.1", ".file.quirnote-a", ".files.quirnote-1", "file"}));
}

TEST(file_writer, tells_when_memory_runs_out) {
  for (auto const& w : ways) {
    temporary_folder folder;
    folder.write("file", "old");
    path::file_contents const contents{
        5, [](path::byte_sink const&) -> bool { throw std::bad_alloc(); }};
    auto const error = w.write(folder / "file", contents, path::file_system_calls::system());
    ASSERT_TRUE(error) << w.name;
    EXPECT_EQ(error->code, ENOMEM);
    EXPECT_FALSE(error->target_damaged);
    EXPECT_EQ(folder.read(folder / "file"), "old");
  }
}

TEST(file_writer, leaves_the_old_bytes_alone_on_a_full_disk) {
  temporary_folder folder;
  if (mount("none", folder.path().c_str(), "tmpfs", 0, "size=64k") != 0)
    GTEST_SKIP() << "no right to mount a small file system";
  std::string const old(30000, 'o');
  for (auto const& w : ways) {
    std::string const file = folder.write("file", old);
    auto const error = w.write(file, path::contents_of(std::string(100000, 'n')),
                               path::file_system_calls::system());
    ASSERT_TRUE(error) << w.name;
    EXPECT_EQ(error->code, ENOSPC) << w.name;
    EXPECT_FALSE(error->target_damaged) << w.name;
    EXPECT_TRUE(folder.read(file) == old) << w.name;
    EXPECT_EQ(folder.names(), std::set<std::string>{"file"}) << w.name;
    EXPECT_EQ(write(w, folder / "new", std::string(100000, 'n')), "No space left on device");
    EXPECT_EQ(folder.names(), std::set<std::string>{"file"}) << w.name;
    // What was reserved in vain is free again.
    EXPECT_EQ(write(w, folder / "other", std::string(20000, 'n')), "") << w.name;
    std::filesystem::remove(folder / "other");
  }
  umount(folder.path().c_str());
}

TEST(file_writer, restores_the_dates_of_a_file_left_alone) {
  temporary_folder folder;
  std::string const file = folder.write("file", "old");
  timespec const times[2] = {{1000, 5}, {2000, 7}};
  ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
  faulting_calls calls("fallocate", ENOSPC);
  EXPECT_TRUE(path::write_in_place(file, path::contents_of("much longer"), calls));
  EXPECT_EQ(status_of(file).st_mtim.tv_sec, 2000);
  EXPECT_EQ(status_of(file).st_mtim.tv_nsec, 7);
}

}  // namespace
