// SPDX-License-Identifier: MIT
#include "readers/mcc_reader.h"

#include <algorithm>
#include <charconv>
#include <cinttypes>
#include <string>
#include <utility>

#include "readers/caption_sample.h"
#include "readers/mcc_packet.h"

namespace korr::txsub {
namespace {

constexpr std::size_t kLongestLine = 8 * 1024;  // a packet takes 512 digits
constexpr std::size_t kTimeCode = std::string_view("00:00:00:00").size();
constexpr std::string_view kBlanks = " \t\r";

std::string_view trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  text.remove_suffix(text.size() - (text.find_last_not_of(kBlanks) + 1));
  return text;
}

std::string_view withoutMark(std::string_view line) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (line.starts_with(kByteOrderMark)) line.remove_prefix(kByteOrderMark.size());
  return line;
}

}  // namespace

MccReader::MccReader(std::unique_ptr<IByteSource> source, const ReaderOptions& options)
    : lines_(std::move(source), kLongestLine, options.logger), logger_(options.logger) {
  stream_.id = stream_.pid = 1;
  stream_.type = SubtitleInputType::ClosedCaption;
}

bool MccReader::read(IReaderListener& listener) {
  if (!std::exchange(isAnnounced_, true)) isWanted_ = listener.onStream(stream_);
  const bool isMore = lines_.fill();
  while (const auto line = lines_.take()) readLine(*line, listener);
  if (!isMore && !isHeaderSeen_) throw util::TessaryException("it is no MCC file: it is empty");
  return isMore;
}

void MccReader::readLine(const LineReader::Line& line, IReaderListener& listener) {
  constexpr std::string_view kRate = "Time Code Rate=";
  lineNumber_ = line.number;
  const std::string_view text = trimmed(withoutMark(line.text));
  if (text.empty() || text.starts_with("//")) return;
  if (!isHeaderSeen_) {
    isHeaderSeen_ = text.starts_with(kHeader);
    if (isHeaderSeen_) return;
    throw util::TessaryException("it is no MCC file: it does not begin with \"" +
                                 std::string(kHeader) + "\"");
  }
  if (line.isTooLong) return leaveOut(text.substr(0, kTimeCode), "begins a line too long");
  if (text.starts_with(kRate)) return readRate(trimmed(text.substr(kRate.size())));
  const bool isProperty = text[0] < '0' || text[0] > '9';  // "UUID=...", "Creation Date=..."
  if (!isProperty) readPacket(text, listener);
}

// "24", "25", "30", "30DF", "50", "60" or "60DF". Whether 24, 30 and 60 are those of the clock or
// a thousandth slower only the first packet says; else they are slower, as television has them.
void MccReader::readRate(std::string_view value) {
  std::uint32_t base = 0;
  const auto [end, error] = std::from_chars(value.begin(), value.end(), base);
  const std::string_view drop(end, static_cast<std::size_t>(value.end() - end));
  if (startFrame_) return leaveOut(value, "is a time code rate amid captions");
  const bool isRate = base == 24 || base == 25 || base == 30 || base == 50 || base == 60;
  if (error != std::errc{} || !isRate || !(drop.empty() || drop == "DF" || drop == "df")) {
    return leaveOut(value, "is no time code rate");
  }
  const bool isExact = base % 25 == 0;
  rate_ = {.numerator = isExact ? base : base * 1000,
           .denominator = isExact ? 1u : 1001u,
           .base = base,
           .dropFrame = !drop.empty() && base % 30 == 0};
}

void MccReader::takeRate(const util::TimeCodeRate& rate) {
  if (startFrame_ || rate.base != rate_.base) return;
  rate_.numerator = rate.numerator;
  rate_.denominator = rate.denominator;
}

void MccReader::readPacket(std::string_view line, IReaderListener& listener) {
  const std::string_view timeCode = line.substr(0, kTimeCode);
  const auto frame = util::frameOfTimeCode(timeCode, rate_);
  if (!frame) return leaveOut(timeCode, "is no time code HH:MM:SS:FF of the file's rate");
  // Version 2 may say a field or a line between the code and the data.
  const auto tab = line.find('\t', kTimeCode);
  const std::string_view data =
      trimmed(line.substr(tab == line.npos ? std::min(kTimeCode + 1, line.size()) : tab));
  const auto bytes = expandMcc(data);
  if (!bytes) return leaveOut(data, "is no ancillary data");
  const auto captions = readAncillaryPacket(*bytes);
  if (!captions) return leaveOut(data, "is no whole caption distribution packet");
  if (captions->rate) takeRate(*captions->rate);

  if (!startFrame_) {
    std::string hour(timeCode);
    hour.replace(3, 2, "00").replace(6, 2, "00").replace(9, 2, "00");
    startFrame_ = util::frameOfTimeCode(hour, rate_);
  }
  if (*frame + 1 < nextFrame_) {
    return leaveOut(timeCode, "lies before the line before");
  }
  nextFrame_ = std::max(nextFrame_, *frame + 1);
  if (!isWanted_ || captions->triplets.empty()) return;
  listener.onSample(
      stream_, captionSample(captions->triplets, timeOfFrame(*frame), timeOfFrame(*frame + 1)));
}

void MccReader::leaveOut(std::string_view word, const char* why) {
  constexpr std::size_t kShown = 40;
  const std::string shown(word.substr(0, kShown));
  log::write(logger_, log::Level::Warning, "line %" PRIu64 ": \"%s\" %s; the line is left out",
             lineNumber_, shown.c_str(), why);
}

MediaTime MccReader::timeOfFrame(std::uint64_t frame) const {
  return frame * encoding::subtitling::kSecond * rate_.denominator / rate_.numerator;
}

void MccReader::unselect(std::uint32_t streamId) {
  if (streamId == stream_.id) isWanted_ = false;
}

std::optional<MediaTime> MccReader::startTime(std::uint32_t) const {
  if (!startFrame_) return {};
  return timeOfFrame(*startFrame_);
}

std::optional<MediaTime> MccReader::endTime(std::uint32_t) const {
  if (!startFrame_) return {};
  return timeOfFrame(nextFrame_);
}

}  // namespace korr::txsub
