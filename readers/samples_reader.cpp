// SPDX-License-Identifier: MIT
#include "readers/samples_reader.h"

#include <algorithm>
#include <cinttypes>
#include <string>

#include "readers/record_format.h"
#include "util/exception.h"

namespace korr::txsub {

namespace {

// Far above any sample; a file without line ends must not be read into memory whole.
constexpr std::size_t kLongestLine = 16 * 1024 * 1024;

std::string_view textOf(const LineReader::Line& line) {
  if (line.isTooLong) {
    throw util::TessaryException("longer than " + std::to_string(kLongestLine) + " bytes");
  }
  return line.text;
}

}  // namespace

SamplesReader::SamplesReader(std::unique_ptr<IByteSource> source, const ReaderOptions& options)
    : lines_(std::move(source), kLongestLine, options.logger), logger_(options.logger) {
  readHeader();
}

void SamplesReader::readHeader() {
  auto line = lines_.take();
  for (bool isMore = true; !line && isMore; line = lines_.take()) isMore = lines_.fill();
  if (!line) throw util::TessaryException("no header line: the input is empty");
  try {
    auto header = parseHeader(textOf(*line));
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
  const bool isMore = lines_.fill();
  while (const auto line = lines_.take()) readSample(*line, listener);
  return isMore;
}

void SamplesReader::readSample(const LineReader::Line& line, IReaderListener& listener) {
  InputSample sample;
  try {
    sample = parseSample(textOf(line));
  } catch (const util::TessaryException& error) {
    log::write(logger_, log::Level::Warning, "line %" PRIu64 " is no sample and is skipped: %s",
               line.number, error.what());
    return;
  }
  noteTimes(sample);
  if (isWanted_) listener.onSample(stream_, sample);
}

void SamplesReader::unselect(std::uint32_t) {
  isWanted_ = false;
}

void SamplesReader::noteTimes(const InputSample& sample) {
  if (!sample.times) return;
  const auto [start, stop] = *sample.times;
  startTime_ = std::min(startTime_.value_or(start), start);
  endTime_ = std::max({endTime_.value_or(0), start, stop});
}

}  // namespace korr::txsub
