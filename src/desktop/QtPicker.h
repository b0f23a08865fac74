#pragma once

#include "platform/picker.h"

namespace widgets {

/// A field and the rows that it finds, at the top of the active window.
class QtPicker final : public platform::picker {
 protected:
  std::optional<platform::picked_row> ask(platform::picker_request const& request,
                                          platform::picker_source& source) override;
};

}  // namespace widgets
