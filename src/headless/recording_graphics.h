#pragma once

#include "platform/graphics.h"

#include <string>
#include <vector>

namespace headless {

/// Keeps what was drawn as lines of text, such as
///     fill 0,0 100x16 #ffffff
///     text 4,12 "abc" #000000 bold
/// so that tests compare drawing by reading it.
class recording_graphics : public platform::graphics {
 public:
  void fill_rect(platform::rect const& r, platform::color c, bool composite) override;
  void draw_run(std::u16string_view run, platform::point baseline, double cell_width,
                platform::text_style const& style) override;
  void draw_cluster(std::u16string_view cluster, platform::point baseline, double width,
                    platform::text_style const& style) override;
  void draw_image(std::string_view name, platform::rect const& r) override;
  void push_clip(platform::rect const& r) override;
  void pop_clip() override;

  std::vector<std::string> const& operations() const { return operations_; }
  void clear() { operations_.clear(); }

 private:
  std::vector<std::string> operations_;
};

}  // namespace headless
