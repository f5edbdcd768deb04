// SPDX-License-Identifier: MIT
#include "samples/caption_samples.h"

#include <cstdio>
#include <span>
#include <string_view>

#include "samples/line21.h"
#include "testkit/encoders/caption_builder.h"
#include "testkit/encoders/ts_builder.h"
#include "testkit/encoders/video_builder.h"

namespace korr::samples {
namespace {

using encoders::CaptionBuilder;
using encoders::pesPacket;
using encoders::Picture;
using encoders::TsBuilder;
using encoders::TsProgram;
using encoders::TsStream;
using txsub::VideoCodec;

constexpr std::size_t kFramesPerSecond = 30;
constexpr std::size_t kFrames = 24 * kFramesPerSecond;

// Attributes of preamble address codes and, behind 0x20, of mid-row codes.
constexpr std::uint8_t kGreen = 0x02;
constexpr std::uint8_t kCyan = 0x06;
constexpr std::uint8_t kYellow = 0x0A;
constexpr std::uint8_t kItalics = 0x0E;
constexpr std::uint8_t indent(unsigned columns) {
  return static_cast<std::uint8_t>(0x10 | columns / 4 << 1);
}

struct Row {
  int row = 15;
  std::uint8_t attribute = indent(0);
  std::string_view text;
};

CaptionBuilder popOn(CaptionBuilder caption, std::initializer_list<Row> rows) {
  caption.resumeCaptionLoading().twice().eraseNonDisplayedMemory().twice();
  for (const Row& row : rows) caption.preamble(row.row, row.attribute).twice().text(row.text);
  return caption.endOfCaption().twice();
}

CaptionBuilder rollUp(CaptionBuilder caption, std::string_view text) {
  caption.rollUp(3).twice().carriageReturn().twice();
  return caption.preamble(15).twice().text(text);
}

/// Roll-up in field 2, whose codes are sent once: not every decoder takes a second one for the
/// repetition that it is.
CaptionBuilder rollUpOnce(CaptionBuilder caption, std::string_view text) {
  return caption.rollUp(2).carriageReturn().preamble(13).text(text);
}

CaptionBuilder erase(CaptionBuilder caption) {
  return caption.eraseDisplayedMemory().twice().eraseNonDisplayedMemory().twice();
}

/// Captions of field 1: CC1, and between them CC2.
void addFieldOne(Line21& line, bool withSpanish) {
  const CaptionBuilder english(1, 1);
  const CaptionBuilder spanish(1, 2);
  const auto send = [&line](std::size_t seconds, CaptionBuilder caption) {
    line.at(seconds * kFramesPerSecond, caption);
  };
  send(0, popOn(english, {{14, indent(4), "Good evening. This is"},
                          {15, indent(4), "the news from the harbour."}}));
  if (withSpanish) send(2, popOn(spanish, {{15, indent(4), "Las noticias del puerto."}}));
  send(4, popOn(english, {{1, kItalics, "[a ship's horn, far away]"}}));
  send(6, popOn(english, {{13, kYellow, "ANNA: Is the ferry late?"},
                          {15, kCyan, "CAPTAIN: By an hour, no more."}}));
  if (withSpanish) send(8, popOn(spanish, {{15, indent(4), "El barco llega tarde."}}));

  CaptionBuilder song(1, 1);
  song.resumeCaptionLoading().twice().eraseNonDisplayedMemory().twice();
  song.preamble(14, kGreen).twice().control(0x11, 0x37).twice().text(" Roll, you waves, ");
  song.control(0x11, 0x20 | kItalics).twice().text("roll on").control(0x11, 0x37).twice();
  song.endOfCaption().twice();
  send(10, song);
  send(12, erase(english));

  send(13, rollUp(english, "The wind will turn west"));
  send(14, rollUp(english, "in the night, and by"));
  send(16, rollUp(english, "morning the sea is calm."));
  send(18, rollUp(english, ""));
  send(19, erase(english));
  if (withSpanish) send(19, erase(spanish));

  CaptionBuilder painted(1, 1);
  painted.resumeDirectCaptioning().twice().preamble(12, indent(8)).twice().text("Good night.");
  send(20, painted);
  // Once more as a caption that late-comers see whole.
  send(21, popOn(english, {{12, indent(8), "Good night."}}));
  send(23, erase(english));
}

/// Captions of field 2: CC3.
void addFieldTwo(Line21& line) {
  const CaptionBuilder french(2, 1);
  const auto send = [&line](std::size_t seconds, CaptionBuilder caption) {
    line.at(seconds * kFramesPerSecond, caption);
  };
  send(1, rollUpOnce(french, "Bonsoir du port."));
  send(5, rollUpOnce(french, "Le bateau a du retard."));
  send(10, rollUpOnce(french, "La mer sera calme demain."));
  send(20, rollUpOnce(french, "Bonne nuit."));
  send(22, rollUpOnce(french, ""));
  send(23, CaptionBuilder(2, 1).eraseDisplayedMemory());
}

TsProgram program(VideoCodec codec) {
  constexpr std::uint16_t kVideoPid = 0x100;
  const std::uint8_t type = codec == VideoCodec::H264 ? TsStream::kH264 : TsStream::kMpeg2Video;
  return {.pcrPid = kVideoPid, .streams = {{.pid = kVideoPid, .type = type}}};
}

/// The drop-frame time code of a frame, an hour in.
std::string timeCode(std::size_t frame) {
  // A sample of less than a minute meets no dropped number after the hour.
  static_assert(kFrames < 60 * kFramesPerSecond);
  char text[32];
  std::snprintf(text, sizeof text, "01:00:%02zu;%02zu", frame / kFramesPerSecond,
                frame % kFramesPerSecond);
  return text;
}

}  // namespace

Bytes captionTransportStream(VideoCodec codec) {
  constexpr std::uint64_t kFrameTicks = 3003;
  constexpr std::uint64_t kFirstPts = 10 * 90'000;
  constexpr std::uint64_t kDelay = 18'000;  // from PCR to PTS
  constexpr std::size_t kGroup = 15;        // pictures

  Line21 line;
  addFieldOne(line, true);
  addFieldTwo(line);
  const TsProgram tables = program(codec);
  TsBuilder stream;
  for (std::size_t frame = 0; frame < kFrames; ++frame) {
    const bool beginsGroup = frame % kGroup == 0;
    if (beginsGroup) stream.tables(tables);
    const Bytes picture = encode(Picture{.codec = codec,
                                         .triplets = line.triplets(frame),
                                         .temporalReference = static_cast<int>(frame % kGroup),
                                         .beginsGroup = beginsGroup,
                                         .still = true});
    const std::uint64_t pts = kFirstPts + frame * kFrameTicks;
    const auto pcr = frame % 3 == 0 ? std::optional(pts - kDelay) : std::nullopt;
    stream.pes(tables.pcrPid, pesPacket({.pts = pts, .unbounded = true}, picture), pcr);
  }
  return stream.take();
}

std::string captionScc() {
  Line21 line;
  addFieldOne(line, false);
  std::string text = "Scenarist_SCC V1.0";
  bool sending = false;
  for (std::size_t frame = 0; frame < kFrames; ++frame) {
    const Bytes triplets = line.triplets(frame);
    const bool isNull = triplets[1] == 0x80 && triplets[2] == 0x80;
    if (!isNull && !sending) text += "\n\n" + timeCode(frame) + "\t";
    if (!isNull) {
      char pair[16];
      std::snprintf(pair, sizeof pair, sending ? " %02x%02x" : "%02x%02x", triplets[1],
                    triplets[2]);
      text += pair;
    }
    sending = !isNull;
  }
  return text + "\n";
}

}  // namespace korr::samples
