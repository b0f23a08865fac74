#include "documents/document_fixture.h"
#include "path/other_user.h"

// What becomes of the files of others, and of their permissions, when somebody saves who isn't
// root.
namespace {

constexpr unsigned root = 0, own = other_user::id;
constexpr unsigned kept = 010000;  // the mode

struct rights_case {
  char const* name;
  unsigned owner, mode;
  char const* attribute;  // an access control list, capabilities, or none
  strings alerts;         // with the answer that saves
  bool saved;
  unsigned mode_after = kept;
};

constexpr char const* refused =
    "Couldn't Save|The file \u201Cfile\u201D could not be saved. Permission denied. Its text is "
    "still open here; it can be saved elsewhere with Save As.|Continue";
constexpr char const* read_only =
    "Couldn't Save|The file \u201Cfile\u201D is read-only. Would you like to overwrite "
    "it?|Overwrite";

std::string loses(std::string const& what) {
  return "Couldn't Save|Saving would remove " + what +
         " from the file \u201Cfile\u201D, and you are not permitted to undo that. Would you like "
         "to overwrite it?|Overwrite";
}

rights_case const cases[] = {
    {"one's own", own, 0640, "", {}, true},
    {"one's own, read-only", own, 0440, "", {read_only}, true},
    {"one's own, set-user-ID", own, 04755, "", {}, true},
    {"one's own, with capabilities", own, 0755, "cap", {loses("its capabilities")}, true},
    {"anybody may write it", root, 0666, "", {}, true},
    {"only root may write it", root, 0644, "", {refused}, false},
    {"root's, read-only", root, 0444, "", {read_only, "Operation not permitted"}, false},
    {"a list lets this user write it", root, 0640, "acl", {}, true},
    {"root's, set-user-ID", root, 04666, "", {loses("its set-user-ID mark")}, true, 0666},
    {"root's, set-group-ID", root, 02676, "", {loses("its set-group-ID mark")}, true, 0676},
};

struct facts {
  unsigned owner, group, mode;
  std::string access_list;
  friend bool operator==(facts const&, facts const&) = default;
};

facts facts_of(std::string const& path) {
  struct stat info {};
  EXPECT_EQ(stat(path.c_str(), &info), 0);
  return {info.st_uid, info.st_gid, info.st_mode & 07777, access_list_of(path)};
}

bool give(std::string const& path, std::string const& attribute) {
  if (attribute == "acl") return give_access_list(path);
  return attribute.empty() || give_capability(path);
}

void save_as_other_user(document_fixture& fixture, rights_case const& c, bool folder_is_own) {
  std::string const path = fixture.folder.write("file", "old");
  ASSERT_EQ(chown(path.c_str(), c.owner, c.owner), 0);
  ASSERT_EQ(chmod(path.c_str(), c.mode), 0);
  if (!give(path, c.attribute)) return;  // not on this file system
  facts const before = facts_of(path);
  {
    other_user const user;
    ASSERT_TRUE(user);
    auto const d = WynDocument::initWithContentsOfFile(path);
    ASSERT_TRUE(d);
    type(*d, u" and new");
    fixture.answer("Couldn't Save", "Don't Overwrite");
    if (c.alerts.size() > 0 && c.alerts[0] != refused) {
      EXPECT_FALSE(fixture.save(d));
      EXPECT_EQ(fixture.alerts().size(), 1u);
      EXPECT_TRUE(d->isDocumentEdited());
    }
    fixture.answer("Couldn't Save", "Overwrite");
    EXPECT_EQ(fixture.save(d), c.saved);
    EXPECT_EQ(d->isDocumentEdited(), !c.saved);
    EXPECT_EQ(text_of(*d), u"old and new");
  }
  auto const shown = fixture.alerts();
  EXPECT_EQ(shown.size(), c.alerts.size());
  for (std::size_t n = 0; n < std::min(shown.size(), c.alerts.size()); ++n)
    EXPECT_NE(shown[n].find(c.alerts[n]), std::string::npos) << shown[n];
  EXPECT_EQ(fixture.folder.read(path), c.saved ? "old and new" : "old");
  facts after = facts_of(path);
  if (c.mode_after != kept) {
    EXPECT_EQ(after.mode, c.mode_after);
    after.mode = before.mode;
  }
  EXPECT_EQ(after, before);
  EXPECT_EQ(fixture.folder.names(), std::set<std::string>{"file"}) << folder_is_own;
  EXPECT_EQ(fixture.state.names(), std::set<std::string>{"Quirnote"});
}

TEST_F(document, keeps_rights_that_its_user_has_not_given) {
  if (geteuid() != 0) GTEST_SKIP() << "needs to be root to become another user";
  std::string const path = getenv("PATH");
  setenv("PATH", "/nonexistent", 1);  // nobody is asked for a password
  ASSERT_EQ(chown(state.path().c_str(), own, own), 0);
  for (bool const folder_is_own : {false, true})
    for (bool const atomically : {false, true})
      for (rights_case const& c : cases) {
        SCOPED_TRACE(std::string(c.name) + (folder_is_own ? ", in one's own folder" : "") +
                     (atomically ? ", atomically" : ""));
        ASSERT_EQ(chown(folder.path().c_str(), folder_is_own ? own : root, root), 0);
        ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
        defaults().set("WynSaveAtomically", atomically);
        save_as_other_user(*this, c, folder_is_own);
        std::filesystem::remove(folder / "file");
      }
  setenv("PATH", path.c_str(), 1);
}

}  // namespace
