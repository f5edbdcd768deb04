// SPDX-License-Identifier: MIT

// Keeps two processes from writing into one directory.
#pragma once

#include <filesystem>
#include <memory>

namespace korr::platform {

/// A directory held by this process, until the object goes or the process ends, however it ends.
class IDirectoryLock {
 public:
  virtual ~IDirectoryLock() = default;
};

/// Null when another process holds it. Throws std::system_error when there is no such directory.
std::unique_ptr<IDirectoryLock> lockDirectory(const std::filesystem::path& path);

}  // namespace korr::platform
