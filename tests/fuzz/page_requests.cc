#include "headless/headless_desktop.h"
#include "platform/system/percent_encoding.h"
#include "windows/WynQuirnoteJSBridge.h"

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

class never_busy final : public WynQuirnoteJSBridge::busy_state {
 public:
  bool isBusy() const override { return false; }
  void setIsBusy(bool) override {}
};

// What is fuzzed are the requests, not the shell.
bool is_harmless(platform::page_request const& request) {
  if (request.operation != "system" && request.operation != "start") return true;
  auto const fields = platform::query_fields(request.arguments);
  if (!fields || !fields->contains("text")) return true;
  std::string const& text = fields->find("text")->second;
  return text == "cat" || text == ":" || text.find('\0') != text.npos;
}

}  // namespace

// Requests of a page, one a line: origin, operation and arguments between blanks. Each is answered
// once at most, with JSON in one line, and only those of the program's own pages.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static bool const quiet = (stderr = std::fopen("/dev/null", "w")) != nullptr &&
                            std::signal(SIGPIPE, SIG_IGN) != SIG_ERR;  // as in the program
  if (!quiet) std::abort();
  headless::headless_desktop desktop;
  never_busy busy;
  WynQuirnoteJSBridge bridge({}, busy);
  std::string rest(data, data + size);
  for (int count = 0; !rest.empty() && count < 20; ++count) {
    std::string const line = rest.substr(0, rest.find('\n'));
    rest.erase(0, line.size() + 1);
    std::size_t const first = line.find(' '), second = line.find(' ', first + 1);
    if (second == line.npos) continue;
    platform::page_request request{line.substr(0, first),
                                   "page",
                                   line.substr(first + 1, second - first - 1),
                                   line.substr(second + 1),
                                   {}};
    if (!is_harmless(request)) continue;
    bool const is_ours = request.origin.starts_with("qn-");
    request.answer = [is_ours, answers = 0](std::optional<std::string> const& json) mutable {
      if (++answers > 1 || (json && !is_ours)) std::abort();
      for (char const c : json.value_or("{}"))
        if (static_cast<unsigned char>(c) < 0x20) std::abort();
    };
    bridge.answer(request);
    desktop.loop().run_for(0);
  }
  return 0;
}
