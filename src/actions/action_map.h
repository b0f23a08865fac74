#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/string_table.h"
#include "text/views/view.h"

namespace actions {

/// Functions of a view under names; `Result` is what a call gives.
template <typename Result>
class view_function_map {
 public:
  class action {
   public:
    virtual ~action() = default;
    virtual Result operator()(text::view* view) const = 0;
  };

  /// Adds all entries of another map, after what has been entered so far. The other one must
  /// outlive this one; several may share it.
  void inherit(view_function_map const& shared) { inherited_ = &shared; }

  bool has_action(std::string_view name) const { return find(name) != nullptr; }
  /// Null when the name isn't known. Owned by the map.
  action const* find(std::string_view name) const {
    auto const found = actions_.find(name);
    if (found != actions_.end()) return found->second.get();
    return inherited_ == nullptr ? nullptr : inherited_->find(name);
  }
  /// All names, in their order.
  std::vector<std::string> names() const {
    std::vector<std::string> result;
    if (inherited_ != nullptr) result = inherited_->names();
    for (auto const& entry : actions_) result.push_back(entry.first);
    std::sort(result.begin(), result.end());
    result.erase(std::unique(result.begin(), result.end()), result.end());
    return result;
  }

 protected:
  void enter(std::string name, std::unique_ptr<action> added) {
    actions_.try_emplace(std::move(name), std::move(added));
  }

 private:
  platform::string_table<std::unique_ptr<action>> actions_;
  view_function_map const* inherited_ = nullptr;
};

/// The editing actions by the names under which key bindings, menus, macros and scripts call them.
///
///     action_map map;
///     register_movement_functions(map);
///     map.perform_action("moveWordLeft:", &view);
class action_map : public view_function_map<bool> {
 public:
  /// A copy of the function object `F`, which gives an `R`. A call reports what `F` gives where
  /// that is a bool, and success otherwise.
  template <typename F, typename R>
  class derived_action : public action {
   public:
    explicit derived_action(F function) : function_(std::move(function)) {}
    bool operator()(text::view* view) const override {
      if constexpr (std::is_same_v<R, bool>) {
        return std::invoke(function_, view);
      } else {
        std::invoke(function_, view);
        return true;
      }
    }

   private:
    F function_;
  };

  /// `function` takes a `text::view*`. The first registration of a name wins.
  template <typename F>
  void add_action(F function, std::string name) {
    using result = std::decay_t<std::invoke_result_t<F const&, text::view*>>;
    if (!has_action(name))
      enter(std::move(name), std::make_unique<derived_action<F, result>>(std::move(function)));
  }

  /// False when the action could not be done, or isn't known.
  bool perform_action(std::string_view name, text::view* view) const {
    action const* const found = find(name);
    return found && (*found)(view);
  }
};

/// The titles of menu items that depend on the view, by names such as
/// "toggleColumnSelectionMenuTitle".
class title_action_map : public view_function_map<std::string> {
 public:
  template <typename F>
  class derived_action : public action {
   public:
    explicit derived_action(F function) : function_(std::move(function)) {}
    std::string operator()(text::view* view) const override { return std::invoke(function_, view); }

   private:
    F function_;
  };

  /// `function` takes a `text::view*`. The first registration of a name wins.
  template <typename F>
  void add_action(F function, std::string name) {
    if (!has_action(name))
      enter(std::move(name), std::make_unique<derived_action<F>>(std::move(function)));
  }

  /// Empty when the name isn't known.
  std::string perform_action(std::string_view name, text::view* view) const {
    action const* const found = find(name);
    return found ? (*found)(view) : std::string();
  }
};

}  // namespace actions
