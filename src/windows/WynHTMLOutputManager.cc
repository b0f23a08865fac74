#include "windows/WynHTMLOutputManager.h"

#include "commands/ending_children.h"
#include "commands/output_results.h"
#include "commands/shell.h"
#include "path/file_system.h"
#include "platform/desktop.h"
#include "platform/html/html_tokens.h"
#include "platform/log.h"
#include "platform/system/library_folders.h"
#include "platform/system/percent_encoding.h"
#include "settings/store.h"
#include "windows/page_urls.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <utility>

namespace {

constexpr std::size_t block = 1 << 16;
constexpr int blocks_at_once = 4;     // that are read in one turn of the loop
constexpr double flush_delay = 0.03;  // seconds after which a line without an end is shown
constexpr double end_period = 0.02;   // seconds between looks at the process
constexpr double quiet = 1;           // seconds without output, once the command has ended

std::map<std::string, WynHTMLOutputManager*>& idle_windows() {
  static auto& windows = *new std::map<std::string, WynHTMLOutputManager*>;
  return windows;
}

std::uint64_t next_number() {
  static std::uint64_t number = 0;
  return ++number;
}

// The run whose output was begun last: its places are those that Next Result walks through.
std::uint64_t run_with_results = 0;

// What a page takes of memory, by its characters, its lines and its elements: 32 bytes of it count
// as one. As measured: 2.4 GB for 1.4 million short lines, 1.1 GB for 233,000 elements.
std::size_t weight_of(std::string_view html) {
  constexpr std::size_t per_byte = 2, per_line = 48, per_tag = 48;
  auto const count = [&](char sought) {
    return static_cast<std::size_t>(std::count(html.begin(), html.end(), sought));
  };
  return per_byte * html.size() + per_line * count('\n') + per_tag * count('<');
}

std::string size_text(std::size_t bytes) {
  constexpr std::size_t in_megabytes = std::size_t{10} << 20;
  return bytes < in_megabytes ? std::to_string(bytes >> 10) + " KB"
                              : std::to_string(bytes >> 20) + " MB";
}

std::string page_of_text(std::string const& text) {
  return "<!DOCTYPE html><meta charset=\"utf-8\"><pre>" + platform::html_escaped(text) + "</pre>";
}

}  // namespace

WynHTMLOutputManager::WynHTMLOutputManager(windows::html_output_owner& owner)
    : owner_(owner), loop_(platform::desktop::current().loop()) {
  setNextResponder(&owner_.lastResponder());
  addMethod("printDocument:", [this](plist::value const&) {
    window_->print();
    return plist::value();
  });
  addMethod("canPrintDocument", [this](auto const&) { return plist::value(window_->can_print()); });
  addMethod("reloadOutput:", [this](auto const&) { return plist::value(reload()); });
  addMethod("stopTask:", [this](auto const&) {
    terminateProcess();
    return plist::value();
  });
  addMethod("canStopTask", [this](auto const&) { return plist::value(!isDone()); });
  for (char const* selector : {"performClose:", "performCloseTab:"})
    addMethod(selector, [this](auto const&) {
      if (windowShouldClose()) window_->close();
      return plist::value();
    });
  for (char const* selector :
       {"copy:", "selectAll:", "makeTextLarger:", "makeTextSmaller:", "makeTextStandardSize:"})
    addMethod(selector,
              [this, selector](auto const&) { return plist::value(window_->perform(selector)); });
}

WynHTMLOutputManager::~WynHTMLOutputManager() {
  unregisterIdleWindow(*this);
  outputWatch_.reset();
  input_.reset();
  if (task_ != nullptr) commands::ending_children::shared().add(std::move(task_));
  if (page_ != nullptr) page_->set_on_room({});
}

void WynHTMLOutputManager::registerIdleWindow(WynHTMLOutputManager& manager,
                                              std::string const& uuid) {
  if (!uuid.empty()) idle_windows()[uuid] = &manager;
}

void WynHTMLOutputManager::unregisterIdleWindow(WynHTMLOutputManager& manager) {
  std::erase_if(idle_windows(), [&](auto const& each) { return each.second == &manager; });
}

WynHTMLOutputManager* WynHTMLOutputManager::idleWindowForUUID(std::string const& uuid) {
  auto const it = idle_windows().find(uuid);
  return it == idle_windows().end() ? nullptr : it->second;
}

void WynHTMLOutputManager::runCommand(plist::value command, std::string input,
                                      commands::variables environment, std::string directory) {
  content_ = {std::move(command), std::move(input), std::move(environment), std::move(directory),
              true};
  setUpWindow();
  reload();
}

void WynHTMLOutputManager::showOutput(std::string text, plist::value command,
                                      commands::variables environment, std::string directory) {
  content_ = {std::move(command), std::move(text), std::move(environment), std::move(directory),
              false};
  setUpWindow();
  reload();
}

void WynHTMLOutputManager::setUpWindow() {
  plist::value const& command = content_.command;
  commandUUID_ = command["uuid"].string_or("");
  if (window_ == nullptr) {
    window_ = platform::desktop::current().make_html_window(*this);
    plist::value const frames = settings::store().get("WynHTMLOutputFrames");
    window_->set_placement(frames["HTML Output " + commandUUID_].string_or(""));
  }
  std::string const name = command["name"].string_or("");
  window_->set_title(name.empty() ? "HTML Output" : name);
  scrollsOnOutput_ = !command["dontFollowNewOutput"].boolean_or(true) ||
                     command["autoScrollOutput"].boolean_or(false);
}

bool WynHTMLOutputManager::reload() {
  if (!askToStop()) return false;
  terminateProcess();
  if (task_ != nullptr) commands::ending_children::shared().add(std::move(task_));
  begin();
  if (content_.isRun)
    run();
  else
    showText(content_.text);
  window_->make_key_and_order_front();
  return true;
}

void WynHTMLOutputManager::begin() {
  unregisterIdleWindow(*this);
  bridge_ = std::make_unique<WynQuirnoteJSBridge>(content_.environment, *this);
  outputWatch_.reset();
  endTimer_.reset();
  flushTimer_.reset();
  received_ = weight_ = 0;
  // Each megabyte of the limit lets the page take about eight.
  mostWeight_ = static_cast<std::size_t>(settings::store().integer(commands::most_output_key))
                << 18;
  isTerminating_ = isAsking_ = false;
  run_ = run_with_results = next_number();
  commands::output_results::shared().begin();
  std::string const directory = content_.directory.empty() ? path::cwd() : content_.directory;
  links_ = std::make_unique<commands::link_places>(
      directory, [this](commands::output_place const& place) { noteResult(place); });
  if (page_ != nullptr) page_->set_on_room({});
  page_ = std::make_shared<platform::page_stream>();
  page_->set_on_room([&loop = loop_, this, lives = std::weak_ptr(lives_)] {
    loop.post([this, lives] {
      if (!lives.expired()) watchOutput();
    });
  });
  platform::page_frame const frame = window_->frame();
  pendingVisibleRect_ = frame.visible;
  shouldScrollToPendingRect_ = !scrollsOnOutput_ && frame.visible.y > 0;
  userDidScrollOutput_ = false;
  scrolledTo_ = 0;
  window_->set_message("");
}

void WynHTMLOutputManager::loadPage(std::string const& url) {
  pageURL_ = url;
  isLoadingPage_ = true;
  setIsBusy(true);
  window_->load(url, page_);
}

void WynHTMLOutputManager::run() {
  std::string error;
  task_ = commands::child_process::start({.script = content_.command["command"].string_or(""),
                                          .environment = content_.environment,
                                          .directory = content_.directory},
                                         error);
  loadPage("qn-internal://local/" + std::to_string(run_) + ".html");
  if (task_ == nullptr) {
    append(page_of_text("The command could not be run: " + error));
    page_->finish();
    return taskDidEnd();
  }
  input_ = std::make_unique<commands::background_input>(task_->input(), loop_);
  input_->write(content_.text);
  input_->close();
  lastOutput_ = loop_.now();
  watchOutput();
  endTimer_ = loop_.schedule(end_period, true, [this] { lookForEnd(); });
}

// The page of a text is of no scheme whose pages may run commands.
void WynHTMLOutputManager::showText(std::string const& text) {
  loadPage("qn-shown://local/" + std::to_string(run_) + ".html");
  append(links_->put(page_urls::with_base(text, page_urls::error_page())));
  append(links_->finish());
  page_->finish();
  registerIdleWindow(*this, commandUUID_);
}

void WynHTMLOutputManager::watchOutput() {
  bool const reads =
      task_ != nullptr && task_->output().is_open() && page_->wants_more() && weight_ < mostWeight_;
  if (!reads)
    outputWatch_.reset();
  else if (outputWatch_ == nullptr)
    outputWatch_ = loop_.watch_descriptor(task_->output().get(), [this] { receive(); });
}

void WynHTMLOutputManager::receive() {
  char buffer[block];
  for (int i = 0; i < blocks_at_once && page_->wants_more() && weight_ < mostWeight_; ++i) {
    ssize_t const count = read(task_->output().get(), buffer, sizeof buffer);
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) break;
    if (count <= 0) return outputDidEnd();
    lastOutput_ = loop_.now();
    std::string_view const bytes(buffer, static_cast<std::size_t>(count));
    received_ += bytes.size();
    weight_ += weight_of(bytes);
    append(links_->put(bytes));
  }
  flushTimer_ = loop_.schedule(flush_delay, false, [this] { append(links_->flush()); });
  watchOutput();
  if (weight_ >= mostWeight_) askForMore();
}

void WynHTMLOutputManager::append(std::string const& bytes) {
  page_->append(bytes);
}

void WynHTMLOutputManager::outputDidEnd() {
  outputWatch_.reset();
  flushTimer_.reset();
  task_->output().close();
  append(links_->finish());
  page_->finish();
  lookForEnd();
}

// When the user doesn't type, since keys that are meant for a text would answer.
void WynHTMLOutputManager::askForMore() {
  if (std::exchange(isAsking_, true)) return;
  platform::desktop::current().waits().deliver_in_pause(lives_, [this, run = run_] {
    if (run != run_ || task_ == nullptr) return;
    platform::alert const question{"Show more output?",
                                   "\u201C" + content_.command["name"].string_or("The command") +
                                       "\u201D has printed " + size_text(received_) +
                                       ". Showing more may take a lot of time and memory.",
                                   {"Stop Task", "Show More"}};
    bool const goes_on = platform::desktop::current().alerts().run(question) == 1;
    if (run != run_ || task_ == nullptr) return;
    isAsking_ = false;
    if (!goes_on) return terminateProcess();
    mostWeight_ = 2 * weight_;
    watchOutput();
  });
}

/// Whether the process has gone; and what is to be sent to it, if it is to.
void WynHTMLOutputManager::lookForEnd() {
  if (task_ == nullptr) return;
  if (isTerminating_) {
    task_->terminate();
    if (task_->is_killed() && task_->output().is_open()) return outputDidEnd();
  }
  if (!task_->has_ended()) return;
  bool const is_read = !task_->output().is_open();
  // What it has left running may hold the pipe for ever.
  bool const is_quiet = outputWatch_ != nullptr && loop_.now() - lastOutput_ > quiet;
  if (!is_read && !is_quiet && !isTerminating_) return;
  if (!is_read) return outputDidEnd();
  taskDidEnd();
}

void WynHTMLOutputManager::taskDidEnd() {
  endTimer_.reset();
  input_.reset();
  task_.reset();
  if (!isLoadingPage_) setIsBusy(false);
  registerIdleWindow(*this, commandUUID_);
}

void WynHTMLOutputManager::terminateProcess() {
  if (task_ == nullptr) return;
  isTerminating_ = true;
  lookForEnd();
}

bool WynHTMLOutputManager::askToStop() {
  if (isDone()) return true;
  platform::alert const question{"Stop task before closing?",
                                 "The job that the task is performing will not be completed.",
                                 {"Stop Task", "Cancel"},
                                 1};
  return platform::desktop::current().alerts().run(question) == 0;
}

void WynHTMLOutputManager::keepPlacement() const {
  std::string const placement = window_->placement();
  if (placement.empty() || commandUUID_.empty()) return;
  plist::dictionary frames = settings::store().dictionary("WynHTMLOutputFrames");
  frames.insert_or_assign("HTML Output " + commandUUID_, placement);
  settings::store().set("WynHTMLOutputFrames", frames);
}

void WynHTMLOutputManager::windowWillClose() {
  unregisterIdleWindow(*this);
  keepPlacement();
  window_->stop_loading();
  outputWatch_.reset();
  endTimer_.reset();
  flushTimer_.reset();
  bridge_.reset();
  input_.reset();
  if (task_ != nullptr) commands::ending_children::shared().add(std::move(task_));
  owner_.didCloseWindow(*this);
}

void WynHTMLOutputManager::setIsBusy(bool busy) {
  isBusy_ = busy;
  window_->set_busy(busy);
}

void WynHTMLOutputManager::pageDidRequest(platform::page_request request) {
  if (bridge_ == nullptr) return request.answer(std::nullopt);
  bridge_->answer(request);
}

void WynHTMLOutputManager::pageDidChangeFrame() {
  platform::page_frame const frame = window_->frame();
  if (shouldScrollToPendingRect_) {
    if (frame.content.height < pendingVisibleRect_.bottom()) return;
    shouldScrollToPendingRect_ = false;
    window_->scroll_to({pendingVisibleRect_.x, pendingVisibleRect_.y});
  } else if (scrollsOnOutput_ && isLoadingPage_ && !userDidScrollOutput_) {
    window_->scroll_to({frame.visible.x, frame.content.height - frame.visible.height});
  }
}

// Content that grows moves nothing: only who scrolls up looks at something else than the end.
void WynHTMLOutputManager::pageDidScroll() {
  platform::page_frame const frame = window_->frame();
  if (frame.is_at_bottom())
    userDidScrollOutput_ = false;
  else if (frame.visible.y < scrolledTo_)
    userDidScrollOutput_ = true;
  scrolledTo_ = frame.visible.y;
}

void WynHTMLOutputManager::pageDidFinishLoading() {
  // That of the previous page may come late.
  if (page_ == nullptr || !(page_->at_end() || page_->is_abandoned())) return;
  isLoadingPage_ = false;
  if (std::exchange(shouldScrollToPendingRect_, false))
    window_->scroll_to({pendingVisibleRect_.x, pendingVisibleRect_.y});
  if (isDone()) setIsBusy(false);
}

void WynHTMLOutputManager::pageDidLog(std::string const& message) {
  if (bridge_ != nullptr) bridge_->log(message);
}

platform::page_link WynHTMLOutputManager::linkForURL(std::string const& url,
                                                     std::string const& from) {
  using kind = platform::page_link::kind;
  if (auto const place = commands::place_of_url(url)) {
    openPlace(*place);
    return {kind::refuse};
  }
  return page_urls::link_for(url, from);
}

std::string WynHTMLOutputManager::fileForURL(std::string const& url) {
  return page_urls::file_of(url);
}

// One at a time, however often a page asks.
void WynHTMLOutputManager::openPlace(commands::output_place const& place) {
  if (!page_urls::is_file(place.file))
    return platform::log("a page's link names no file: " + place.file);
  platform::desktop::current().waits().post(lives_, [this, place] {
    commands::output_results::shared().visit(place);
    owner_.openPlace(place);
  });
}

void WynHTMLOutputManager::noteResult(commands::output_place const& place) {
  if (run_ == run_with_results) commands::output_results::shared().add(place);
}

void WynHTMLOutputManager::pageProcessDidEnd() {
  if (page_ != nullptr) page_->abandon();
  bridge_ = std::make_unique<WynQuirnoteJSBridge>(content_.environment, *this);
  isLoadingPage_ = false;
  if (isDone()) setIsBusy(false);
  platform::log("the process of the page of '" + content_.command["name"].string_or("") +
                "' has ended");
  window_->set_message(
      "The page's process has ended. Reload Output, in the Bundles menu, shows the output again.");
}
