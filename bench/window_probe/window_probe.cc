// Measures other programs' windows from outside, so that every editor is measured alike.
//
//     window_probe map PROGRAM ARGUMENT...       until a window is mapped
//     window_probe text PROGRAM ARGUMENT...      until text shows in it
//     window_probe coloured PROGRAM ARGUMENT...  until much of the text is in colours
//     window_probe keys COUNT PROGRAM ...        from each of COUNT key presses to its pixels
//     window_probe busy KEY COUNT PROGRAM ...    the same as soon as text shows, while the program
//                                                may still work on it; KEY is x, in the second
//                                                line, or Next (Page Down)
//     window_probe comment PROGRAM ...           from the second key of a comment that is opened
//                                                at the beginning until nothing changes any more
//     window_probe comment-far PROGRAM ...       the same with a jump to the end right after it
//     window_probe pages COUNT PROGRAM ...       from each of COUNT presses of F12, which shows a
//     page
//                                                that is red and green in turns, until it is seen
//     window_probe flood FILE COUNT PROGRAM ...  from each of COUNT key presses to its pixels while
//                                                a page grows that F12 shows, then from a click on
//                                                "Stop Task" until the process is gone whose number
//                                                is in the file
//
// Prints one line of JSON with milliseconds, and the program's memory (kB, resident and
// proportional) at that moment. Needs a display without a window manager: Xvfb.

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/extensions/Xdamage.h>
#include <X11/keysym.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "screen_image.h"

namespace {

using clock_type = std::chrono::steady_clock;
constexpr double give_up = 60000;  // ms
// What is looked at has menus and bars above it, up to so many pixels, and perhaps below.
constexpr int margin = 60, margin_of_colours = 120, margin_of_keys = 30;
constexpr std::size_t edges_of_text = 3000, pixels_of_colours = 2000;
// More than a caret has, and less than a key changes.
constexpr std::size_t pixels_of_change = 100;

double ms_since(clock_type::time_point start) {
  return std::chrono::duration<double, std::milli>(clock_type::now() - start).count();
}

class probe {
 public:
  probe() : display_(XOpenDisplay(nullptr)) {
    if (display_ == nullptr) fail("no display");
    XSelectInput(display_, DefaultRootWindow(display_), SubstructureNotifyMask);
    XSync(display_, False);
  }

  ~probe() {
    if (pid_ > 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    images_.clear();
    page_image_.reset();
    XCloseDisplay(display_);
  }

  void start(char** command) {
    start_ = clock_type::now();
    pid_ = fork();
    if (pid_ != 0) return;
    execvp(command[0], command);
    _exit(127);
  }

  // The first large window of the program. A small one before it asks whether a file of such a
  // size is to be opened: yes.
  double wait_for_map() {
    while (ms_since(start_) < give_up) {
      XEvent event;
      if (!next_event(event)) continue;
      if (event.type != MapNotify || event.xmap.override_redirect) continue;
      XWindowAttributes a;
      if (!XGetWindowAttributes(display_, event.xmap.window, &a) || a.width < 100) continue;
      window_ = event.xmap.window;
      if (a.width >= 400 || a.height >= 300) return ms_since(start_);
      XSetInputFocus(display_, window_, RevertToParent, CurrentTime);
      send_key(XK_Return);
    }
    fail("no window");
  }

  double wait_for_text() {
    return wait_until(margin, "no text",
                      [](screen_image const& image) { return image.edges() > edges_of_text; });
  }

  double wait_for_colours() {
    return wait_until(margin_of_colours, "no colours", [](screen_image const& image) {
      return image.coloured() > pixels_of_colours;
    });
  }

  void watch() {
    XSetInputFocus(display_, window_, RevertToParent, CurrentTime);
    XSync(display_, False);
    int error = 0;
    if (!XDamageQueryExtension(display_, &damage_event_, &error)) fail("no damage extension");
    if (damage_ == 0) damage_ = XDamageCreate(display_, window_, XDamageReportRawRectangles);
  }

  // Waits until the program has neither painted nor computed for a while: shorter than the time
  // between two states of a blinking caret, whatever it is that blinks along.
  void settle() {
    constexpr double rest = 300;  // ms
    watch();
    auto quiet_since = clock_type::now();
    long used = cpu_ticks();
    while (ms_since(quiet_since) < rest) {
      if (ms_since(start_) > give_up) fail("never at rest");
      XEvent event;
      bool const painted = next_event(event) && is_large_damage(event);
      if (!painted && cpu_ticks() - used <= 2) continue;
      quiet_since = clock_type::now();
      used = cpu_ticks();
    }
  }

  double press_key(KeySym symbol) {
    auto const pressed = clock_type::now();
    send_key(symbol);
    while (ms_since(pressed) < 2000) {
      XEvent event;
      if (!next_event(event) || !is_large_damage(event)) continue;
      double const latency = ms_since(pressed);
      drain(25);
      return latency;
    }
    fail("a key press changed nothing");
  }

  // By what is on the screen, for other things may be drawn at the same time.
  double press_and_compare(KeySym symbol) {
    screen_image& image = seen(margin_of_keys);
    if (!image.grab()) fail("the window can't be seen");
    auto const before = image.pixels();
    auto const pressed = clock_type::now();
    send_key(symbol);
    while (ms_since(pressed) < 2000) {
      XEvent event;
      if (!next_event(event) || event.type != damage_event_ + XDamageNotify) continue;
      while (XPending(display_) != 0) XNextEvent(display_, &event);
      double const latency = ms_since(pressed);
      if (!image.grab() || image.differences(before) < pixels_of_change) continue;
      drain(15);
      return latency;
    }
    fail("a key press changed nothing");
  }

  // Until what is below the first lines has got its last look, from a key press on. Then nothing
  // changes for a while.
  double press_until_final(KeySym symbol, bool jump_to_end) {
    constexpr double rest = 700;             // ms
    constexpr std::size_t first_lines = 60;  // in pixels
    screen_image& image = seen(margin_of_keys);
    if (!image.grab()) fail("the window can't be seen");
    auto before = image.pixels();
    auto const pressed = clock_type::now();
    send_key(symbol);
    if (jump_to_end) send_key(XK_End, XK_Control_L);
    double last = -1;
    while (ms_since(pressed) < rest + std::max(last, 0.0)) {
      XEvent event;
      if (!next_event(event) || event.type != damage_event_ + XDamageNotify) continue;
      while (XPending(display_) != 0) XNextEvent(display_, &event);
      double const now = ms_since(pressed);
      if (!image.grab() || image.differences(before, first_lines) < pixels_of_change) continue;
      before = image.pixels();
      last = now;
    }
    if (last < 0) fail("a key press changed nothing");
    return last;
  }

  // A page comes in a window of its own, which may be there already.
  double press_for_page(std::uint32_t color) {
    constexpr std::size_t much = 20000;  // pixels
    XSetInputFocus(display_, window_, RevertToParent, CurrentTime);
    drain(300);
    auto const pressed = clock_type::now();
    send_key(XK_F12);
    while (ms_since(pressed) < give_up) {
      watch_for_page();
      if (page_ == 0) continue;
      if (!page_image_) page_image_ = std::make_unique<screen_image>(display_, page_, margin);
      double const now = ms_since(pressed);
      if (page_image_->grab() && page_image_->count(color) > much) return now;
      usleep(1000);
    }
    fail("no page");
  }

  // Side by side: nothing is measured of a window that another one covers.
  void begin_flood() {
    send_key(XK_F12);
    while (page_ == 0 && ms() < give_up) watch_for_page();
    if (page_ == 0) fail("no page");
    drain(500);
    XMoveResizeWindow(display_, window_, 0, 0, 600, 700);
    XMoveResizeWindow(display_, page_, 640, 0, 600, 700);
    XSetInputFocus(display_, window_, RevertToParent, CurrentTime);
    drain(500);
    watch();
  }

  double click_until_gone(std::string const& pid_file) {
    long process = 0;
    std::ifstream(pid_file) >> process;
    if (process == 0) fail("the command has left no number");
    if (!is_running(process)) fail("the command has ended by itself");
    XTestFakeMotionEvent(display_, -1, 640 + 600 - 40, 700 - 14, CurrentTime);
    XTestFakeButtonEvent(display_, 1, True, CurrentTime);
    XTestFakeButtonEvent(display_, 1, False, CurrentTime);
    XFlush(display_);
    auto const clicked = clock_type::now();
    while (ms_since(clicked) < give_up) {
      if (!is_running(process)) return ms_since(clicked);
      usleep(1000);
    }
    fail("the command goes on");
  }

  // What it has used so far, in ms.
  double cpu() const { return static_cast<double>(cpu_ticks()) * 10; }
  double ms() const { return ms_since(start_); }
  void press(KeySym symbol) {
    send_key(symbol);
    drain(50);
  }

  std::string memory() const {
    long resident = 0, proportional = 0;
    std::ifstream status("/proc/" + std::to_string(pid_) + "/smaps_rollup");
    for (std::string word; status >> word;) {
      if (word == "Rss:") status >> resident;
      if (word == "Pss:") status >> proportional;
    }
    return "\"rss\": " + std::to_string(resident) + ", \"pss\": " + std::to_string(proportional);
  }

  [[noreturn]] void fail(char const* reason) {
    std::fprintf(stderr, "window_probe: %s\n", reason);
    if (pid_ > 0) kill(pid_, SIGKILL);
    std::exit(1);
  }

 private:
  static bool is_running(long process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string state;
    std::getline(file, state);
    return !state.empty() && state.find(") Z ") == state.npos;
  }

  void watch_for_page() {
    XEvent event;
    if (!next_event(event) || event.type != MapNotify || event.xmap.override_redirect) return;
    XWindowAttributes a;
    if (event.xmap.window != window_ && XGetWindowAttributes(display_, event.xmap.window, &a) &&
        a.width >= 300)
      page_ = event.xmap.window;
  }

  void send_key(KeySym symbol, KeySym modifier = NoSymbol) {
    KeyCode const code = XKeysymToKeycode(display_, symbol);
    // '*' is on the upper level of its key.
    if (modifier == NoSymbol && XkbKeycodeToKeysym(display_, code, 0, 0) != symbol)
      modifier = XK_Shift_L;
    KeyCode const held = XKeysymToKeycode(display_, modifier);
    if (modifier != NoSymbol) XTestFakeKeyEvent(display_, held, True, CurrentTime);
    XTestFakeKeyEvent(display_, code, True, CurrentTime);
    XTestFakeKeyEvent(display_, code, False, CurrentTime);
    if (modifier != NoSymbol) XTestFakeKeyEvent(display_, held, False, CurrentTime);
    XFlush(display_);
  }

  screen_image& seen(int without) {
    auto& image = images_[without];
    if (!image) image = std::make_unique<screen_image>(display_, window_, without);
    return *image;
  }

  template <class Holds>
  double wait_until(int without, char const* failure, Holds holds) {
    while (ms_since(start_) < give_up) {
      screen_image& image = seen(without);
      double const now = ms_since(start_);
      if (image.grab() && holds(image)) return now;
      usleep(1000);
    }
    fail(failure);
  }

  // Of user and system time; 100 make a second.
  long cpu_ticks() const {
    std::ifstream stat("/proc/" + std::to_string(pid_) + "/stat");
    std::string line;
    std::getline(stat, line);
    long user = 0, system = 0;
    char const* const rest = line.c_str() + std::min(line.size(), line.rfind(')') + 1);
    std::sscanf(rest, " %*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %ld %ld", &user, &system);
    return user + system;
  }

  bool next_event(XEvent& event) {
    if (XPending(display_) == 0) {
      pollfd fd{ConnectionNumber(display_), POLLIN, 0};
      poll(&fd, 1, 5);
      if (XPending(display_) == 0) return false;
    }
    XNextEvent(display_, &event);
    return true;
  }

  // A blinking caret, with what is drawn round it, is at most 16 pixels wide.
  bool is_large_damage(XEvent const& event) const {
    if (event.type != damage_event_ + XDamageNotify) return false;
    auto const& area = reinterpret_cast<XDamageNotifyEvent const&>(event).area;
    return area.width > 16;
  }

  void drain(double ms) {
    auto const start = clock_type::now();
    XEvent event;
    while (ms_since(start) < ms) next_event(event);
  }

  Display* display_;
  Window window_ = 0, page_ = 0;
  pid_t pid_ = -1;
  int damage_event_ = 0;
  Damage damage_ = 0;
  std::map<int, std::unique_ptr<screen_image>> images_;  // by their margins
  std::unique_ptr<screen_image> page_image_;
  clock_type::time_point start_;
};

int ignore_errors(Display*, XErrorEvent*) {
  return 0;
}

std::string times_as_json(std::vector<double> times) {
  std::sort(times.begin(), times.end());
  auto const at = [&](double share) {
    return times[static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))];
  };
  char text[100];
  std::snprintf(text, sizeof text, "\"median\": %.3f, \"p99\": %.3f, \"max\": %.3f", at(0.5),
                at(0.99), times.back());
  return text;
}

void print_keys(probe& p, int count) {
  p.settle();
  std::vector<double> times;
  for (int n = 0; n < count; ++n) times.push_back(p.press_key(XK_x));
  std::printf("{%s, %s}\n", times_as_json(times).c_str(), p.memory().c_str());
}

// "busy" is the share of one processor that the program used meanwhile.
void print_busy(probe& p, std::string const& key, int count) {
  p.watch();
  if (key == "x") p.press(XK_Down);
  std::vector<double> times;
  double const used = p.cpu(), began = p.ms();
  for (int n = 0; n < count; ++n) times.push_back(p.press_and_compare(key == "x" ? XK_x : XK_Next));
  std::printf("{%s, \"busy\": %.2f, %s}\n", times_as_json(times).c_str(),
              (p.cpu() - used) / (p.ms() - began), p.memory().c_str());
}

void print_pages(probe& p, int count) {
  p.settle();
  double const first = p.press_for_page(0xFF0000);
  std::vector<double> times;
  for (int n = 1; n < count; ++n)
    times.push_back(p.press_for_page(n % 2 == 0 ? 0xFF0000 : 0x00FF00));
  std::printf("{\"first\": %.1f, %s, %s}\n", first, times_as_json(times).c_str(),
              p.memory().c_str());
}

void print_flood(probe& p, std::string const& pid_file, int count) {
  p.settle();
  double quiet = 0;
  for (int n = 0; n < count; ++n) quiet = std::max(quiet, p.press_and_compare(XK_x));
  p.begin_flood();
  std::vector<double> times;
  for (int n = 0; n < count; ++n) times.push_back(p.press_and_compare(XK_x));
  double const stopped = p.click_until_gone(pid_file);
  std::printf("{%s, \"quiet\": %.1f, \"stopped\": %.1f, %s}\n", times_as_json(times).c_str(), quiet,
              stopped, p.memory().c_str());
}

void print_comment(probe& p, bool far) {
  p.settle();
  p.press(XK_slash);
  p.settle();
  std::printf("{\"ms\": %.2f, %s}\n", p.press_until_final(XK_asterisk, far), p.memory().c_str());
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> const arguments(argv + 1, argv + argc);
  std::string const what = argc > 1 ? arguments[0] : "";
  int const own = what == "keys" || what == "pages" ? 1 : what == "busy" || what == "flood" ? 2 : 0;
  bool const known = what == "map" || what == "text" || what == "coloured" || what == "comment" ||
                     what == "comment-far" || own != 0;
  if (!known || argc < 3 + own) {
    std::fputs(
        "usage: window_probe map|text|coloured|keys COUNT|busy KEY COUNT|comment|comment-far|"
        "pages COUNT|flood FILE COUNT PROGRAM [ARGUMENT]...\n",
        stderr);
    return 2;
  }
  XSetErrorHandler(ignore_errors);
  probe p;
  p.start(argv + 2 + own);
  double const mapped = p.wait_for_map();
  if (what == "map") {
    usleep(300000);
    std::printf("{\"ms\": %.2f, %s}\n", mapped, p.memory().c_str());
    return 0;
  }
  double const shown = p.wait_for_text();
  if (what == "text") {
    std::printf("{\"ms\": %.2f, %s}\n", shown, p.memory().c_str());
  } else if (what == "coloured") {
    double const coloured = p.wait_for_colours();
    std::printf("{\"ms\": %.2f, \"after_text\": %.2f, %s}\n", coloured, coloured - shown,
                p.memory().c_str());
  } else if (what == "keys") {
    print_keys(p, std::atoi(argv[2]));
  } else if (what == "pages") {
    print_pages(p, std::atoi(argv[2]));
  } else if (what == "flood") {
    print_flood(p, arguments[1], std::atoi(argv[3]));
  } else if (what == "busy") {
    print_busy(p, arguments[1], std::atoi(argv[3]));
  } else {
    print_comment(p, what == "comment-far");
  }
}
