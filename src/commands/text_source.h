#pragma once

#include "encoding/stream_encoder.h"
#include "text/pos.h"
#include "text/storage.h"

#include <string>
#include <string_view>

namespace commands {

/// A range of a text as bytes of UTF-8, made in pieces when they are wanted: a command can read a
/// large document without another copy of it. The storage must stay as it is meanwhile.
class text_source {
 public:
  text_source(text::storage const& storage, text::pos first, text::pos last);
  text_source(text_source const&) = delete;
  text_source& operator=(text_source const&) = delete;

  /// The next piece, which is good until the next call; empty at the end.
  std::string_view next();

 private:
  text::unit_view take_units();

  text::storage const& storage_;
  text::pos at_;
  text::pos const last_;
  bool is_at_end_ = false;
  std::string piece_;
  encoding::stream_encoder encoder_;
};

}  // namespace commands
