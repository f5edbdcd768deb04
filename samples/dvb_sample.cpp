// SPDX-License-Identifier: MIT
#include "samples/dvb_sample.h"

#include <algorithm>
#include <functional>
#include <map>
#include <string_view>
#include <utility>

#include "samples/text_picture.h"
#include "testkit/encoders/bit_writer.h"
#include "testkit/encoders/dvb_encoder.h"
#include "testkit/encoders/ts_builder.h"

namespace korr::samples {
namespace {

using encoders::Bytes;
using encoders::DvbEncoder;
using encoders::Pes;
using encoders::pesPacket;
using encoders::TsBuilder;
using encoders::TsProgram;

constexpr std::uint16_t kEnglishPid = 0x200;
constexpr std::uint16_t kFrenchPid = 0x201;
constexpr std::uint64_t kTicks = 90'000;  // a second

// subtitling_descriptor (EN 300 468, 6.2.41) with one service on page 1.
Bytes subtitling(std::string_view language, std::uint8_t type) {
  constexpr std::uint8_t kTag = 0x59;
  constexpr std::uint16_t kPageId = 1;
  encoders::BitWriter bits;
  bits.put(kTag, 8).put(8, 8);
  for (const char letter : language) bits.put(static_cast<std::uint8_t>(letter), 8);
  bits.put(type, 8).put(kPageId, 16).put(kPageId, 16);
  return bits.bytes();
}

/// One line of text on a page.
struct Line {
  std::string_view text;
  std::uint8_t clut = 0;
  std::uint16_t bottom = 0;  ///< its lower edge
};

struct Display {
  std::uint16_t width = 0;
  std::uint16_t lineHeight = 0;
};
constexpr Display kStandard{720, 40};
constexpr Display kHigh{1920, 76};

// A page of centred lines, a region and an object each.
DvbEncoder textPage(DvbEncoder field, const Display& display, std::uint8_t timeOut,
                    const std::vector<Line>& lines) {
  std::vector<IndexedPicture> pictures;
  std::vector<DvbEncoder::Place> places;
  for (std::uint16_t id = 0; id < lines.size(); ++id) {
    pictures.push_back(textPicture(lines[id].text, display.lineHeight));
    const auto x = static_cast<std::uint16_t>((display.width - pictures.back().width) / 2);
    places.push_back({id, x, static_cast<std::uint16_t>(lines[id].bottom - display.lineHeight)});
  }
  field.page(DvbEncoder::kAcquisitionPoint, timeOut, places);
  for (std::uint16_t id = 0; id < lines.size(); ++id) {
    field.region({.id = static_cast<std::uint8_t>(id),
                  .width = static_cast<std::uint16_t>(pictures[id].width),
                  .height = display.lineHeight,
                  .clut = lines[id].clut,
                  .objects = {{id, 0, 0}}});
  }
  field.clut(0, textClut(235, 128, 128)).clut(1, textClut(210, 146, 16));
  field.clut(2, textClut(170, 16, 166));
  for (std::uint16_t id = 0; id < lines.size(); ++id) field.pictureObject(id, 4, pictures[id]);
  return field.end();
}

DvbEncoder clearingPage(DvbEncoder field, std::uint8_t timeOut) {
  return field.page(DvbEncoder::kNormalCase, timeOut, {}).end();
}

// Text in the default 2-bit CLUT (1 white, 2 black, 3 grey) on a filled box.
DvbEncoder boxedPage(DvbEncoder field, std::string_view text) {
  IndexedPicture picture = textPicture(text, 40);
  for (auto& code : picture.codes)
    code = code <= kEdge ? 2 : static_cast<std::uint8_t>(code < 9 ? 3 : 1);
  const auto width = static_cast<std::uint16_t>(picture.width + 32);
  return field
      .page(DvbEncoder::kModeChange, 2, {{1, static_cast<std::uint16_t>((720 - width) / 2), 470}})
      .region({.id = 1,
               .fill = true,
               .width = width,
               .height = 56,
               .depth = 1,
               .clut = 9,
               .fillCode = 2,
               .objects = {{1, 16, 8}}})
      .pictureObject(1, 2, picture)
      .end();
}

// The sun going down in 8-bit colours.
DvbEncoder sunset(DvbEncoder field) {
  constexpr int kRadius = 70;
  constexpr std::uint32_t kWidth = 240;
  constexpr std::uint32_t kHeight = 120;
  IndexedPicture picture{kWidth, kHeight, Bytes(kWidth * kHeight)};
  for (std::uint32_t y = 0; y < kHeight; ++y) {
    for (std::uint32_t x = 0; x < kWidth; ++x) {
      const int right = static_cast<int>(x) - static_cast<int>(kWidth / 2);
      const int up = static_cast<int>(kHeight) - 30 - static_cast<int>(y);
      const bool isSea = up < 0;
      const bool isSun = !isSea && right * right + up * up < kRadius * kRadius;
      const std::uint32_t shade = isSea ? 128 + (y * 3 + x / 8 * 5) % 24
                                        : (isSun ? 192 : 64) + static_cast<std::uint32_t>(up) / 2;
      picture.codes[std::size_t{y} * kWidth + x] = static_cast<std::uint8_t>(shade);
    }
  }
  std::vector<DvbEncoder::ClutEntry> entries;
  const auto ramp = [&](int first, int count, int y, int cr, int cb) {
    for (int i = 0; i < count; ++i) {
      entries.push_back({.id = static_cast<std::uint8_t>(first + i),
                         .tables = 1,
                         .y = static_cast<std::uint8_t>(y + i),
                         .cr = static_cast<std::uint8_t>(cr - i / 2),
                         .cb = static_cast<std::uint8_t>(cb + i / 2)});
    }
  };
  ramp(64, 48, 110, 170, 100);
  ramp(128, 24, 60, 110, 160);
  ramp(192, 40, 140, 190, 50);
  return field.page(DvbEncoder::kModeChange, 10, {{1, 440, 40}})
      .region({.id = 1,
               .width = kWidth,
               .height = kHeight,
               .depth = 3,
               .clut = 3,
               .objects = {{1, 0, 0}}})
      .clut(3, entries)
      .pictureObject(1, 8, picture)
      .end();
}

// The data fields of one PID, a display set each. What a set brings has a new version: receivers
// pass over a page composition whose page_version_number they have (EN 300 743, 7.2.2).
class Fields {
 public:
  explicit Fields(DvbEncoder begin) : begin_(std::move(begin)) {}

  DvbEncoder next() { return DvbEncoder(begin_).version(version_++ % 16); }

 private:
  DvbEncoder begin_;
  std::uint8_t version_ = 0;
};

/// What is sent when, in seconds.
using Schedule = std::map<unsigned, std::vector<std::pair<std::uint16_t, Bytes>>>;

Schedule schedule() {
  Schedule schedule;
  const auto english = [&](unsigned second, const DvbEncoder& field) {
    schedule[second].emplace_back(kEnglishPid, field.bytes());
  };
  Fields fields{DvbEncoder()};
  english(1, textPage(fields.next(), kStandard, 10,
                      {{"THE FERRY IS LATE", 0, 480}, {"BY AN HOUR.", 0, 525}}));
  english(4, clearingPage(fields.next(), 10));
  english(5, textPage(fields.next(), kStandard, 10,
                      {{"- ANY NEWS FROM PORT?", 1, 480}, {"- NOT YET.", 2, 525}}));
  english(8, clearingPage(fields.next(), 10));
  english(9, boxedPage(fields.next(), "THIS ONE ENDS BY ITSELF"));  // after two seconds
  english(13, sunset(fields.next()));
  english(17, textPage(fields.next(), kStandard, 4, {{"GOOD NIGHT.", 0, 525}}));

  const auto french = [&](unsigned second, const DvbEncoder& field) {
    schedule[second].emplace_back(kFrenchPid, field.bytes());
  };
  Fields wide{DvbEncoder().display(1920, 1080, DvbEncoder::Window{0, 1919, 40, 1039})};
  french(2, textPage(wide.next(), kHigh, 10, {{"LE BATEAU A DU RETARD.", 0, 920}}));
  french(6, textPage(wide.next(), kHigh, 10,
                     {{"DES NOUVELLES DU PORT?", 1, 820}, {"PAS ENCORE.", 2, 920}}));
  french(12, clearingPage(wide.next(), 10));
  return schedule;
}

}  // namespace

std::vector<std::uint8_t> dvbTransportStream() {
  constexpr unsigned kSeconds = 24;
  constexpr std::uint64_t kFirstPts = 10 * kTicks;
  constexpr std::uint64_t kDelay = kTicks / 5;  // from PCR to PTS
  constexpr std::uint16_t kPcrPid = 0x1F0;
  constexpr std::uint8_t kNormal = 0x10;
  constexpr std::uint8_t kHardOfHearing = 0x24;  // high definition
  const TsProgram program{
      .pcrPid = kPcrPid,
      .streams = {{.pid = kEnglishPid, .descriptors = subtitling("eng", kNormal)},
                  {.pid = kFrenchPid, .descriptors = subtitling("fra", kHardOfHearing)}}};
  const Schedule pages = schedule();
  TsBuilder stream;
  for (unsigned tenth = 0; tenth <= kSeconds * 10; ++tenth) {
    const std::uint64_t pts = kFirstPts + tenth * kTicks / 10;
    if (tenth % 5 == 0) stream.tables(program);
    stream.pcr(kPcrPid, pts - kDelay);
    const auto now = pages.find(tenth / 10);
    if (tenth % 10 != 0 || now == pages.end()) continue;
    for (const auto& [pid, field] : now->second)
      stream.pes(pid, pesPacket({.streamId = Pes::kPrivateStream1, .pts = pts}, field));
  }
  return stream.take();
}

}  // namespace korr::samples
