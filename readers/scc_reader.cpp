// SPDX-License-Identifier: MIT
#include "readers/scc_reader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <span>
#include <utility>

#include "readers/video/caption_user_data.h"
#include "util/time_code.h"

namespace korr::txsub {
namespace {

constexpr std::size_t kLongestLine = 64 * 1024;  // over half an hour of pairs
constexpr std::uint8_t kValidPair = 0xFC;        // marker bits, cc_valid, cc_type 0: field 1

/// Takes the first word off `line`; empty at its end.
std::string_view takeWord(std::string_view& line) {
  constexpr std::string_view kBlanks = " \t\r";
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

// The field that a pair tells: only miscellaneous control codes are not the same in both
// (CEA-608, 8.4).
std::optional<std::uint8_t> fieldOf(std::uint8_t b1, std::uint8_t b2) {
  constexpr std::uint8_t kWithoutParityAndChannel = 0x77;
  if ((b2 & 0x70) != 0x20) return {};
  switch (b1 & kWithoutParityAndChannel) {
    case 0x14:
      return 1;
    case 0x15:
      return 2;
    default:
      return {};
  }
}

}  // namespace

std::optional<std::uint64_t> frameOfTimeCode(std::string_view timeCode) {
  constexpr std::size_t kBeforeFrames = 8;
  const bool dropFrame = timeCode.size() > kBeforeFrames && timeCode[kBeforeFrames] == ';';
  return util::frameOfTimeCode(timeCode, {.dropFrame = dropFrame});
}

SccReader::SccReader(std::unique_ptr<IByteSource> source, const ReaderOptions& options)
    : CaptionLinesReader(std::move(source), options,
                         {.name = "SCC", .header = kHeader, .longestLine = kLongestLine}) {
}

MediaTime SccReader::timeOfFrame(std::uint64_t frame) const {
  return frame * encoding::subtitling::kSecond * 1001 / 30000;
}

void SccReader::readLine(std::string_view line, IReaderListener& listener) {
  const std::string_view timeCode = takeWord(line);
  const auto frame = frameOfTimeCode(timeCode);
  if (!frame) return leaveOut(timeCode, "is no time code HH:MM:SS:FF or HH:MM:SS;FF");

  triplets_.clear();
  std::optional<std::uint8_t> field;
  for (auto word = takeWord(line); !word.empty(); word = takeWord(line)) {
    const auto pair = bytePair(word);
    if (!pair) return leaveOut(word, "is no pair of hexadecimal bytes");
    if (!field) field = fieldOf(pair->front(), pair->back());
    triplets_.insert(triplets_.end(), {kValidPair, pair->front(), pair->back()});
  }
  field_ = field.value_or(field_);
  for (std::size_t at = 0; at < triplets_.size(); at += kTripletBytes) {
    triplets_[at] = static_cast<std::uint8_t>(kValidPair | (field_ - 1));
  }
  if (!hasStarted()) startAt(frameOfTimeCode(wholeHour(timeCode)));
  sendLine(*frame, listener);
}

void SccReader::sendLine(std::uint64_t frame, IReaderListener& listener) {
  if (frame < lineFrame_) {
    warn("its time code lies before that of the line before; its captions follow at once");
  }
  lineFrame_ = frame;
  frame = std::max(frame, nextFrame());
  const auto triplets = std::span<const std::uint8_t>(triplets_);
  for (std::size_t at = 0; at < triplets.size(); at += kTripletBytes, ++frame) {
    send(frame, triplets.subspan(at, kTripletBytes), listener);
  }
}

}  // namespace korr::txsub
