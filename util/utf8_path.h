// SPDX-License-Identifier: MIT

// Paths as users type them.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace korr::txsub {

/// `utf8` comes from the command line or a template; the platform's own form differs on Windows.
inline std::filesystem::path pathFromUtf8(std::string_view utf8) {
  return {std::u8string(utf8.begin(), utf8.end())};
}

inline std::string utf8FromPath(const std::filesystem::path& path) {
  const std::u8string utf8 = path.u8string();
  return {utf8.begin(), utf8.end()};
}

}  // namespace korr::txsub
