#include "documents/WynDocumentCache.h"

#include "path/file_system.h"

WynDocumentCache& WynDocumentCache::instance() {
  // Never destroyed: documents may be held to the very end of the process.
  static auto& cache = *new WynDocumentCache;
  return cache;
}

std::shared_ptr<WynDocument> WynDocumentCache::documentForPath(std::string const& path) const {
  auto const found = documents_.find(path::standardize(path));
  return found == documents_.end() ? nullptr : found->second.lock();
}

std::vector<std::shared_ptr<WynDocument>> WynDocumentCache::documents() const {
  std::vector<std::shared_ptr<WynDocument>> all;
  for (auto const& [path, pointer] : documents_)
    if (auto document = pointer.lock()) all.push_back(std::move(document));
  return all;
}

void WynDocumentCache::add(std::string const& path, pointer document) {
  documents_[path::standardize(path)] = std::move(document);
}

void WynDocumentCache::remove(std::string const& path, pointer const& document) {
  if (path.empty()) return;
  auto const found = documents_.find(path::standardize(path));
  if (found == documents_.end()) return;
  // Also while the document is being destroyed, when there is nothing to lock.
  bool const is_same =
      !found->second.owner_before(document) && !document.owner_before(found->second);
  if (is_same) documents_.erase(found);
}
