// SPDX-License-Identifier: MIT

// A browser without a window.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tests/txsub/program_runner.h"

namespace korr::txsub {

inline constexpr const char* kBrowser = "/usr/bin/chromium";

inline bool isBrowserInstalled() {
  return std::filesystem::exists(kBrowser);
}

/// Opens a page, lets its scripts run, and returns what the document has become. The directory
/// takes the browser's profile.
inline std::string documentOf(const std::string& url, const TemporaryDirectory& directory) {
  return runProgram({.program = kBrowser,
                     .arguments = {"--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
                                   "--no-first-run", "--disable-background-networking",
                                   "--disable-component-update", "--disable-sync",
                                   "--user-data-dir=" + directory.file("profile"),
                                   "--virtual-time-budget=3000", "--dump-dom", url}})
      .output;
}

}  // namespace korr::txsub
