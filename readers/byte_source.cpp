#include "readers/byte_source.h"

#include <algorithm>
#include <system_error>

#include "util/exception.h"
#include "util/utf8_path.h"

namespace korr::txsub {

FileSource::FileSource(const std::string& path)
    : name_(path == "-" ? "standard input" : '\'' + path + '\'') {
  try {
    file_ =
        path == "-" ? platform::openStandardInput() : platform::openByteFile(pathFromUtf8(path));
  } catch (const std::system_error& error) {
    throw util::TessaryException("cannot read " + name_ + ": " + error.code().message());
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

std::span<const std::uint8_t> FileSource::peek(std::size_t size) {
  std::size_t filled = ahead_.size();
  ahead_.resize(std::max(filled, aheadUsed_ + size));
  while (filled < ahead_.size()) {
    const std::size_t count = readFile(std::span(ahead_).subspan(filled));
    if (count == 0) break;
    filled += count;
  }
  ahead_.resize(filled);
  return std::span(ahead_).subspan(aheadUsed_);
}

std::size_t FileSource::readFile(std::span<std::uint8_t> buffer) {
  try {
    return file_->read(buffer);
  } catch (const std::system_error& error) {
    throw util::TessaryException("cannot read " + name_ + ": " + error.code().message());
  }
}

}  // namespace korr::txsub
