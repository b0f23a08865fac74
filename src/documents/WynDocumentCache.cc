#include "documents/WynDocumentCache.h"

#include "documents/WynDocument.h"
#include "path/file_system.h"

WynDocumentCache& WynDocumentCache::instance() {
  // Never destroyed: documents may be held to the very end of the process.
  static auto& cache = *new WynDocumentCache;
  return cache;
}

std::shared_ptr<WynDocument> WynDocumentCache::documentForPath(std::string const& path) const {
  auto const found = documents_.find(path::standardize(path));
  return found == documents_.end() ? nullptr : found->second->weak_from_this().lock();
}

void WynDocumentCache::add(WynDocument& document) {
  documents_[path::standardize(document.filename())] = &document;
}

void WynDocumentCache::remove(WynDocument const& document) {
  remove(document, document.filename());
}

void WynDocumentCache::remove(WynDocument const& document, std::string const& path) {
  if (path.empty()) return;
  auto const found = documents_.find(path::standardize(path));
  if (found != documents_.end() && found->second == &document) documents_.erase(found);
}

void WynDocumentCache::filenameDidChange(WynDocument& document, std::string const& old) {
  remove(document, old);
  if (!document.filename().empty()) add(document);
}
