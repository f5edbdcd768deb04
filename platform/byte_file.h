// SPDX-License-Identifier: MIT

// Bytes of a file, a pipe or standard input.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace korr::platform {

/// Reads a file from front to back, without a buffer of its own. Not thread-safe.
class IByteFile {
 public:
  virtual ~IByteFile() = default;

  /// Reads what is there, at least one byte unless the end is reached: then 0. A pipe with nothing
  /// in it is waited for until the user interrupts, which reads as the end. Throws
  /// std::system_error.
  [[nodiscard]] virtual std::size_t read(std::span<std::uint8_t> buffer) = 0;

  /// Bytes in all; nothing for a pipe or a device.
  virtual std::optional<std::uint64_t> size() const = 0;
};

/// Throws std::system_error, for a directory too.
std::unique_ptr<IByteFile> openByteFile(const std::filesystem::path& path);
std::unique_ptr<IByteFile> openStandardInput();

}  // namespace korr::platform
