#include "platform/notification_center.h"

#include <vector>

namespace platform {

struct notification_center::observer {
  std::string name;
  callback call;
  void const* object;
  bool alive = true;
};

struct notification_center::observer_list {
  std::vector<std::shared_ptr<observer>> all;
  int posting = 0;
};

notification_center::token& notification_center::token::operator=(token&& other) {
  if (this != &other) {
    reset();
    observer_ = std::move(other.observer_);
  }
  return *this;
}

void notification_center::token::reset() {
  if (observer_) observer_->alive = false;
  observer_.reset();
}

notification_center::notification_center() : observers_(std::make_unique<observer_list>()) {}
notification_center::~notification_center() = default;

notification_center::token notification_center::observe(std::string name, callback call,
                                                        void const* object) {
  auto added = std::make_shared<observer>(observer{std::move(name), std::move(call), object});
  if (observers_->posting == 0) std::erase_if(observers_->all, [](auto& o) { return !o->alive; });
  observers_->all.push_back(added);
  return token(std::move(added));
}

void notification_center::post(std::string_view name, void const* object,
                               plist::value const& info) {
  ++observers_->posting;
  std::size_t const count = observers_->all.size();
  for (std::size_t i = 0; i < count; ++i) {
    auto const current = observers_->all[i];  // kept alive across a call that drops its token
    if (!current->alive || current->name != name) continue;
    if (current->object && current->object != object) continue;
    current->call({name, object, info});
  }
  --observers_->posting;
}

notification_center& notification_center::standard() {
  static auto& instance = *new notification_center;
  return instance;
}

}  // namespace platform
