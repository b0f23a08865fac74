#include "bundles/BundleManager.h"
#include "data_rows.h"
#include "grammar/tokenize_filter.h"
#include "platform/utf.h"
#include "textview/shown_view.h"

namespace {

std::string uuid_of(std::string const& name) {
  for (plist::value const& l : BundleManager::sharedInstance().languages())
    if (l["name"].string_or("") == name) return l["uuid"].string_or("");
  return {};
}

class typed_text : public shown_view_test {};

// In a window, and where nobody looks.
TEST_F(typed_text, key_by_key_gives_what_is_typed) {
  for (auto const& r : data_rows("typing.txt", "keys")) {
    for (bool const seen : {true, false}) {
      shown_view view;
      view.host.seen = seen;
      ASSERT_NE(uuid_of(r[0]), "") << r[0];
      view.view.changeLanguageToAndLearn(uuid_of(r[0]), false);
      for (char16_t const key : unicode::to_utf16(r[1])) {
        if (key == u'\n')
          view.perform("insertNewline:");
        else
          view.view.insert_text({&key, 1});
        if (seen) view.view.tokenizer()->wait_for(view.view.view()->storage->lines());
      }
      if (r.size() > 2)
        EXPECT_EQ(view.get(), r[2]) << r[0] << ": " << r[1];
      else
        EXPECT_EQ(view.text(), r[1]) << r[0];
    }
  }
}

}  // namespace
