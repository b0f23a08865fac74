#pragma once

#include "desktop/OutputPage.h"

#include <string>

namespace widgets {

/// A page from the module with Qt WebEngine, which is loaded at the first call. Null, with a reason
/// for the user, where it isn't installed.
std::unique_ptr<OutputPage> make_web_page(platform::html_window_delegate& delegate,
                                          std::string& reason);

}  // namespace widgets
