#pragma once

// What tests use of GoogleTest, the standard library and the system, compiled once for all test
// programs. A test includes this, or a fixture that does, and what it tests.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iomanip>
#include <iterator>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using strings = std::vector<std::string>;

/// The text, so many times.
template <class Text>
Text repeated(Text const& text, std::size_t times) {
  Text result;
  for (; times > 0; --times) result += text;
  return result;
}
inline std::string repeated(char const* text, std::size_t times) {
  return repeated(std::string(text), times);
}

/// What `action` writes to the standard error stream.
inline std::string errors_of(std::function<void()> const& action) {
  testing::internal::CaptureStderr();
  action();
  return testing::internal::GetCapturedStderr();
}
/// As long as it lives, what is written there goes nowhere.
struct silenced_errors {
  silenced_errors() { testing::internal::CaptureStderr(); }
  ~silenced_errors() { testing::internal::GetCapturedStderr(); }
};

/// The whole of a file; "" if there is none.
inline std::string content_of_file(std::string const& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline struct stat status_of(std::string const& path) {
  struct stat result {};
  EXPECT_EQ(lstat(path.c_str(), &result), 0) << path;
  return result;
}
/// The permissions of what the path leads to, with the marks of set-user-ID and so on; 0 if there
/// is nothing.
inline unsigned mode_of(std::string const& path) {
  struct stat result {};
  return stat(path.c_str(), &result) == 0 ? result.st_mode & 07777 : 0;
}
