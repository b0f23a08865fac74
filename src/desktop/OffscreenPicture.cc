#include "desktop/OffscreenPicture.h"

#include "desktop/FontCells.h"
#include "desktop/PlatformStart.h"
#include "desktop/QtGraphics.h"
#include "desktop/TextViewWidget.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QImageWriter>
#include <QPainter>

#include <algorithm>
#include <clocale>
#include <cmath>

namespace widgets {
namespace {

constexpr int max_side = 32000;  // pixels; the painter's limit is 32767

// A view that is all visible, scrolled where the logic wants it, and has the focus.
class PictureHost final : public platform::view_host {
 public:
  explicit PictureHost(platform::view_client& client) : client_(client), cells_(cells_for({}, 1)) {
    client_.set_host(this);
  }
  ~PictureHost() { client_.set_host(nullptr); }

  // The size is known only once the client has a host's font. Then it starts again, as a view of
  // one pixel has scrolled to the caret.
  void resize(int columns, int rows) {
    platform::size const wanted = client_.size_for(columns, rows);
    visible_ = {0, 0, std::clamp(std::ceil(wanted.width), 1.0, double(max_side)),
                std::clamp(std::ceil(wanted.height), 1.0, double(max_side))};
    client_.set_host(nullptr);
    client_.set_host(this);
  }

  QImage paint() {
    client_.wait_for_visible();
    QImage image(static_cast<int>(visible_.width), static_cast<int>(visible_.height),
                 QImage::Format_RGB32);
    if (image.isNull()) return image;
    platform::color const c = palette().background;
    image.fill(QColor(c.red, c.green, c.blue));
    QPainter painter(&image);
    QtGraphics graphics(painter, *cells_, {visible_.x, visible_.y});
    client_.draw(graphics, visible_);
    return image;
  }

  platform::rect visible_rect() const override { return visible_; }
  void scroll_to(platform::point origin) override {
    double const x = std::clamp(origin.x, 0.0, std::max(0.0, frame_.width - visible_.width));
    double const y = std::clamp(origin.y, 0.0, std::max(0.0, frame_.height - visible_.height));
    if (x == visible_.x && y == visible_.y) return;
    visible_.x = std::round(x);
    visible_.y = std::round(y);
    client_.visible_rect_changed();
  }
  void set_frame_size(platform::size s) override { frame_ = s; }
  void set_needs_display(platform::rect const&) override {}
  bool is_first_responder() const override { return true; }
  bool is_window_key() const override { return true; }
  platform::palette palette() const override {
    return platform_palette(QGuiApplication::palette());
  }
  platform::font_metrics metrics_for(platform::font const& f) const override {
    return cells_for(f, 1)->metrics();
  }
  void set_font(platform::font const& f) override { cells_ = cells_for(f, 1); }
  void hide_cursor_until_mouse_moves() override {}
  void reset_cursor() override {}
  void input_method_changed(bool) override {}
  void show_context_menu(std::vector<platform::menu_item> const&, platform::point) override {}
  std::optional<std::size_t> choose_from_menu(std::vector<platform::menu_item> const&,
                                              std::optional<platform::point>, double) override {
    return std::nullopt;
  }
  void begin_drag(plist::dictionary, std::vector<platform::rect> const&, platform::point) override {
  }
  void show_tool_tip(platform::tool_tip const&) override {}
  bool hide_tool_tip() override { return false; }
  void interpret_key_event(platform::key_event const&) override {}

 private:
  platform::view_client& client_;
  platform::rect visible_{0, 0, 1, 1};
  platform::size frame_;
  std::shared_ptr<FontCells> cells_;
};

// Fonts need an application object; one without a display serves.
void ensure_application() {
  if (QCoreApplication::instance() != nullptr) return;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  static int argc = 1;
  static char name[] = "quirnote";
  static char* argv[] = {name, nullptr};
  PlatformStart const start("no picture can be made", 3);
  new QGuiApplication(argc, argv);  // never ended: the program is at its end when it would be
  std::setlocale(LC_NUMERIC, "C");  // Qt has taken the user's; see QtDesktop
}

}  // namespace

bool render_picture(platform::view_client& client, int columns, int rows, std::string& png,
                    std::string& error) {
  ensure_application();
  PictureHost host(client);
  host.resize(columns, rows);
  QByteArray bytes;
  QBuffer buffer(&bytes);
  QImageWriter writer(&buffer, "png");
  QImage const picture = host.paint();
  if (picture.isNull()) {
    error = "there is not enough memory for the picture";
    return false;
  }
  if (!writer.write(picture)) {
    error = writer.errorString().toStdString();
    return false;
  }
  png = bytes.toStdString();
  return true;
}

}  // namespace widgets
