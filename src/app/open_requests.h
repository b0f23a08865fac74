#pragma once

#include "server/QuirnoteServer.h"
#include "wire/message.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

class AppDelegate;
class WynDocument;

namespace app {

struct file_argument;

/// The request by which another instance opens these files; see AppDelegate::setLaunchArguments.
wire::request request_for(std::vector<std::string> const& arguments, std::string const& directory);

/// Does what other processes have asked for: opens files, and tells who waits when they are closed.
/// Main thread only.
class open_requests {
 public:
  /// Outlives what is opened.
  explicit open_requests(AppDelegate& app) : app_(app) {}

  /// Answers at once; files are opened when nothing waits.
  void take(wire::request const& request, std::shared_ptr<server::peer> const& from);
  /// Opens now what has been taken by now, as a start does.
  void perform_all();
  /// Something has been taken and isn't open yet.
  bool has_taken() const { return !taken_.empty(); }
  /// The program ends: who asks from now on looks for the next instance.
  void refuse() { is_refusing_ = true; }

 private:
  struct taken {
    wire::request request;
    std::shared_ptr<server::peer> from;
    platform::descriptor input;
  };

  void perform(taken what);
  void open(taken const& what);
  void compare(taken const& what);
  void open_input(taken const& what, platform::descriptor input);
  void wait_for(WynDocument& document, std::size_t file, taken const& what,
                std::shared_ptr<platform::descriptor> const& output);

  AppDelegate& app_;
  std::vector<taken> taken_;
  bool is_refusing_ = false;
  std::shared_ptr<char> const lives_ = std::make_shared<char>();
};

}  // namespace app
