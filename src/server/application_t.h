#pragma once

#include "platform/system/descriptor.h"
#include "server/pid_file.h"
#include "wire/message.h"

#include <memory>
#include <optional>
#include <string>

namespace wyn {

/// The process, before there is a window system: it makes sure that one instance runs for each
/// user. An instance listens as soon as it has claimed the pid file, long before it can answer, so
/// that of two that are started together one hands its files over to the other.
///
///     wyn::application_t application;
///     if (auto const status = application.hand_over(request)) return *status;
///     ...                                    // this is the instance now
class application_t {
 public:
  application_t();
  ~application_t();
  application_t(application_t const&) = delete;
  application_t& operator=(application_t const&) = delete;

  /// Looks for a running instance. With RELAUNCH in the environment that one is ended (by SIGTERM
  /// if the value is QUICK, else by SIGINT), and the status is 1 if it is still there after
  /// `relaunch_patience`. Else it gets the request, and the status is 0 when it has taken it.
  /// Nothing if this process is to go on: as the instance, or beside one that doesn't answer.
  std::optional<int> hand_over(wire::request const& request);

  static constexpr double relaunch_patience = 30;  // seconds
  static constexpr double answer_patience = 10;

  /// "quirnote", or CUSTOM_APP_NAME.
  std::string const& name() const { return name_; }
  std::string const& pid_path() const { return pid_path_; }
  /// Where other processes connect to this one; not open if it isn't the instance.
  platform::descriptor const& socket() const { return socket_; }
  /// This process was started so that its windows come to the front: ACTIVATE or RELAUNCH.
  bool is_to_be_activated() const { return is_to_be_activated_; }

  /// At the end of the process: no other one connects from now on.
  void remove_pid_file();

 private:
  bool end_other();
  enum class outcome { taken, refused, nobody, no_answer };
  outcome ask_other(wire::request const& request);
  void listen();

  std::string const name_;
  std::string folder_, pid_path_;
  std::string relaunch_;
  bool is_to_be_activated_ = false;
  std::unique_ptr<server::pid_file> pid_file_;
  platform::descriptor socket_;
};

}  // namespace wyn
