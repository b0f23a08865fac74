#pragma once

#include <memory>

#include "grammar/rule.h"

class BundleManager;

namespace bundles {

/// The grammars of all languages, for tokenizers; index n is that of BundleManager::languages. The
/// same object as long as the languages are the same. Main thread only.
std::shared_ptr<grammar::catalogue const> language_catalogue(BundleManager& manager);

}  // namespace bundles
