// SPDX-License-Identifier: MIT

// Programs that this one starts and watches.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korr::platform {

struct ChildCall {
  std::filesystem::path program;
  std::vector<std::string> arguments;  ///< UTF-8, without the program's own name
  std::filesystem::path errors;        ///< takes what the child writes to standard error
  /// Bytes of address space (Windows: committed memory) that the child may take.
  std::optional<std::uint64_t> memoryLimit = {};
};

/// A program at work. Its standard input is empty and its standard output is discarded; a Ctrl-C at
/// the terminal does not reach it, and it is asked to end when this program is gone. Not
/// thread-safe.
class ChildProcess {
 public:
  /// Starts it. Throws std::system_error when that cannot be done.
  explicit ChildProcess(const ChildCall& call);
  /// A child that still runs is killed.
  ~ChildProcess();
  ChildProcess(ChildProcess&&) noexcept;
  ChildProcess& operator=(ChildProcess&&) noexcept;

  /// Asks it to end by itself, as a user at the terminal would.
  void askToEnd();

  /// Ends it at once.
  void kill();

  /// Its exit code, minus the number of the signal that ended it; nothing while it runs.
  std::optional<int> exitCode();

 private:
  friend void waitForAny(const std::vector<ChildProcess*>& children,
                         std::chrono::milliseconds longest);
  struct State;
  std::unique_ptr<State> state_;
};

/// Returns when one of these has ended, when the user interrupts this program for the first time,
/// or after `longest`; at once when one had ended before.
void waitForAny(const std::vector<ChildProcess*>& children, std::chrono::milliseconds longest);

}  // namespace korr::platform
