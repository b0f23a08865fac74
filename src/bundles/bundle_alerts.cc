#include "bundles/bundle_alerts.h"

#include "path/file_system.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "platform/log.h"

namespace bundles {

void tell(std::string const& title, std::string const& text) {
  auto* const desktop = platform::desktop::current_or_null();
  if (desktop == nullptr) return platform::log_once(title + ": " + text);
  desktop->alerts().run({title, text, {"Continue"}});
}

bool ask_to_update(std::string const& title, std::string const& text) {
  auto* const desktop = platform::desktop::current_or_null();
  platform::alert question{title, text, {"Update", "Cancel"}, 1};
  question.icon = platform::alert_icon::question;
  return desktop != nullptr && desktop->alerts().run(question) == 0;
}

void tell_could_not_load(std::string const& directory) {
  std::string const name = path::name(directory);
  auto const say =
      [text = "The " + quoted(name.substr(0, name.rfind('.'))) + " bundle located in " +
              path::abbreviate_with_tilde(path::parent(directory)) +
              " could not be loaded and will be skipped. The contained info.plist "
              "appears to be corrupt or missing."] { tell("Error Loading Bundle", text); };
  // Bundles are loaded wherever the first of them is wanted, also where no event may be handled.
  if (auto* const desktop = platform::desktop::current_or_null())
    desktop->loop().post(say);
  else
    say();
}

}  // namespace bundles
