// Measures other programs' windows from outside, so that every editor is measured alike.
//
//     window_probe map PROGRAM ARGUMENT...       until a window is mapped
//     window_probe text PROGRAM ARGUMENT...      until text shows in it
//     window_probe keys COUNT PROGRAM ...        from each of COUNT key presses to its pixels
//
// Prints one line of JSON with milliseconds, and the program's memory (kB, resident and
// proportional) at that moment. Needs a display without a window manager: Xvfb.

#include <X11/Xlib.h>
#include <X11/Xutil.h>
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
#include <string>
#include <vector>

namespace {

using clock_type = std::chrono::steady_clock;
constexpr double give_up = 60000;  // ms

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
      focus();
      send_key(XK_Return);
    }
    fail("no window");
  }

  // Text makes many changes of brightness along its rows, where an empty window has few.
  double wait_for_text() {
    while (ms_since(start_) < give_up) {
      if (edges() > 3000) return ms_since(start_);
      usleep(1000);
    }
    fail("no text");
  }

  // Waits until the program has neither painted nor computed for a while: shorter than the time
  // between two states of a blinking caret, whatever it is that blinks along.
  void settle() {
    constexpr double rest = 300;  // ms
    focus();
    watch_damage();
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
  void focus() {
    XSetInputFocus(display_, window_, RevertToParent, CurrentTime);
    XSync(display_, False);
  }

  void send_key(KeySym symbol) {
    KeyCode const code = XKeysymToKeycode(display_, symbol);
    XTestFakeKeyEvent(display_, code, True, CurrentTime);
    XTestFakeKeyEvent(display_, code, False, CurrentTime);
    XFlush(display_);
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

  void watch_damage() {
    int error = 0;
    if (!XDamageQueryExtension(display_, &damage_event_, &error)) fail("no damage extension");
    XDamageCreate(display_, window_, XDamageReportRawRectangles);
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

  int edges() {
    XWindowAttributes a;
    if (!XGetWindowAttributes(display_, window_, &a)) return 0;
    XImage* const image = XGetImage(display_, window_, 0, 0, static_cast<unsigned>(a.width),
                                    static_cast<unsigned>(a.height), AllPlanes, ZPixmap);
    if (image == nullptr) return 0;
    int count = 0;
    for (int y = 60; y < a.height - 60; y += 2) {
      for (int x = 1; x < a.width; ++x) {
        auto const level = [&](int at) { return static_cast<int>(XGetPixel(image, at, y) & 0xFF); };
        count += std::abs(level(x) - level(x - 1)) > 60;
      }
    }
    XDestroyImage(image);
    return count;
  }

  Display* display_;
  Window window_ = 0;
  pid_t pid_ = -1;
  int damage_event_ = 0;
  clock_type::time_point start_;
};

int ignore_errors(Display*, XErrorEvent*) {
  return 0;
}

void print_keys(probe& p, int count) {
  std::vector<double> times;
  for (int n = 0; n < count; ++n) times.push_back(p.press_key(XK_x));
  std::sort(times.begin(), times.end());
  auto const at = [&](double share) {
    return times[static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))];
  };
  std::printf("{\"median\": %.3f, \"p99\": %.3f, \"max\": %.3f, %s}\n", at(0.5), at(0.99),
              times.back(), p.memory().c_str());
}

}  // namespace

int main(int argc, char** argv) {
  std::string const what = argc > 2 ? argv[1] : "";
  bool const keys = what == "keys";
  if (!(what == "map" || what == "text" || (keys && argc > 3))) {
    std::fputs("usage: window_probe map|text|keys [COUNT] PROGRAM [ARGUMENT]...\n", stderr);
    return 2;
  }
  XSetErrorHandler(ignore_errors);
  probe p;
  p.start(argv + (keys ? 3 : 2));
  double const mapped = p.wait_for_map();
  if (what == "map") {
    usleep(300000);
    std::printf("{\"ms\": %.2f, %s}\n", mapped, p.memory().c_str());
    return 0;
  }
  double const shown = p.wait_for_text();
  if (what == "text") {
    std::printf("{\"ms\": %.2f, %s}\n", shown, p.memory().c_str());
    return 0;
  }
  p.settle();
  print_keys(p, std::atoi(argv[2]));
}
