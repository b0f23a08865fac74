#include "path/file_error.h"

#include <system_error>

namespace path {

file_error make_file_error(std::string operation, std::string path, int code) {
  return {std::move(operation), std::move(path), code, std::generic_category().message(code)};
}

std::string description(file_error const& error) {
  return error.operation + " " + error.path + ": " + error.message;
}

}  // namespace path
