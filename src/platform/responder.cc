#include "platform/responder.h"

#include "platform/desktop.h"
#include "platform/menu.h"

#include <algorithm>

namespace platform {

bool responder::respondsToSelector(std::string_view selector) const {
  return methods_.find(selector) != methods_.end();
}

std::vector<std::string> responder::selectors() const {
  std::vector<std::string> names;
  for (auto const& entry : methods_) names.push_back(entry.first);
  std::sort(names.begin(), names.end());
  return names;
}

std::optional<plist::value> responder::performOwn(std::string_view selector,
                                                  plist::value const& object) {
  auto const it = methods_.find(selector);
  if (it == methods_.end()) return std::nullopt;
  auto const run = it->second;
  plist::value result = (*run)(object);
  if (result == plist::value(false)) desktop::current().beep();
  return result;
}

plist::value responder::performSelectorWithObject(std::string_view selector,
                                                  plist::value const& object) {
  auto done = performOwn(selector, object);
  return done ? *std::move(done) : plist::value();
}

bool responder::tryToPerformWith(std::string_view selector, plist::value const& object) {
  if (respondsToSelector(selector)) {
    performSelectorWithObject(selector, object);
    return true;
  }
  return next_ != nullptr && next_->tryToPerformWith(selector, object);
}

plist::value responder::query(std::string_view name, plist::value const& argument) {
  auto const it = methods_.find(name);
  return it == methods_.end() ? plist::value() : (*it->second)(argument);
}

void responder::validateMenuItem(menu_item& item) {
  if (item.selector.empty() || item.selector.back() != ':') return;
  std::string const base = item.selector.substr(0, item.selector.size() - 1);
  std::string can = "can" + base;
  if (can.size() > 3 && can[3] >= 'a' && can[3] <= 'z') can[3] = static_cast<char>(can[3] - 32);

  item.enabled = query(can, item.argument).boolean_or(true);
  if (plist::value const title = query(base + "MenuTitle", item.argument); title.as_string())
    item.title = *title.as_string();
  plist::value const checked = query(base + "IsChecked:", item.argument);
  item.checkable = bool(checked);
  item.checked = checked.boolean_or(false);
  // What is checked by what it hands over is one of several choices.
  item.exclusive = item.exclusive || (item.checkable && item.argument);
}

void responder::addMethod(std::string selector, method m) {
  methods_.emplace(std::move(selector), std::make_shared<method const>(std::move(m)));
}

responder* target_for_selector(responder* first, std::string_view selector) {
  for (responder* r = first; r != nullptr; r = r->nextResponder())
    if (r->respondsToSelector(selector)) return r;
  return nullptr;
}

}  // namespace platform
