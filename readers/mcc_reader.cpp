// SPDX-License-Identifier: MIT
#include "readers/mcc_reader.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "readers/mcc_packet.h"

namespace korr::txsub {
namespace {

constexpr std::size_t kLongestLine = 8 * 1024;  // a packet takes 512 digits
constexpr std::size_t kTimeCode = std::string_view("00:00:00:00").size();

std::string_view withoutBlanksBefore(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  return text;
}

}  // namespace

MccReader::MccReader(std::unique_ptr<IByteSource> source, const ReaderOptions& options)
    : CaptionLinesReader(std::move(source), options,
                         {.name = "MCC", .header = kHeader, .longestLine = kLongestLine}) {
}

void MccReader::readLine(std::string_view line, IReaderListener& listener) {
  constexpr std::string_view kRate = "Time Code Rate=";
  if (line.starts_with(kRate)) return readRate(withoutBlanksBefore(line.substr(kRate.size())));
  const bool isOther = line[0] < '0' || line[0] > '9';  // "// ...", "UUID=...", "Creation Date=..."
  if (!isOther) readPacket(line, listener);
}

// "24", "25", "30", "30DF", "50", "60" or "60DF". Whether 24, 30 and 60 are those of the clock or
// a thousandth slower only the first packet says; else they are slower, as television has them.
void MccReader::readRate(std::string_view value) {
  std::uint32_t base = 0;
  const auto [end, error] = std::from_chars(value.begin(), value.end(), base);
  const std::string_view drop(end, static_cast<std::size_t>(value.end() - end));
  if (hasStarted()) return leaveOut(value, "is a time code rate amid captions");
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
  if (hasStarted() || rate.base != rate_.base) return;
  rate_.numerator = rate.numerator;
  rate_.denominator = rate.denominator;
}

void MccReader::readPacket(std::string_view line, IReaderListener& listener) {
  const std::string_view timeCode = line.substr(0, kTimeCode);
  const auto frame = util::frameOfTimeCode(timeCode, rate_);
  if (!frame) return leaveOut(timeCode, "is no time code HH:MM:SS:FF of the file's rate");
  // Version 2 may say a field or a line between the code and the data.
  const auto tab = line.find('\t', kTimeCode);
  const std::string_view data = withoutBlanksBefore(
      line.substr(tab == line.npos ? std::min(kTimeCode + 1, line.size()) : tab));
  const auto bytes = expandMcc(data);
  if (!bytes) return leaveOut(data, "is no ancillary data");
  const auto captions = readAncillaryPacket(*bytes);
  if (!captions) return leaveOut(data, "is no whole caption distribution packet");
  if (captions->rate) takeRate(*captions->rate);

  if (!hasStarted()) startAt(util::frameOfTimeCode(wholeHour(timeCode), rate_));
  if (*frame + 1 < nextFrame()) return leaveOut(timeCode, "lies before the line before");
  send(*frame, captions->triplets, listener);
}

MediaTime MccReader::timeOfFrame(std::uint64_t frame) const {
  return frame * encoding::subtitling::kSecond * rate_.denominator / rate_.numerator;
}

}  // namespace korr::txsub
