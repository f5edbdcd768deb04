// SPDX-License-Identifier: MIT
#include "bench/dvb_inputs.h"

#include <algorithm>
#include <array>
#include <random>
#include <string>

#include "samples/text_picture.h"
#include "testkit/encoders/dvb_encoder.h"
#include "testkit/encoders/ts_builder.h"

namespace korr::bench {
namespace {

using encoders::Bytes;
using encoders::DvbEncoder;
using encoders::Pes;
using encoders::pesPacket;
using encoders::TsBuilder;
using encoders::TsProgram;

constexpr std::uint16_t kPid = 0x200;

std::string randomLine(std::mt19937& random) {
  constexpr std::array<const char*, 12> kWords{"THE",  "FERRY", "TIDE",    "TURNS", "AT",   "HALF",
                                               "PAST", "NINE,", "HARBOUR", "RAIN",  "HOME", "LATE"};
  constexpr std::size_t kLongest = 20;
  std::string line;
  while (true) {
    const std::string word = kWords[random() % kWords.size()];
    if (line.size() + word.size() + 1 > kLongest) return line;
    line += (line.empty() ? "" : " ") + word;
  }
}

void writeRecording(std::ostream& file) {
  constexpr int kPages = 12'000;
  constexpr int kDifferentPages = 240;
  constexpr std::uint64_t kPageTicks = 2 * 90'000;
  const TsProgram program{.pcrPid = kPid, .streams = {{.pid = kPid, .descriptors = {}}}};
  std::mt19937 random{1};
  std::vector<Bytes> pages;
  for (int i = 0; i < kDifferentPages; ++i)
    pages.push_back(dvbPage(720, 576, randomLine(random), randomLine(random),
                            static_cast<std::uint8_t>(i % 16)));  // as 240 pages are whole rounds

  TsBuilder stream;
  for (int page = 0; page < kPages; ++page) {
    const std::uint64_t pts = 900'000 + static_cast<std::uint64_t>(page) * kPageTicks;
    stream.tables(program);
    stream.pes(kPid,
               pesPacket({.streamId = Pes::kPrivateStream1, .pts = pts},
                         pages[static_cast<std::size_t>(page) % pages.size()]),
               pts - 18'000);
    const Bytes packets = stream.take();
    file.write(reinterpret_cast<const char*>(packets.data()),
               static_cast<std::streamsize>(packets.size()));
  }
}

}  // namespace

Bytes dvbPage(std::uint32_t displayWidth, std::uint32_t displayHeight, std::string_view upper,
              std::string_view lower, std::uint8_t version) {
  const std::uint32_t lineHeight = displayHeight / 15;
  const std::array lines{samples::textPicture(upper, lineHeight),
                         samples::textPicture(lower, lineHeight)};
  std::vector<DvbEncoder::Place> objects;
  for (std::uint16_t i = 0; i < lines.size(); ++i) {
    const std::uint32_t free = displayWidth - std::min(displayWidth, lines[i].width);
    objects.push_back(
        {i, static_cast<std::uint16_t>(free / 2), static_cast<std::uint16_t>(i * lineHeight)});
  }
  DvbEncoder field;
  field.version(version)
      .display(displayWidth, displayHeight)
      .page(DvbEncoder::kAcquisitionPoint, 10,
            {{1, 0, static_cast<std::uint16_t>(displayHeight - 4 * lineHeight)}})
      .region({.id = 1,
               .fill = true,
               .width = static_cast<std::uint16_t>(displayWidth),
               .height = static_cast<std::uint16_t>(2 * lineHeight),
               .fillCode = samples::kNothing,
               .objects = objects})
      .clut(0, samples::textClut(235, 128, 128));
  for (std::uint16_t i = 0; i < lines.size(); ++i) field.pictureObject(i, 4, lines[i]);
  return field.end().bytes();
}

std::vector<Input> dvbInputs() {
  return {{"dvb.ts", writeRecording}};
}

}  // namespace korr::bench
