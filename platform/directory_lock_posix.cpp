// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "platform/directory_lock.h"

namespace korr::platform {

namespace {

class PosixDirectoryLock final : public IDirectoryLock {
 public:
  explicit PosixDirectoryLock(int descriptor) : descriptor_(descriptor) {}
  ~PosixDirectoryLock() override { ::close(descriptor_); }
  PosixDirectoryLock(const PosixDirectoryLock&) = delete;
  PosixDirectoryLock& operator=(const PosixDirectoryLock&) = delete;

 private:
  int descriptor_;
};

}  // namespace

std::unique_ptr<IDirectoryLock> lockDirectory(const std::filesystem::path& path) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) throw std::system_error(errno, std::generic_category());
  auto lock = std::make_unique<PosixDirectoryLock>(descriptor);
  // Some network file systems know no locks; there the directory is anybody's.
  if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return nullptr;
  return lock;
}

}  // namespace korr::platform
