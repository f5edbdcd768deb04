// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "platform/byte_file.h"
#include "platform/interrupt_posix.h"
#include "platform/terminal.h"

namespace korr::platform {

namespace {

[[noreturn]] void fail(int error) {
  throw std::system_error(error, std::generic_category());
}

class PosixByteFile final : public IByteFile {
 public:
  /// Takes over the descriptor.
  explicit PosixByteFile(int descriptor) : descriptor_(descriptor) {
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0) failAndClose(errno);
    if (S_ISDIR(status.st_mode)) failAndClose(EISDIR);
    if (S_ISREG(status.st_mode)) {
      size_ = static_cast<std::uint64_t>(status.st_size);
      ::posix_fadvise(descriptor_, 0, 0, POSIX_FADV_SEQUENTIAL);
    }
  }

  ~PosixByteFile() override { ::close(descriptor_); }
  PosixByteFile(const PosixByteFile&) = delete;
  PosixByteFile& operator=(const PosixByteFile&) = delete;

  std::size_t read(std::span<std::uint8_t> buffer) override {
    for (;;) {
      if (!size_ && !waitForInput()) return 0;
      const auto count = ::read(descriptor_, buffer.data(), buffer.size());
      if (count >= 0) return static_cast<std::size_t>(count);
      if (errno != EINTR) fail(errno);
      if (isInterrupted()) return 0;
    }
  }

  std::optional<std::uint64_t> size() const override { return size_; }

 private:
  // False when the user interrupts instead.
  bool waitForInput() const {
    std::array<pollfd, 2> waiting{{{.fd = descriptor_, .events = POLLIN, .revents = 0},
                                   {.fd = interruptDescriptor(), .events = POLLIN, .revents = 0}}};
    while (::poll(waiting.data(), waiting.size(), -1) < 0 && errno == EINTR) {
    }
    return waiting[1].revents == 0;
  }

  [[noreturn]] void failAndClose(int error) {
    ::close(descriptor_);
    fail(error);
  }

  int descriptor_;
  std::optional<std::uint64_t> size_;
};

}  // namespace

std::unique_ptr<IByteFile> openByteFile(const std::filesystem::path& path) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) fail(errno);
  return std::make_unique<PosixByteFile>(descriptor);
}

std::unique_ptr<IByteFile> openStandardInput() {
  const int descriptor = ::dup(STDIN_FILENO);
  if (descriptor < 0) fail(errno);
  return std::make_unique<PosixByteFile>(descriptor);
}

}  // namespace korr::platform
