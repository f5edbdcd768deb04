// SPDX-License-Identifier: MIT

// Any bytes as teletext, by the filter's rules and by a receiver's: as PES data fields, or as a
// script for the encoder, so that codes hold and the damage lies deeper. Whatever is shown is a
// page: rows and runs in order, in 40 columns.
#include <algorithm>
#include <cstdlib>
#include <span>
#include <vector>

#include "teletext/teletext_descriptor.h"
#include "teletext/teletext_display_decoder.h"
#include "teletext/teletext_parser.h"
#include "testkit/encoders/teletext_encoder.h"

namespace {

using namespace korr::encoding::subtitling;
using namespace korr::encoding::subtitling::teletext::lib_teletext;
using namespace korr::encoders;

constexpr std::uint32_t kPage = 0x888;

/// The fuzzer's bytes, zeros behind their end.
class Script {
 public:
  explicit Script(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  bool isOver() const { return bytes_.empty(); }
  std::uint8_t next() {
    if (isOver()) return 0;
    const std::uint8_t byte = bytes_.front();
    bytes_ = bytes_.subspan(1);
    return byte;
  }
  std::vector<std::uint8_t> take(std::size_t size) {
    const auto taken = bytes_.first(std::min(size, bytes_.size()));
    bytes_ = bytes_.subspan(taken.size());
    return {taken.begin(), taken.end()};
  }

 private:
  std::span<const std::uint8_t> bytes_;
};

TeletextPacket header(Script& script) {
  const std::uint8_t flags = script.next();
  const std::uint8_t more = script.next();
  return headerPacket({.page = flags & 1 ? kPage : 0x700u + script.next(),
                       .erasePage = (more & 1) == 0,
                       .subtitle = (flags & 2) == 0,
                       .suppressHeader = (flags & 4) != 0,
                       .nationalOption = std::uint32_t{flags} >> 5,
                       .newsflash = (more & 2) != 0,
                       .inhibitDisplay = (more & 4) != 0,
                       .magazineSerial = (more & 8) != 0,
                       .subcode = std::uint32_t{more} >> 5,
                       .text = "\v\vheader\n\n"});
}

TeletextPacket row(Script& script) {
  const std::uint32_t number = script.next() % 32;
  std::string codes;
  for (const std::uint8_t code : script.take(40)) codes += static_cast<char>(code & 0x7F);
  return rowPacket(kPage, number, codes);
}

TeletextPacket enhancement(Script& script) {
  const std::uint32_t designation = script.next() % 16;
  std::vector<TeletextTriplet> triplets(13);
  for (auto& triplet : triplets) {
    triplet = {script.next() % 64u, script.next() % 32u, script.next() % 128u};
  }
  return enhancementPacket(kPage, designation, triplets);
}

TeletextPacket designation(Script& script) {
  const std::uint32_t sets = script.next() * 256u + script.next();
  return designationPacket(kPage, 28 + sets % 2, sets >> 1 & 0x7F, sets >> 8 & 0x7F);
}

TeletextPacket rawPacket(Script& script) {
  TeletextPacket packet{};
  std::ranges::copy(script.take(packet.size()), packet.begin());
  return packet;
}

std::vector<std::uint8_t> encodedField(Script& script) {
  constexpr std::size_t kMostPackets = 15;
  std::vector<TeletextPacket> packets;
  while (!script.isOver() && packets.size() < kMostPackets) {
    const std::uint8_t kind = script.next() % 8;
    if (kind == 7) break;
    packets.push_back(kind == 0   ? header(script)
                      : kind == 1 ? enhancement(script)
                      : kind == 2 ? rawPacket(script)
                      : kind == 3 ? designation(script)
                                  : row(script));
  }
  auto field = teletextDataField(packets);
  for (std::uint8_t errors = script.next() % 4; errors > 0; --errors) {
    const std::size_t place = script.next() * 256u + script.next();
    field[place % field.size()] ^= static_cast<std::uint8_t>(1 << script.next() % 8);
  }
  return field;
}

void require(bool holds) {
  if (!holds) std::abort();
}

bool hasCoveredCells(const TeletextText::Run& run) {
  return std::ranges::any_of(run.glyphs, [](const auto& glyph) { return glyph.view().empty(); });
}

void checkPage(const TeletextText& text, bool isReceiver) {
  std::int32_t lastRow = -1;
  for (const auto& shownRow : text.rows) {
    require(shownRow.number > lastRow && shownRow.number <= 24);
    lastRow = shownRow.number;
    std::size_t end = 0;
    for (const auto& run : shownRow.runs) {
      require(!run.glyphs.empty() && run.column >= end);
      end = run.column + run.glyphs.size();
      require(end <= 40);
      require(isReceiver || !hasCoveredCells(run));
    }
  }
}

void feed(TeletextParser& parser, const std::vector<std::uint8_t>& field, MediaTime time) {
  parser.parse(field.data(), static_cast<std::int64_t>(field.size()), time, true);
  if (!parser.hasChanged()) return;
  const auto subtitle = parser.currentSubtitle(time);
  checkPage(*subtitle.teletextText(), false);
  require(!parser.hasChanged() && parser.currentSubtitle(time) == subtitle);
}

/// Whatever is told differs from what was, in the order of time.
class Screen final : public IDisplayListener {
 public:
  void onDisplay(MediaTime time, Subtitle subtitle) override {
    require(time >= time_ && !(subtitle == subtitle_));
    checkPage(*subtitle.teletextText(), true);
    time_ = time;
    subtitle_ = std::move(subtitle);
  }

 private:
  MediaTime time_ = 0;
  Subtitle subtitle_{SubtitleKind::TeletextText};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  readTeletextPages({data, size});
  Script script({data, size});
  const std::uint8_t choices = script.next();
  TeletextParser parser(kPage, choices % 16u);
  Screen screen;
  TeletextDisplayDecoder decoder(kPage, choices % 16u, (choices & 32) != 0, screen, nullptr);
  MediaTime time = 1;
  for (; !script.isOver(); ++time) {
    const auto field = choices & 16 ? script.take(1 + script.next() * 4u) : encodedField(script);
    feed(parser, field, time);
    decoder.decode(field, time);
  }
  decoder.finish(time);
  return 0;
}
