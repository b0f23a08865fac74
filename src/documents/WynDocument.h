#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "documents/file_stamp.h"
#include "documents/file_text.h"
#include "documents/safety_copy.h"
#include "documents/storage_bytes.h"
#include "encoding/charset.h"
#include "encoding/line_ending.h"
#include "encoding/stream_encoder.h"
#include "path/file_error.h"
#include "path/file_writer.h"
#include "platform/file_watcher.h"
#include "plist/value.h"
#include "text/storage.h"
#include "text/views/view.h"

/// One text tied to one file: how it was read, how it is written, whether it is edited, and the
/// views on it.
///
///     auto document = WynDocument::documentWithContentsOfFile(path);
///     if (!document) return;                   // the user has seen why
///     document->openDocument();
///     text::view* view = document->obtainView();
///     ...
///     document->writeToFile(document->filename());
///     document->releaseView(view);
///     document->closeDocument();
///
/// What a save gives back: an unedited document in the charset in which it was found (the user
/// default WynFileEncodingAndLineEndingsPreserve, on unless it is turned off) gives the bytes that
/// were read, unless
///
/// - its line ends were mixed: all of them become the most frequent one. If control characters
///   tell that the file is no text, the user is asked before it is overwritten;
/// - it held bytes that are no text in that charset: then the user is asked too, as they would be
///   lost. Characters of UTF-8 above U+FFFF are two units in the text and survive; with the user
///   default WynPreserveSupplementaryCharacters set to false each is one unit, its upper bits are
///   lost, and nothing is asked.
///
/// Alerts are modal. Main thread only. `storage()` outlives the views; the document is held by
/// std::shared_ptr.
class WynDocument : public std::enable_shared_from_this<WynDocument> {
 public:
  /// Posted through platform::notification_center::standard() with the document as the object. The
  /// first has "old" and "new" in its info (missing where the document was or is untitled), also
  /// when they are equal: it is posted after each save, to refresh what shows the name.
  static constexpr char const* filenameDidChange = "WynDocumentFilenameDidChange";
  static constexpr char const* documentEditedDidChange = "WynDocumentEditedDidChange";
  /// Who waits until the document is closed.
  static constexpr char const* openersDidChange = "WynDocumentOpenersDidChange";
  /// The file of an open document isn't what it was when it was last read or written. What shows
  /// the text calls checkForFilesystemChanges now; if nothing has, the document does it itself.
  static constexpr char const* fileDidChange = "WynDocumentFileDidChange";

  /// A new untitled document.
  static std::shared_ptr<WynDocument> document();
  /// The document of that file, shared with the windows that show it. If there is no such file it
  /// is empty. If the file can't be read, is none (a folder, a pipe), is too large (EFBIG) or
  /// memory runs out (ENOMEM), the user sees an alert and null is returned, so that no save can
  /// overwrite it; `reason` is set unless it is null.
  static std::shared_ptr<WynDocument> documentWithContentsOfFile(
      std::string const& path, path::file_error* reason = nullptr);
  /// The same without a look at the cache of shared documents.
  static std::shared_ptr<WynDocument> initWithContentsOfFile(std::string const& path,
                                                             path::file_error* reason = nullptr);

  /// An untitled document of all that comes from `descriptor`, which messages call `name`. Null if
  /// it can't be read; the user has seen an alert.
  static std::shared_ptr<WynDocument> documentWithContentsOfStream(int descriptor,
                                                                   std::string const& name);

  /// By WynDefaultFileEncoding and WynDefaultLineEndings; UTF-8 and LF if these name none.
  static encoding::charset_t defaultFileEncoding();
  static line_ending::type defaultLineEnding();

  WynDocument();
  /// With the text as it stands, which can't be undone.
  explicit WynDocument(std::unique_ptr<text::storage> storage);
  WynDocument(WynDocument const&) = delete;
  WynDocument& operator=(WynDocument const&) = delete;
  ~WynDocument();

  text::storage& storage() { return *storage_; }
  text::storage const& storage() const { return *storage_; }
  /// In units.
  std::size_t length() const;

  /// Empty for an untitled document. A document that is renamed forgets its auxiliaryFileInfo.
  std::string const& filename() const { return filename_; }
  void setFilename(std::string const& path);
  std::string const& representedFilename() const { return filename_; }
  /// Fit to be shown: the last component of the path, or "untitled", "untitled 2" and so on.
  std::string displayName() const;
  unsigned untitledCount() const { return untitledCount_; }
  /// As last read from or written to disk; nothing if there was no file.
  std::optional<documents::file_date> fileModificationDate() const;

  encoding::charset_t fileEncoding() const { return fileEncoding_; }
  void setFileEncoding(encoding::charset_t charset);
  line_ending::type lineEnding() const { return lineEnding_; }
  void setLineEnding(line_ending::type type);
  bool byteOrderMark() const { return byteOrderMark_; }
  void setByteOrderMark(bool b);
  void setFileEncodingAndLineEndingsToDefaults();

  /// Whether the file would be another one if it were saved now: the text, or how it is written,
  /// isn't that of the last save, or the file is gone or another one. An untitled document with
  /// nothing in it is never edited.
  bool isDocumentEdited() const { return isDocumentEdited_; }
  /// Whether the file has been deleted or moved, so that the text stands nowhere else. Told by
  /// documentEditedDidChange.
  bool fileIsGone() const { return fileIsGone_; }
  /// Whether the file holds what another program wrote, and the text is the user's: kept when it
  /// was asked for, or to be asked for yet. Undo doesn't make such a text a saved one. Reported
  /// likewise.
  bool fileDiffers() const { return fileDiffers_; }
  /// Looks whether it is gone, as news of it may be under way.
  void lookForFile();
  void setDocumentEdited(bool edited);
  unsigned lastSavedMemento() const { return lastSavedMemento_; }
  bool documentHasBeenSaved() const { return documentHasBeenSaved_; }
  bool hideFromRecentMenu() const { return hideFromRecentMenu_; }
  void setHideFromRecentMenu(bool hide) { hideFromRecentMenu_ = hide; }

  /// What the opener passed along. Looked at by obtainView for a new view: "position" (see
  /// documents::go_to_position), which is used once, else "line", counted from 1.
  plist::dictionary const& auxiliaryFileInfo() const { return auxiliaryFileInfo_; }
  void setAuxiliaryFileInfo(plist::dictionary info) { auxiliaryFileInfo_ = std::move(info); }
  /// An opener that waits. It is told once: when the last window has closed the document, or sooner
  /// when it gets another name, as it is no longer what was opened then.
  struct opener {
    std::string name = {};    ///< for the user to see; may be empty
    bool takes_text = false;  ///< of an untitled document, so closing that loses nothing
    /// Whether the file holds the text as it was at the end.
    std::function<void(bool is_saved)> documentDidClose;
  };
  /// Gives what removeOpener takes.
  std::uint64_t addOpener(opener waiting);
  void removeOpener(std::uint64_t number);
  /// The names of those that wait, none twice.
  std::vector<std::string> openerNames() const;
  /// Whether an opener gets the text when the document is closed.
  bool textIsTaken() const;

  /// Each window that shows the document opens and closes it once. When the last one closes it, the
  /// next to open the file reads it again. The file of an open document is watched.
  bool openDocument();
  void closeDocument();
  unsigned openCount() const { return openCount_; }

  /// A view for one more user, a released one if there is any. The document owns it. A view given
  /// back keeps its caret, folds and bookmarks for the next user; a new one has those that were
  /// kept with the file.
  text::view* obtainView();
  void releaseView(text::view* view);

  /// Caret, selection and scrolling of the view last handed out, for a project's file; nothing if
  /// there has been none.
  plist::value metaData() const;
  void setMetaData(plist::value const& metadata);
  /// Keeps caret, bookmarks and folds with the file, if it is the one that the text was read from
  /// or written to. It is done at each save and at the end.
  void saveMetaData(std::string const& path, text::view const& view) const;
  static bool shouldSaveMetaData(std::string const& path);

  /// Saves the text at `path`, asking the user where that would lose something. True if the file
  /// holds the text now. Otherwise the user has said so or has seen why, and the document is
  /// as it was. To save under another name set the filename after that.
  bool writeToFile(std::string const& path);
  /// The same under a name that is new, for a script: the file gets the permissions of the present
  /// one less what the umask takes, and belongs to who writes it. A file that exists already is
  /// saved as above.
  bool writeCopyToFile(std::string const& path);
  /// Writes what a save would put in the file to a pipe, a terminal or a file that is open already,
  /// which messages call `name`. The document stays as it is. False as above.
  bool writeToStream(int descriptor, std::string const& name) const;

  /// Replaces the text, as one step that can be undone, by that of the file in another charset.
  /// Unsaved changes are dropped. False, with the text as it was, if the file can't be read.
  bool reopenWithEncoding(encoding::charset_t charset);

  /// Puts unsaved text in a safety copy, which the next start of the program offers unless the text
  /// is saved before, or who opens the file next where only its own folder could take the copy. It
  /// takes the place of the document's earlier ones. Asks nothing: where the charset can't hold the
  /// text the copy is UTF-8. Nothing if all went well or is saved.
  std::optional<path::file_error> keepUnsavedText();

  /// The user doesn't want the unsaved text. The safety copies of it go, but for those that a file
  /// may have to be mended with.
  void dropUnsavedText();

  /// Makes the text of a safety copy that of this document, as one unsaved step that can be undone.
  /// The copy goes when the text is saved. False, with all as it was, if the copy can't be read.
  bool restore(documents::safety_copy copy);

  /// Takes over what another program has done to the file, asking the user first if there are
  /// unsaved changes. True if the text was replaced, which can be undone. When the file is gone the
  /// text stays, unsaved, until there is a file again.
  bool checkForFilesystemChanges();

 private:
  class is_edited_notify;
  enum class file_content { kept, has_lost_bytes, binary, not_loaded };

  /// What a save would write, apart from the text.
  struct format {
    encoding::charset_t charset = encoding::UTF8;
    line_ending::type ending = line_ending::LF;
    bool mark = false;
    friend bool operator==(format const&, format const&) = default;
  };

  format presentFormat() const { return {fileEncoding_, lineEnding_, byteOrderMark_}; }
  void updateDocumentEdited(unsigned long memento);
  /// Whether the user has changed the text or how it is written, whatever the file is now.
  bool hasEdits(unsigned long memento) const;
  /// The text as it was at that memento, which it may not be any more.
  void textIsSaved(unsigned memento);
  void textIsOnDisk();
  void removeSafetyCopies();
  void tellOpeners(bool is_saved);
  void becomeFile(std::string const& path);
  void notifyFilename(std::string const& old);
  std::unique_ptr<text::view> makeView();

  void useMarkOf(documents::file_text const& text);
  void useFormatOf(documents::file_text const& text);
  void rememberContent(documents::file_text const& text, bool pairs);
  void wasReadAs(documents::file_text const& text, bool pairs);
  bool readAgain(std::optional<encoding::charset_t> charset, bool pairs, documents::file_text& text,
                 std::optional<path::file_error>& error);
  void watchFile();
  void fileMayHaveChanged();
  bool isToBeKept();
  bool hasLostFile() const;
  void setFileState(bool gone, bool differs);

  bool write(std::string const& given_path, bool as_copy);
  static void takeLeaveOfOwner(path::write_options& options);
  std::optional<encoding::file_format> formatForSaving() const;
  bool mayOverwrite(std::string const& path) const;
  path::write_options optionsForSaving(std::string const& path) const;
  void lookBeforeSaving();
  void didWrite(std::string const& path, encoding::file_format const& format, unsigned memento,
                path::file_version const& written);
  void revertToDisk();

  std::string filename_;
  std::optional<documents::file_stamp> fileStamp_;
  /// Where the name led when the document was opened or saved. A save goes there and nowhere else,
  /// also after others have put a link in its place and what that leads to has been taken over.
  std::optional<path::file_place> filePlace_;
  /// Whose permissions the file gets if it is gone and made again.
  std::optional<struct stat> attributesRead_;
  /// What the text was written to under another name, which the document may get next.
  struct written_file {
    std::string path;
    documents::file_stamp stamp;
    std::optional<path::file_place> place;
    std::optional<struct stat> attributes;
    documents::lone_surrogates loneSurrogates;
  };
  std::optional<written_file> writtenElsewhere_;
  unsigned untitledCount_ = 0;
  unsigned lastSavedMemento_ = 0;
  format lastSavedFormat_;
  std::unique_ptr<text::storage> storage_;
  std::unique_ptr<is_edited_notify> observer_;
  std::list<std::unique_ptr<text::view>> viewCache_;
  std::list<std::unique_ptr<text::view>> openViews_;
  encoding::charset_t fileEncoding_ = encoding::UTF8;
  line_ending::type lineEnding_ = line_ending::LF;
  bool isDocumentEdited_ = false;
  bool byteOrderMark_ = false;
  unsigned openCount_ = 0;
  bool documentHasBeenSaved_ = false;
  bool hideFromRecentMenu_ = false;
  bool fileModifiedOnDiskAndWaitingForUser_ = false;
  bool revertIsDecided_ = false;
  bool fileIsGone_ = false, fileDiffers_ = false;
  bool looksLater_ = false;
  std::unique_ptr<platform::file_watcher::token> fileWatch_;
  plist::dictionary auxiliaryFileInfo_;
  std::map<std::uint64_t, opener> openers_;
  std::uint64_t lastOpener_ = 0;
  /// How the text was read, and so how it is written, whatever the user default says meanwhile.
  bool supplementaryPairs_ = true;
  /// What the file of that name holds which the text doesn't, and the charset it was read in.
  file_content fileContent_ = file_content::kept;
  /// Those that were read from the file of that name or written to it, as UTF-8.
  documents::lone_surrogates loneSurrogates_;
  encoding::charset_t charsetRead_ = encoding::ASCII;
  /// They hold what may be on the disk nowhere else, and go when the text is saved.
  std::vector<documents::safety_copy> safetyCopies_;
};
