#pragma once

#include <memory>
#include <string>

#include "platform/user_defaults.h"

/// User defaults of a test's own, in memory or in a file, as long as it lives.
class own_defaults {
 public:
  explicit own_defaults(std::string const& path = "")
      : former_(platform::user_defaults::set_standard(
            std::make_unique<platform::user_defaults>(path))) {}
  ~own_defaults() { platform::user_defaults::set_standard(std::move(former_)); }
  own_defaults(own_defaults const&) = delete;
  own_defaults& operator=(own_defaults const&) = delete;

 private:
  std::unique_ptr<platform::user_defaults> former_;
};
