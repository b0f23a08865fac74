#include "platform/character_name.h"

#include <unicode/uchar.h>

namespace platform {

std::string character_name(char32_t c) {
  char name[128] = "";
  UErrorCode status = U_ZERO_ERROR;
  auto const length =
      u_charName(static_cast<UChar32>(c), U_EXTENDED_CHAR_NAME, name, sizeof name, &status);
  return U_SUCCESS(status) ? std::string(name, static_cast<std::size_t>(length)) : std::string();
}

}  // namespace platform
