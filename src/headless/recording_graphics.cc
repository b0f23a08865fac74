#include "headless/recording_graphics.h"

#include "platform/utf.h"

#include <cstdio>

namespace headless {
namespace {

std::string number(double d) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", d);
  return text;
}

std::string describe(platform::point p) {
  return number(p.x) + "," + number(p.y);
}

std::string describe(platform::rect const& r) {
  return describe(platform::point{r.x, r.y}) + " " + number(r.width) + "x" + number(r.height);
}

std::string describe(platform::color c) {
  char text[16];
  std::snprintf(text, sizeof text, c.alpha == 255 ? "#%02x%02x%02x" : "#%02x%02x%02x%02x", c.red,
                c.green, c.blue, c.alpha);
  return text;
}

std::string describe(std::u16string_view text, platform::text_style const& style) {
  std::string result = "\"" + unicode::to_utf8(text) + "\" " + describe(style.foreground);
  if (style.bold) result += " bold";
  if (style.italic) result += " italic";
  if (style.underline) result += " underline";
  return result;
}

}  // namespace

void recording_graphics::fill_rect(platform::rect const& r, platform::color c, bool composite) {
  operations_.push_back((composite ? "blend " : "fill ") + describe(r) + " " + describe(c));
}

void recording_graphics::draw_run(std::u16string_view run, platform::point baseline, double,
                                  platform::text_style const& style) {
  operations_.push_back("text " + describe(baseline) + " " + describe(run, style));
}

void recording_graphics::draw_cluster(std::u16string_view cluster, platform::point baseline,
                                      double width, platform::text_style const& style) {
  operations_.push_back("cluster " + describe(baseline) + " in " + number(width) + " " +
                        describe(cluster, style));
}

void recording_graphics::draw_image(std::string_view name, platform::rect const& r) {
  operations_.push_back("image " + describe(r) + " " + std::string(name));
}

void recording_graphics::push_clip(platform::rect const& r) {
  operations_.push_back("clip " + describe(r));
}

void recording_graphics::pop_clip() {
  operations_.push_back("unclip");
}

}  // namespace headless
