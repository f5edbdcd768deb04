// SPDX-License-Identifier: MIT
#include "streaming/segment_writers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model/byte_buffer.h"
#include "testkit/cue_builder.h"
#include "tests/streaming/mp4_boxes.h"

namespace korr::txsub {
namespace {

using encoding::subtitling::asText;
using encoding::subtitling::kSecond;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

// From 10 s to 16 s of the reader's time, shortly before the programme's clock wraps.
Segment segment() {
  return {.number = 7,
          .start = 10 * kSecond,
          .stop = 16 * kSecond,
          .startTicks = kStampWrap - 270'001,
          .stopTicks = kStampWrap + 269'999};
}

SegmentCue shown(std::uint64_t fromMs, std::uint64_t toMs, std::string_view words,
                 std::uint32_t id = 1) {
  return {.cue = cue(fromMs, toMs, captions({captionRow(15, 4, words)})), .id = id};
}

TEST(WebVttSegment, MapsItsTimesToTheProgrammesClock) {
  EXPECT_EQ(webVttSegment(segment(), {shown(11'000, 12'500, "<HELLO>")}),
            "WEBVTT\n"
            "X-TIMESTAMP-MAP=MPEGTS:8589664530,LOCAL:26:30:40.717\n\n"
            "26:30:41.718 --> 26:30:43.218 line:84.67% position:20% align:start\n"
            "&lt;HELLO&gt;\n\n");
}

TEST(WebVttSegment, TellsWholeTimesAndIsCompleteInSilence) {
  EXPECT_THAT(webVttSegment(segment(), {shown(8'000, 17'000, "A")}),
              HasSubstr("\n26:30:38.718 --> 26:30:47.718 "));
  Segment wrapped = segment();
  wrapped.startTicks = kStampWrap + 88;
  EXPECT_EQ(webVttSegment(wrapped, {}), "WEBVTT\nX-TIMESTAMP-MAP=MPEGTS:28,LOCAL:26:30:43.718\n\n");
}

TEST(WebVttSegment, DefinesItsColoursAfterTheMap) {
  auto row = captionRow(15, 4, "A");
  row.runs[0].foreground = model::CaptionColour::Yellow;
  const auto text =
      webVttSegment(segment(), {{.cue = cue(11'000, 12'500, captions({row})), .id = 1}});
  EXPECT_THAT(text,
              HasSubstr(",LOCAL:26:30:40.717\n\nSTYLE\n::cue(.yellow) { color: yellow }\n\n26:"));
}

TEST(Mp4Segment, HoldsOneDocumentOfTextCutToItsTime) {
  const auto bytes = mp4Segment(Mp4Codec::StppText, "ger", segment(), {shown(8'000, 11'000, "A")});
  const Mp4Fragment fragment = readFragment(bytes);
  EXPECT_EQ(fragment.sequence, 7U);
  EXPECT_EQ(fragment.decodeTime, kStampWrap - 270'001);
  ASSERT_EQ(fragment.samples.size(), 1U);
  EXPECT_EQ(fragment.samples[0].duration, 540'000U);
  EXPECT_THAT(fragment.samples[0].data, HasSubstr("begin=\"26:30:40.718\" end=\"26:30:41.718\""));
  EXPECT_THAT(fragment.samples[0].data, HasSubstr("xml:lang=\"de\""));
}

TEST(Mp4Segment, HoldsPicturesAsSubsamplesEachOnce) {
  const auto picture = [](std::uint8_t grey) {
    return model::Subtitle(
        display(720, 576, {.x = 100, .y = 500, .width = 40, .height = 20, .grey = grey}));
  };
  const auto bytes = mp4Segment(Mp4Codec::StppImage, "ger", segment(),
                                {{.cue = cue(10'000, 11'000, picture(9)), .id = 1},
                                 {.cue = cue(12'000, 13'000, picture(99)), .id = 2},
                                 {.cue = cue(14'000, 15'000, picture(9)), .id = 3}});
  const Mp4Fragment fragment = readFragment(bytes);
  ASSERT_EQ(fragment.samples.size(), 1U);
  const auto& [duration, data, subsamples] = fragment.samples[0];
  ASSERT_EQ(subsamples.size(), 3U);
  EXPECT_EQ(data.size(), std::size_t{subsamples[0]} + subsamples[1] + subsamples[2]);
  const auto document = data.substr(0, subsamples[0]);
  EXPECT_THAT(document, testing::EndsWith("</tt>\n"));
  EXPECT_THAT(document, HasSubstr("tts:origin=\"100px 500px\" tts:extent=\"40px 20px\""));
  std::vector<char> references;
  const std::string urn = "urn:mpeg:14496-30:subs:";
  for (auto at = document.find(urn); at != document.npos; at = document.find(urn, at + 1)) {
    references.push_back(document[at + urn.size()]);
  }
  EXPECT_THAT(references, ElementsAre('1', '2', '1'));
  for (const std::size_t at : {subsamples[0], subsamples[0] + subsamples[1]}) {
    EXPECT_EQ(data.substr(at, 4), "\x89PNG");
  }
}

TEST(Mp4Segment, FillsTheTimeWithCuesAndWithNothing) {
  const auto bytes = mp4Segment(
      Mp4Codec::Wvtt, "", segment(),
      {shown(9'000, 11'000, "A", 5), shown(11'000, 12'000, "B", 6), shown(14'000, 20'000, "C", 7)});
  const Mp4Fragment fragment = readFragment(bytes);
  std::vector<std::string> samples;
  for (const auto& sample : fragment.samples) {
    samples.push_back(std::to_string(sample.duration) + ' ' + sample.data.substr(4, 4));
  }
  EXPECT_THAT(samples, ElementsAre("90000 vttc", "90000 vttc", "180000 vtte", "180000 vttc"));
  EXPECT_THAT(fragment.samples[1].data, HasSubstr("paylB"));
  EXPECT_THAT(fragment.samples[1].data, HasSubstr("sttgline:84.67% position:20% align:start"));

  const Mp4Fragment silence = readFragment(mp4Segment(Mp4Codec::Wvtt, "", segment(), {}));
  ASSERT_EQ(silence.samples.size(), 1U);
  EXPECT_EQ(silence.samples[0].duration, 540'000U);
}

}  // namespace
}  // namespace korr::txsub
