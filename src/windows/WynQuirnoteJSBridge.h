#pragma once

#include "commands/child_environment.h"
#include "platform/html_window.h"
#include "windows/WynJSShellCommand.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// What a page's scripts know as "Quirnote": system, log, isBusy. The script's side is
/// share/html/bridge.js; what it asks comes in here as requests:
///
///     system text=COMMAND       runs it in /tmp; {"status":,"output":,"error":} when it has ended
///     start  text=COMMAND       begins it; {"id":}
///     next   id=                {"output":,"error":,"ended":,"status":}, when there is something
///     write  id= text=          {} once the command has taken most of what was written
///     close  id=   cancel id=   {}
///     log    text=              {}
///     busy [value=]             {"busy":}
///
/// Only pages that the program itself serves are answered. A page's commands end with it. Main
/// thread only.
class WynQuirnoteJSBridge {
 public:
  class busy_state {
   public:
    virtual bool isBusy() const = 0;
    virtual void setIsBusy(bool busy) = 0;

   protected:
    ~busy_state() = default;
  };

  WynQuirnoteJSBridge(commands::variables environment, busy_state& delegate);
  ~WynQuirnoteJSBridge();

  void answer(platform::page_request const& request);
  /// A message of the page. Of one page only so many are logged.
  void log(std::string const& message);

  static constexpr std::size_t most_tasks = 64;  // at a time

 private:
  using reply = std::function<void(std::optional<std::string> json)>;

  void start(std::string const& text, bool waits, reply const& give);
  void tellProgress(std::uint64_t id, reply const& give);
  void write(std::uint64_t id, std::string const& text, reply const& give);
  void answerWrites();
  void forget(std::uint64_t id);

  commands::variables const environment_;
  busy_state& delegate_;
  std::map<std::uint64_t, std::unique_ptr<WynJSShellCommand>> tasks_;
  std::uint64_t last_id_ = 0;
  std::size_t messages_ = 0;
  struct pending_write {
    std::uint64_t id;
    reply give;
  };
  std::vector<pending_write> writes_;
  std::unique_ptr<platform::timer> write_timer_;
  std::shared_ptr<char> const lives_ = std::make_shared<char>();
};
