#include "windows/program_actions.h"

#include "keys/displayed_keys.h"
#include "plist/description.h"

#include <algorithm>
#include <array>
#include <map>

namespace windows {
namespace {

using path = std::vector<std::string>;

constexpr int most_strokes = 8;  // of one binding

bool is_small_word(std::string_view word) {
  constexpr std::array<std::string_view, 8> words = {"And", "At", "For", "From",
                                                     "In",  "Of", "To",  "With"};
  return std::find(words.begin(), words.end(), word) != words.end();
}

bool is_capital(char c) {
  return 'A' <= c && c <= 'Z';
}

char other_case(char c) {
  return static_cast<char>(c ^ 0x20);
}

std::string joined(path const& titles) {
  std::string result;
  for (std::string const& title : titles) result += (result.empty() ? "" : " \u203A ") + title;
  return result;
}

/// Collects the actions.
class action_list {
 public:
  explicit action_list(platform::responder* first) : first_(first) {}

  void add_menu(std::vector<platform::menu_item> const& items, path& place) {
    for (platform::menu_item const& item : items) {
      if (!item.items.empty()) {
        // A dynamic list without a title stands in the menu itself.
        if (!item.title.empty()) place.push_back(item.title);
        add_menu(item.items, place);
        if (!item.title.empty()) place.pop_back();
      } else if (!item.selector.empty()) {
        add(action_of_entry(item, place, first_));
      }
    }
  }

  void add_bindings(plist::dictionary const& bindings, path& strokes) {
    for (auto const& [key, binding] : bindings) {
      // What is bound to a key serves the keypad as well.
      if (key.size() > 1 && key.front() == '#' && bindings.contains(key.substr(1))) continue;
      strokes.push_back(key);
      if (auto const* const inner = binding.as_dictionary()) {
        if (strokes.size() < most_strokes) add_bindings(*inner, strokes);
      } else if (program_action action = action_of_binding(binding); !action.steps.empty()) {
        action.keys = {strokes};
        add(std::move(action));
      }
      strokes.pop_back();
    }
  }

  std::vector<program_action> take() { return std::move(actions_); }

 private:
  void add(program_action action) {
    std::string name;
    for (program_action::step const& step : action.steps)
      name +=
          step.selector + '\n' + (step.argument ? plist::description(step.argument) : "") + '\n';
    auto const [found, is_new] = known_.emplace(name, actions_.size());
    if (is_new) return actions_.push_back(std::move(action));
    auto& keys = actions_[found->second].keys;
    for (auto& each : action.keys)
      if (std::ranges::find(keys, each) == keys.end()) keys.push_back(std::move(each));
  }

  platform::responder* first_;
  std::vector<program_action> actions_;
  std::map<std::string, std::size_t> known_;
};

}  // namespace

bool program_action::perform(platform::responder& first) const {
  for (step const& each : steps)
    if (!first.tryToPerformWith(each.selector, each.argument)) return false;
  return true;
}

std::string title_of_selector(std::string_view selector) {
  // What stands before a bar groups selectors, and says nothing here.
  if (auto const bar = selector.find('_'); bar != selector.npos) selector.remove_prefix(bar + 1);
  std::string result, word;
  auto const end_word = [&] {
    if (word.empty()) return;
    if (!result.empty() && is_small_word(word)) word[0] = other_case(word[0]);
    result += (result.empty() ? "" : " ") + word;
    word.clear();
  };
  for (std::size_t i = 0; i < selector.size(); ++i) {
    char const c = selector[i];
    if (c == ':') {
      end_word();
      continue;
    }
    // Capitals in a row are one word, but the last of them begins one where letters follow.
    bool const after_small = !word.empty() && !is_capital(word.back());
    bool const before_small =
        i + 1 < selector.size() && 'a' <= selector[i + 1] && selector[i + 1] <= 'z';
    if (is_capital(c) && (after_small || before_small)) end_word();
    word += word.empty() && 'a' <= c && c <= 'z' ? other_case(c) : c;
  }
  end_word();
  return result;
}

program_action action_of_binding(plist::value const& binding) {
  program_action action;
  auto const add = [&](std::string const& selector, plist::value argument) {
    action.title += (action.title.empty() ? "" : ", ") + title_of_selector(selector);
    action.steps.push_back({selector, std::move(argument)});
  };
  if (auto const* const selector = binding.as_string()) {
    if (*selector != "noop:") add(*selector, {});
    return action;
  }
  auto const* const several = binding.as_array();
  if (several == nullptr) return action;
  for (std::size_t i = 0; i < several->size(); ++i) {
    std::string const selector = (*several)[i].string_or("");
    bool const inserts = selector == "insertText:" && i + 1 < several->size();
    if (!selector.empty()) add(selector, inserts ? (*several)[++i] : plist::value());
  }
  return action;
}

program_action action_of_entry(platform::menu_item entry, path const& place,
                               platform::responder* first) {
  platform::responder* const target = platform::target_for_selector(first, entry.selector);
  entry.enabled = target != nullptr;
  if (target != nullptr) target->validateMenuItem(entry);
  program_action action;
  // In menus within a menu, titles such as "Left" say too little by themselves.
  for (std::size_t i = 1; i < place.size(); ++i) action.title += place[i] + ": ";
  action.title += entry.title;
  action.place = joined(place);
  action.keys = std::move(entry.keys);
  action.steps = {{entry.selector, entry.argument}};
  action.enabled = entry.enabled;
  action.checked = entry.checked;
  return action;
}

std::vector<program_action> program_actions(std::vector<platform::menu_item> menus,
                                            plist::dictionary const& bindings,
                                            platform::responder* first) {
  keys::add_bound_keys(menus, bindings);
  action_list list(first);
  path empty;
  list.add_menu(menus, empty);
  list.add_bindings(bindings, empty);
  return list.take();
}

}  // namespace windows
