#pragma once

#include <memory>
#include <string>

class BundleItem;
class WynTextView;

namespace app {

/// The installed item with this UUID, or of this name: of several the one whose selector fits the
/// view's caret best, and a template if none does. Null, with the reason in `error`, if there is
/// none or no single one.
std::shared_ptr<BundleItem> item_for_batch(std::string const& name, WynTextView const& view,
                                           std::string& error);

}  // namespace app
