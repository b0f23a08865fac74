#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What the programs of one user ask the running editor for, and what it answers: messages on a
/// local socket, each four bytes with the length of what follows, the most significant first, and
/// one map of MessagePack from names to values. A name that isn't known is passed over, and one
/// that is missing has its default, so programs of different versions understand each other.
namespace wire {

inline constexpr std::int64_t quirnoteServerProtocolVersion = 2;

/// In bytes. A command line that the system accepts fits in.
inline constexpr std::size_t longest_message = std::size_t{8} << 20;

struct file_to_open {
  std::string path;  ///< absolute
  std::string line;  ///< LINE or LINE:COLUMN, from 1; empty for none
  friend bool operator==(file_to_open const&, file_to_open const&) = default;
};

struct request {
  enum class purpose {
    protocol_version,  ///< "quirnoteServerProtocolVersion"
    open_files,        ///< "openFiles"; without a file only the windows come to the front
    open_url,          ///< "openURL"
  };
  purpose what = purpose::open_files;
  std::vector<file_to_open> files = {};
  std::string url = {};
  bool changes_directory = false;  ///< open panels begin in the folder of the file
  bool adds_to_recent = false;
  bool in_new_window = false;
  bool waits = false;              ///< for an answer that each of the files has been closed
  bool shows_differences = false;  ///< of the second file from the first one, not the two
  bool has_input = false;   ///< the descriptor that comes along holds the text of a new document
  std::string waiter = {};  ///< the program that waits, for the user to see
  std::string activation_token = {};  ///< of the desktop, by which windows may come to the front
  std::vector<std::string> environment = {};  ///< for commands in these windows: NAME=VALUE each
  friend bool operator==(request const&, request const&) = default;
};

struct answer {
  enum class kind {
    result,  ///< what was asked for is done, or under way
    closed,  ///< a file that is waited for is open no longer
    failed,
  };
  kind what = kind::result;
  std::int64_t result = 1;
  std::size_t file = 0;   ///< which one of those in the request; the input comes after them
  bool is_saved = false;  ///< the file holds the text as it was when it was closed
  std::string reason = {};
  friend bool operator==(answer const&, answer const&) = default;
};

std::string encoded(request const& message);
std::string encoded(answer const& message);

/// Nothing for bytes that are no such message.
std::optional<request> decode_request(std::string_view bytes);
std::optional<answer> decode_answer(std::string_view bytes);

/// With its length before it, as it is sent.
std::string framed(std::string_view message);

/// Takes messages out of what comes in, in pieces of any size.
class frame_reader {
 public:
  /// False when a message is announced that is too long. Nothing that follows can be read then.
  bool add(std::string_view bytes);
  /// The next message that is there in full.
  std::optional<std::string> next();

 private:
  std::string bytes_;
  std::size_t begin_ = 0;  // what is before it has been taken
};

}  // namespace wire
