#include "platform/system/uuid.h"

#include <random>

namespace platform {

std::string stringWithUUID() {
  std::random_device random;
  std::uniform_int_distribution<int> digit(0, 15);
  std::string result = "xxxxxxxx-xxxx-4xxx-Nxxx-xxxxxxxxxxxx";
  for (char& c : result) {
    if (c == 'x') c = "0123456789ABCDEF"[digit(random)];
    if (c == 'N') c = "89AB"[digit(random) & 3];
  }
  return result;
}

}  // namespace platform
