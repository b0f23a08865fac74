#include "encoding/probability.h"

namespace encoding {

character_weights const Probability;
std::uint32_t const N = 0;

}  // namespace encoding
