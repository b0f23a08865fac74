#include <regex>

#include "path/temporary_folder.h"
#include "platform/own_defaults.h"
#include "settings/settings_page.h"
#include "settings/store.h"
#include "settings/table.h"
#include "source_tree.h"
#include "test.h"

namespace {

namespace fs = std::filesystem;
using form = settings::value_type::form;

/// Values that the setting can take, and some that it can't.
struct samples {
  plist::array good, bad;
};

samples samples_of(settings::value_type const& type) {
  plist::array const list{"a"};
  plist::dictionary const dictionary{{"a", 1}};
  switch (type.what) {
    case form::boolean:
      return {{true, false, 1, "yes"}, {"maybe", list, dictionary}};
    case form::integer:
    case form::real:
      return {{type.least, type.most, std::to_string(type.most)},
              {type.least - 1, type.most + 1, true, "x", "", list, dictionary}};
    case form::text:
      return {{"", "a", 1}, {list, dictionary}};
    case form::choice:
      return {plist::array(type.choices.begin(), type.choices.end()), {"", "?", list}};
    case form::color:
      return {{"", "#12abCD", "#12345678"}, {"red", "#12345", "#12345g", "123456#", list}};
    case form::list:
      return {{list, plist::array()}, {"a", 1, dictionary}};
    case form::dictionary:
      return {{dictionary, plist::dictionary()}, {"a", 1, list}};
    case form::boolean_or_list:
      return {{true, list}, {"maybe", dictionary}};
  }
  return {};
}

using values = std::map<std::string, plist::value>;

/// For each row that has so many samples the one at this index.
values nth_values(plist::array samples::*kind, std::size_t n) {
  values result;
  for (settings::setting const& row : settings::all()) {
    plist::array const all = samples_of(row.type).*kind;
    if (n < all.size()) result.emplace(row.key, all[n]);
  }
  return result;
}

TEST(settings_table, has_each_key_once_with_a_default_that_fits) {
  std::set<std::string> keys;
  for (settings::setting const& row : settings::all()) {
    EXPECT_TRUE(keys.insert(row.key).second) << row.key;
    EXPECT_EQ(settings::find(row.key), &row);
    EXPECT_FALSE(row.title.empty()) << row.key;
    EXPECT_TRUE(!row.standard || row.type.accepts(row.standard)) << row.key;
    EXPECT_TRUE(!row.changed_by.is_switch || row.type.what == form::boolean) << row.key;
  }
}

TEST(settings_table, gives_back_what_was_stored) {
  temporary_folder const folder;
  values stored;
  for (std::size_t n = 0; !(stored = nth_values(&samples::good, n)).empty(); ++n) {
    {
      own_defaults const own(folder / std::to_string(n));
      for (auto const& [key, value] : stored) settings::store().set(key, value);
      EXPECT_TRUE(settings::store().save());
    }
    own_defaults const own(folder / std::to_string(n));
    for (auto const& [key, value] : stored) {
      EXPECT_EQ(settings::store().get(key), value) << key;
      EXPECT_EQ(settings::fault_of(key, value), "");
    }
  }
}

TEST(settings_table, gives_the_default_for_what_is_faulty_and_reports_that_once) {
  temporary_folder const folder;
  values stored;
  for (std::size_t n = 0; !(stored = nth_values(&samples::bad, n)).empty(); ++n) {
    std::string const path = folder / std::to_string(n);
    platform::user_defaults other(path);
    for (auto const& [key, value] : stored) other.set(key, value);
    ASSERT_TRUE(other.save());
    own_defaults const own(path);
    std::string faults;
    testing::internal::CaptureStderr();
    for (auto const& [key, value] : stored) {
      EXPECT_EQ(settings::store().get(key), settings::find(key)->standard) << key;
      std::string const fault = settings::fault_of(key, value);
      EXPECT_TRUE(fault.starts_with(key + " takes ")) << fault;
      faults += "Quirnote: " + path + ": " + fault + "; the default is used instead\n";
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), faults);
  }
}

TEST(settings_table, reports_faults_in_words) {
  auto const fault = [](char const* key, plist::value const& value) {
    return settings::fault_of(key, value);
  };
  EXPECT_EQ(fault("WynTextViewTabSize", 65),
            "WynTextViewTabSize takes an integer from 1 to 64, not 65");
  EXPECT_EQ(fault("WynDefaultLineEndings", "cr lf"),
            "WynDefaultLineEndings takes lf, cr or crlf, not \"cr lf\"");
  EXPECT_EQ(fault("WynSaveAtomically", "\x1b[2J"),
            "WynSaveAtomically takes true or false, not what is there");
  EXPECT_EQ(fault("WynTabSize", 4),
            "there is no setting WynTabSize; quirnote --list-settings lists them all");
  EXPECT_EQ(fault("org.example.key", 4), "");
}

// What is read or set under a key that has no row has no default and is described nowhere.
TEST(settings_table, knows_the_keys_in_the_sources) {
  // Names of notifications and of a pasteboard's type look like keys.
  std::regex const literal("\"((Wyn|NS|Disable)[A-Z][A-Za-z]+)\"");
  std::regex const other_name(".*(DidChange|DidChangeNotification|PboardType)");
  std::regex const second_default("(boolean|integer|real|string)\\(\"[A-Za-z]+\", ");
  std::set<std::string> used;
  for (auto const& entry : fs::recursive_directory_iterator(source_file("src"))) {
    std::string const path = entry.path();
    if (!path.ends_with(".cc") && !path.ends_with(".h")) continue;
    if (path.find("/src/settings/") != path.npos || path.find("/user_defaults.") != path.npos)
      continue;
    std::string const text = content_of_file(path);
    for (std::sregex_iterator it(text.begin(), text.end(), literal), end; it != end; ++it)
      if (!std::regex_match((*it)[1].str(), other_name)) {
        EXPECT_NE(settings::find((*it)[1].str()), nullptr) << path << ": " << (*it)[1];
        used.insert((*it)[1]);
      }
    bool const bypasses = text.find("user_defaults::standard()") != text.npos;
    EXPECT_FALSE(bypasses) << path << ": settings::store() has the defaults";
    bool const repeats =
        text.find("settings::store()") != text.npos && std::regex_search(text, second_default);
    EXPECT_FALSE(repeats) << path << ": the default stands in the table";
  }
  EXPECT_GT(used.size(), 50u);
}

TEST(settings_table, is_what_the_manual_holds) {
  EXPECT_EQ(settings::settings_page(), content_of_file(source_file("docs/settings.md")))
      << "quirnote --list-settings >docs/settings.md";
}

}  // namespace
