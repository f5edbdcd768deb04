#include "readers/samples_reader.h"

#include <algorithm>
#include <cinttypes>

#include "readers/record_format.h"
#include "util/exception.h"

namespace korr::txsub {

namespace {

constexpr std::size_t kReadSize = 64 * 1024;
constexpr std::size_t kBytesPerRead = 1024 * 1024;
// Far above any sample; a file without line ends must not be read into memory whole.
constexpr std::size_t kLongestLine = 16 * 1024 * 1024;

}  // namespace

SamplesReader::SamplesReader(std::unique_ptr<IByteSource> source, const ReaderOptions& options)
    : source_(std::move(source)), logger_(options.logger) {
  std::string line;
  if (!nextLine(line)) throw util::TessaryException("no header line: the input is empty");
  try {
    auto header = parseHeader(line);
    stream_.type = header.type;
    if (header.format) stream_.descriptors = std::move(*header.format);
  } catch (const util::TessaryException& error) {
    throw util::TessaryException("line 1 is no header of recorded samples: " +
                                 std::string(error.what()));
  }
}

bool SamplesReader::read(IReaderListener& listener) {
  if (!isAnnounced_) {
    isAnnounced_ = true;
    isWanted_ = listener.onStream(stream_);
  }
  const std::uint64_t stopAt = bytesRead_ + kBytesPerRead;
  std::string line;
  while (bytesRead_ < stopAt) {
    if (!nextLine(line)) return false;
    readSample(line, listener);
  }
  return true;
}

void SamplesReader::readSample(const std::string& line, IReaderListener& listener) {
  InputSample sample;
  try {
    sample = parseSample(line);
  } catch (const util::TessaryException& error) {
    log::write(logger_, log::Level::Warning, "line %" PRIu64 " is no sample and is skipped: %s",
               lineNumber_, error.what());
    return;
  }
  noteTimes(sample);
  if (isWanted_) listener.onSample(stream_, sample);
}

void SamplesReader::unselect(std::uint32_t) {
  isWanted_ = false;
}

ReadProgress SamplesReader::progress() const {
  return {.bytesRead = bytesRead_, .bytesTotal = source_->size()};
}

void SamplesReader::noteTimes(const InputSample& sample) {
  if (!sample.times) return;
  const auto [start, stop] = *sample.times;
  startTime_ = std::min(startTime_.value_or(start), start);
  endTime_ = std::max({endTime_.value_or(0), start, stop});
}

// The next line without its line feed; false at the end of the input.
bool SamplesReader::nextLine(std::string& line) {
  line.clear();
  bool isTooLong = false;
  bool isEmpty = true;
  for (;;) {
    if (consumed_ == buffer_.size() && !fillBuffer()) break;
    isEmpty = false;
    const std::size_t lineEnd = buffer_.find('\n', consumed_);
    const std::size_t end = lineEnd == std::string::npos ? buffer_.size() : lineEnd;
    if (line.size() + end - consumed_ > kLongestLine) isTooLong = true;
    if (!isTooLong) line.append(buffer_, consumed_, end - consumed_);
    consumed_ = lineEnd == std::string::npos ? end : end + 1;
    if (lineEnd != std::string::npos) break;
  }
  if (isEmpty) return false;
  ++lineNumber_;
  // What is left of it then fails to parse, and the line is reported like any other.
  if (isTooLong) line = "too long";
  return true;
}

bool SamplesReader::fillBuffer() {
  buffer_.resize(kReadSize);
  const std::size_t size =
      source_->read(reinterpret_cast<std::uint8_t*>(buffer_.data()), buffer_.size());
  buffer_.resize(size);
  consumed_ = 0;
  bytesRead_ += size;
  return size != 0;
}

}  // namespace korr::txsub
