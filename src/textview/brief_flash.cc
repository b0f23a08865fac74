#include "textview/brief_flash.h"

#include "platform/desktop.h"
#include "platform/view.h"

namespace textview {
namespace {

constexpr double flash_time = 0.075;  // seconds

}  // namespace

void brief_flash::show(platform::rect const& r, platform::view_host& host) {
  end(&host);
  area_ = r;
  host.set_needs_display(r);
  timer_ = platform::desktop::current().loop().schedule(flash_time, false,
                                                        [this, &host] { end(&host); });
}

void brief_flash::end(platform::view_host* host) {
  if (area_ && host != nullptr) host->set_needs_display(*area_);
  area_.reset();
  timer_.reset();
}

}  // namespace textview
