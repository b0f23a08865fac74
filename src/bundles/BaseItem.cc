#include "bundles/BaseItem.h"

#include "platform/system/uuid.h"
#include "platform/unicode.h"

#include <typeinfo>

BaseItem::BaseItem(bundles::item_owner& owner, std::string name, bundles::item_kind kind,
                   std::string UUID)
    : owner_(owner),
      name_(std::move(name)),
      UUID_(UUID.empty() ? platform::stringWithUUID() : std::move(UUID)),
      kind_(kind) {}

void BaseItem::setName(std::string name) {
  if (name == name_) return;
  name_ = std::move(name);
  setModified(true);
}

void BaseItem::setModified(bool modified) {
  isModified_ = modified;
  if (modified) owner_.setModified(true);
}

bool BaseItem::isEqual(BaseItem const& other) const {
  return this == &other || (typeid(*this) == typeid(other) && UUID_ == other.UUID_);
}

int bundles::caseInsensitiveCompare(std::string const& a, std::string const& b) {
  return unicode::lowercase(a).compare(unicode::lowercase(b));
}
