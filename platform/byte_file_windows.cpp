// SPDX-License-Identifier: MIT
#include <windows.h>

#include <algorithm>
#include <system_error>

#include "platform/byte_file.h"
#include "platform/terminal.h"

namespace korr::platform {

namespace {

[[noreturn]] void fail(DWORD error) {
  throw std::system_error(static_cast<int>(error), std::system_category());
}

class WindowsByteFile final : public IByteFile {
 public:
  /// Takes over the handle when `isOwned`.
  WindowsByteFile(HANDLE handle, bool isOwned) : handle_(handle), isOwned_(isOwned) {
    LARGE_INTEGER size{};
    if (::GetFileType(handle_) == FILE_TYPE_DISK && ::GetFileSizeEx(handle_, &size)) {
      size_ = static_cast<std::uint64_t>(size.QuadPart);
    }
  }

  ~WindowsByteFile() override {
    if (isOwned_) ::CloseHandle(handle_);
  }
  WindowsByteFile(const WindowsByteFile&) = delete;
  WindowsByteFile& operator=(const WindowsByteFile&) = delete;

  std::size_t read(std::span<std::uint8_t> buffer) override {
    constexpr std::size_t kMost = 1U << 30;
    DWORD count = 0;
    if (::ReadFile(handle_, buffer.data(), static_cast<DWORD>(std::min(buffer.size(), kMost)),
                   &count, nullptr)) {
      return count;
    }
    const DWORD error = ::GetLastError();
    if (error == ERROR_BROKEN_PIPE || isInterrupted()) return 0;
    fail(error);
  }

  std::optional<std::uint64_t> size() const override { return size_; }

 private:
  HANDLE handle_;
  bool isOwned_;
  std::optional<std::uint64_t> size_;
};

}  // namespace

std::unique_ptr<IByteFile> openByteFile(const std::filesystem::path& path) {
  const HANDLE handle =
      ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
  if (handle == INVALID_HANDLE_VALUE) fail(::GetLastError());
  return std::make_unique<WindowsByteFile>(handle, /*isOwned=*/true);
}

std::unique_ptr<IByteFile> openStandardInput() {
  return std::make_unique<WindowsByteFile>(::GetStdHandle(STD_INPUT_HANDLE), /*isOwned=*/false);
}

}  // namespace korr::platform
