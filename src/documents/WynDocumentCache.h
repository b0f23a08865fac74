#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

class WynDocument;

/// The documents of this process by standardized path, so that all windows that show a file share
/// one. It owns none of them, and calls none: documents enter and leave themselves. Main thread
/// only.
class WynDocumentCache {
 public:
  using pointer = std::weak_ptr<WynDocument>;

  static WynDocumentCache& instance();

  /// Null if there is none.
  std::shared_ptr<WynDocument> documentForPath(std::string const& path) const;

  std::vector<std::shared_ptr<WynDocument>> documents() const;

  /// A later document of the same path takes the place of an earlier one.
  void add(std::string const& path, pointer document);
  /// Removes this document from the path, if it is there. An empty path has none.
  void remove(std::string const& path, pointer const& document);

 private:
  std::map<std::string, pointer> documents_;
};
