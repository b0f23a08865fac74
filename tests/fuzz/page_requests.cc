#include "fuzz/fuzz.h"
#include "headless/headless_desktop.h"
#include "platform/system/percent_encoding.h"
#include "windows/WynQuirnoteJSBridge.h"

#include <csignal>

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
  static auto const former = std::signal(SIGPIPE, SIG_IGN);  // as in the program
  if (former == SIG_ERR) std::abort();
  headless::headless_desktop desktop;
  never_busy busy;
  WynQuirnoteJSBridge bridge({}, busy);
  std::string rest(data, data + size);
  for (int count = 0; !rest.empty() && count < 20; ++count) {
    std::string line = take_until('\n', rest);
    if (std::count(line.begin(), line.end(), ' ') < 2) continue;
    std::string const origin = take_until(' ', line), operation = take_until(' ', line);
    platform::page_request request{origin, "page", operation, line, {}};
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
