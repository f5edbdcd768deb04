// SPDX-License-Identifier: MIT

#include <windows.h>

#include <system_error>

#include "platform/directory_lock.h"

namespace korr::platform {

namespace {

// A file that goes with its handle.
class WindowsDirectoryLock final : public IDirectoryLock {
 public:
  explicit WindowsDirectoryLock(HANDLE file) : file_(file) {}
  ~WindowsDirectoryLock() override { ::CloseHandle(file_); }
  WindowsDirectoryLock(const WindowsDirectoryLock&) = delete;
  WindowsDirectoryLock& operator=(const WindowsDirectoryLock&) = delete;

 private:
  HANDLE file_;
};

}  // namespace

std::unique_ptr<IDirectoryLock> lockDirectory(const std::filesystem::path& path) {
  const HANDLE file =
      ::CreateFileW((path / L".lock").c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                    FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  if (file != INVALID_HANDLE_VALUE) return std::make_unique<WindowsDirectoryLock>(file);
  const DWORD error = ::GetLastError();
  if (error == ERROR_SHARING_VIOLATION) return nullptr;
  throw std::system_error(static_cast<int>(error), std::system_category());
}

}  // namespace korr::platform
