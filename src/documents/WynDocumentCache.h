#pragma once

#include <map>
#include <memory>
#include <string>

class WynDocument;

/// The documents of this process by standardized path, so that all windows that show a file share
/// one. It owns none of them. Main thread only.
class WynDocumentCache {
 public:
  static WynDocumentCache& instance();

  /// Null if there is none.
  std::shared_ptr<WynDocument> documentForPath(std::string const& path) const;

  /// A later document of the same path takes the place of an earlier one.
  void add(WynDocument& document);
  void remove(WynDocument const& document);
  /// For a document that had the name `old` (empty for none) and has another one now, or none.
  void filenameDidChange(WynDocument& document, std::string const& old);

 private:
  void remove(WynDocument const& document, std::string const& path);

  std::map<std::string, WynDocument*> documents_;
};
