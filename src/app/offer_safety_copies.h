#pragma once

#include <memory>
#include <string>

class WynDocument;
namespace windows {
class document_window;
}

namespace app {

/// What opens windows for the texts that are restored. Main thread only.
class document_opener {
 public:
  /// Null if the file can't be opened; the user has seen an alert.
  virtual windows::document_window* openFile(std::string const& path) = 0;
  /// A window for the document, not shown yet.
  virtual windows::document_window& show(std::shared_ptr<WynDocument> document) = 0;

 protected:
  ~document_opener() = default;
};

/// Offers the user the texts that were left in safety copies by programs which ended before these
/// were in their files: each is restored as unsaved text, kept for later, compared with its file,
/// or discarded. One whose file holds the same text goes without a question.
void offer_safety_copies(document_opener& app);

/// The same with copies of the file that stand beside it, where no other folder could take them.
void offer_safety_copies_beside(document_opener& app, std::string const& path);

}  // namespace app
