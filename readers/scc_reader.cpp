// SPDX-License-Identifier: MIT
#include "readers/scc_reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cinttypes>
#include <span>
#include <utility>

#include "readers/caption_sample.h"
#include "readers/video/caption_user_data.h"
#include "util/time_code.h"

namespace korr::txsub {
namespace {

constexpr std::size_t kLongestLine = 64 * 1024;  // over half an hour of pairs
constexpr std::uint8_t kField1 = 0xFC;           // marker bits, cc_valid, cc_type 0
constexpr std::string_view kBlanks = " \t\r";

constexpr MediaTime timeOfFrame(std::uint64_t frame) {
  return frame * encoding::subtitling::kSecond * 1001 / 30000;
}

/// Takes the first word off `line`; empty at its end.
std::string_view takeWord(std::string_view& line) {
  line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
  const std::string_view word = line.substr(0, line.find_first_of(kBlanks));
  line.remove_prefix(word.size());
  return word;
}

/// A number of exactly `digits` digits. Nothing when it is none.
std::optional<unsigned> number(std::string_view digits, int base) {
  unsigned value = 0;
  const auto [end, error] = std::from_chars(digits.begin(), digits.end(), value, base);
  if (error != std::errc{} || end != digits.end()) return {};
  return value;
}

std::optional<std::array<std::uint8_t, 2>> bytePair(std::string_view word) {
  if (word.size() != 4) return {};
  const auto value = number(word, 16);
  if (!value) return {};
  return std::array{static_cast<std::uint8_t>(*value >> 8), static_cast<std::uint8_t>(*value)};
}

/// The time code of the hour that `timeCode` lies in.
std::string wholeHour(std::string_view timeCode) {
  std::string hour(timeCode);
  std::replace_if(
      hour.begin() + 2, hour.end(), [](char c) { return c >= '0' && c <= '9'; }, '0');
  return hour;
}

}  // namespace

std::optional<std::uint64_t> frameOfTimeCode(std::string_view timeCode) {
  constexpr std::size_t kBeforeFrames = 8;
  const bool dropFrame = timeCode.size() > kBeforeFrames && timeCode[kBeforeFrames] == ';';
  return util::frameOfTimeCode(timeCode, {.dropFrame = dropFrame});
}

SccReader::SccReader(std::unique_ptr<IByteSource> source, const ReaderOptions& options)
    : lines_(std::move(source), kLongestLine, options.logger), logger_(options.logger) {
  stream_.id = stream_.pid = 1;
  stream_.type = SubtitleInputType::ClosedCaption;
}

bool SccReader::read(IReaderListener& listener) {
  if (!std::exchange(isAnnounced_, true)) isWanted_ = listener.onStream(stream_);
  const bool isMore = lines_.fill();
  while (const auto line = lines_.take()) readLine(*line, listener);
  if (!isMore && !isHeaderSeen_) throw util::TessaryException("it is no SCC file: it is empty");
  return isMore;
}

void SccReader::readLine(const LineReader::Line& line, IReaderListener& listener) {
  lineNumber_ = line.number;
  if (line.text.find_first_not_of(kBlanks) == line.text.npos && !line.isTooLong) return;
  if (!isHeaderSeen_) return readHeader(line.text);
  if (!line.isTooLong) return readPairs(line.text, listener);
  log::write(logger_, log::Level::Warning,
             "line %" PRIu64 ": longer than %zu bytes; the line is left out", lineNumber_,
             kLongestLine);
}

void SccReader::readHeader(std::string_view line) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (line.starts_with(kByteOrderMark)) line.remove_prefix(kByteOrderMark.size());
  if (!line.starts_with(kHeader)) {
    throw util::TessaryException("it is no SCC file: it does not begin with \"" +
                                 std::string(kHeader) + "\"");
  }
  isHeaderSeen_ = true;
}

void SccReader::readPairs(std::string_view line, IReaderListener& listener) {
  const std::string_view timeCode = takeWord(line);
  const auto frame = frameOfTimeCode(timeCode);
  if (!frame) return leaveOut(timeCode, "is no time code HH:MM:SS:FF or HH:MM:SS;FF");

  triplets_.clear();
  for (auto word = takeWord(line); !word.empty(); word = takeWord(line)) {
    const auto pair = bytePair(word);
    if (!pair) return leaveOut(word, "is no pair of hexadecimal bytes");
    triplets_.insert(triplets_.end(), {kField1, pair->front(), pair->back()});
  }
  if (!startFrame_) startFrame_ = frameOfTimeCode(wholeHour(timeCode));
  sendLine(*frame, listener);
}

void SccReader::sendLine(std::uint64_t frame, IReaderListener& listener) {
  if (frame < lineFrame_) {
    log::write(logger_, log::Level::Warning,
               "line %" PRIu64
               ": its time code lies before that of the line before; its captions "
               "follow at once",
               lineNumber_);
  }
  lineFrame_ = frame;
  nextFrame_ = std::max(nextFrame_, frame);

  const auto triplets = std::span<const std::uint8_t>(triplets_);
  for (std::size_t at = 0; at < triplets.size(); at += kTripletBytes, ++nextFrame_) {
    if (!isWanted_) continue;
    listener.onSample(stream_, captionSample(triplets.subspan(at, kTripletBytes),
                                             timeOfFrame(nextFrame_), timeOfFrame(nextFrame_ + 1)));
  }
}

void SccReader::leaveOut(std::string_view word, const char* why) {
  constexpr std::size_t kShown = 40;
  const std::string shown(word.substr(0, kShown));
  log::write(logger_, log::Level::Warning, "line %" PRIu64 ": \"%s\" %s; the line is left out",
             lineNumber_, shown.c_str(), why);
}

void SccReader::unselect(std::uint32_t streamId) {
  if (streamId == stream_.id) isWanted_ = false;
}

std::optional<MediaTime> SccReader::startTime(std::uint32_t) const {
  if (!startFrame_) return {};
  return timeOfFrame(*startFrame_);
}

std::optional<MediaTime> SccReader::endTime(std::uint32_t) const {
  if (!startFrame_) return {};
  return timeOfFrame(nextFrame_);
}

}  // namespace korr::txsub
