#include "path/file_writer.h"

#include <string_view>

namespace path {

file_contents contents_of(std::string_view bytes) {
  return {bytes.size(), [bytes](byte_sink const& sink) {
            return sink(reinterpret_cast<unsigned char const*>(bytes.data()), bytes.size());
          }};
}

}  // namespace path
