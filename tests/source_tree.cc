#include "source_tree.h"

std::string source_file(std::string const& name) {
  return QUIRNOTE_SOURCE_DIR "/" + name;
}

std::string test_data(std::string const& name) {
  return source_file("tests/data/" + name);
}
