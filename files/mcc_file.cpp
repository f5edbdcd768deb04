// SPDX-License-Identifier: MIT
#include "files/mcc_file.h"

#include <algorithm>

#include "readers/mcc_packet.h"

namespace korr::txsub {
namespace {

using encoding::subtitling::kSecond;
using encoding::subtitling::MediaTime;

constexpr std::size_t kHeldPictures = 300;
constexpr std::size_t kMostTripletBytes = 31 * 3;  // cc_count has five bits

// The owners of the format ask that all of this text is in every file.
constexpr const char* kDescription =
    "///////////////////////////////////////////////////////////////////////////////////\r\n"
    "// Computer Prompting and Captioning Company\r\n"
    "// Ancillary Data Packet Transfer File\r\n"
    "//\r\n"
    "// Permission to generate this format is granted provided that\r\n"
    "//   1. This ANC Transfer file format is used on an as-is basis and no warranty is given, and"
    "\r\n"
    "//   2. This entire descriptive information text is included in a generated .mcc file.\r\n"
    "//\r\n"
    "// General file format:\r\n"
    "//   HH:MM:SS:FF(tab)[Hexadecimal ANC data in groups of 2 characters]\r\n"
    "//     Hexadecimal data starts with the Ancillary Data Packet DID (Data ID defined in S291M)"
    "\r\n"
    "//       and concludes with the Check Sum following the User Data Words.\r\n"
    "//     Each time code line must contain at most one complete ancillary data packet.\r\n"
    "//     To transfer additional ANC Data successive lines may contain identical time code.\r\n"
    "//     Time Code Rate=[24, 25, 30, 30DF, 50, 60, 60DF]\r\n"
    "//\r\n"
    "//   ANC data bytes may be represented by one ASCII character according to the following "
    "schema:\r\n"
    "//     G  FAh 00h 00h\r\n"
    "//     H  2 x (FAh 00h 00h)\r\n"
    "//     I  3 x (FAh 00h 00h)\r\n"
    "//     J  4 x (FAh 00h 00h)\r\n"
    "//     K  5 x (FAh 00h 00h)\r\n"
    "//     L  6 x (FAh 00h 00h)\r\n"
    "//     M  7 x (FAh 00h 00h)\r\n"
    "//     N  8 x (FAh 00h 00h)\r\n"
    "//     O  9 x (FAh 00h 00h)\r\n"
    "//     P  FBh 80h 80h\r\n"
    "//     Q  FCh 80h 80h\r\n"
    "//     R  FDh 80h 80h\r\n"
    "//     S  96h 69h\r\n"
    "//     T  61h 01h\r\n"
    "//     U  E1h 00h 00h 00h\r\n"
    "//     Z  00h\r\n"
    "//\r\n"
    "///////////////////////////////////////////////////////////////////////////////////\r\n";

}  // namespace

MccFile::MccFile(const CaptionFileRequest& request)
    : file_(request.path), dropFrame_(request.dropFrame) {
}

void MccFile::write(std::span<const std::uint8_t> triplets, MediaTime time) {
  if (rate_) return writeLines(triplets, time);
  held_.emplace_back(time, std::vector(triplets.begin(), triplets.end()));
  if (held_.size() == kHeldPictures) begin();
}

void MccFile::begin() {
  std::vector<MediaTime> times;
  for (const auto& picture : held_) times.push_back(picture.first);
  rate_ = frameRateOf(times, dropFrame_);
  // Version 1 has no drop-frame codes at 59.94.
  const bool isVersion2 = rate_->dropFrame && rate_->base == 60;
  file_.write(std::string("File Format=MacCaption_MCC V") + (isVersion2 ? "2.0" : "1.0") +
              "\r\n\r\n" + kDescription + "\r\n");
  file_.write("Creation Program=Tessary Subtitle Converter\r\n");
  file_.write("Time Code Rate=" + std::to_string(rate_->base) + (rate_->dropFrame ? "DF" : "") +
              "\r\n\r\n");
  for (const auto& [time, triplets] : held_) writeLines(triplets, time);
  held_.clear();
}

// More triplets than a packet holds go on in another line of the same time code.
void MccFile::writeLines(std::span<const std::uint8_t> triplets, MediaTime time) {
  const std::uint64_t ticks = kSecond * rate_->denominator;
  const std::uint64_t frame = (time * rate_->numerator + ticks / 2) / ticks;
  while (!triplets.empty()) {
    const auto part = triplets.first(std::min(triplets.size(), kMostTripletBytes));
    triplets = triplets.subspan(part.size());
    file_.write(util::timeCodeOfFrame(frame, *rate_) + '\t' +
                compressMcc(ancillaryPacket(part, *rate_, sequence_++)) + "\r\n");
  }
}

void MccFile::finish() {
  if (!rate_) begin();
  file_.commit();
}

}  // namespace korr::txsub
