// SPDX-License-Identifier: MIT
#include "readers/byte_source.h"

#include <algorithm>
#include <system_error>
#include <thread>

#include "platform/terminal.h"
#include "util/exception.h"
#include "util/utf8_path.h"

namespace korr::txsub {

std::string inputName(const std::string& path) {
  return path == "-" ? "standard input" : '\'' + path + '\'';
}

FileSource::FileSource(const std::string& path) {
  try {
    file_ =
        path == "-" ? platform::openStandardInput() : platform::openByteFile(pathFromUtf8(path));
  } catch (const std::system_error& error) {
    throw util::TessaryException("cannot read " + inputName(path) + ": " + error.code().message());
  }
}

std::size_t FileSource::read(std::uint8_t* buffer, std::size_t size) {
  const std::size_t ahead = std::min(size, ahead_.size() - aheadUsed_);
  if (ahead == 0) return readFile({buffer, size});
  std::copy_n(ahead_.begin() + static_cast<std::ptrdiff_t>(aheadUsed_), ahead, buffer);
  aheadUsed_ += ahead;
  if (aheadUsed_ == ahead_.size()) {
    ahead_ = {};
    aheadUsed_ = 0;
  }
  return ahead;
}

bool FileSource::lookAhead() {
  constexpr std::size_t kPiece = 64 * 1024;
  const std::size_t filled = ahead_.size();
  ahead_.resize(filled + kPiece);
  const std::size_t count = readFile(std::span(ahead_).subspan(filled));
  ahead_.resize(filled + count);
  return count != 0;
}

std::size_t FileSource::readFile(std::span<std::uint8_t> buffer) {
  try {
    return file_->read(buffer);
  } catch (const std::system_error& error) {
    throw util::TessaryException(error.code().message());
  }
}

std::size_t GrowingSource::read(std::uint8_t* buffer, std::size_t size) {
  constexpr std::chrono::milliseconds kPause{40};
  for (std::chrono::milliseconds waited{0};; waited += kPause) {
    const std::size_t count = source_->read(buffer, size);
    if (count != 0 || waited >= due_ || platform::isInterrupted()) return count;
    std::this_thread::sleep_for(kPause);
  }
}

}  // namespace korr::txsub
