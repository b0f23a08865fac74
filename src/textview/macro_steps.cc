#include "textview/macro_steps.h"

namespace textview {

std::string fault_of_macro_step(plist::value const& step) {
  if (step.as_dictionary() == nullptr) return "is no dictionary";
  return step["command"].as_string() == nullptr ? "has no `command`" : "";
}

}  // namespace textview
