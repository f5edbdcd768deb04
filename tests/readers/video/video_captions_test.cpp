// SPDX-License-Identifier: MIT
#include "readers/video/video_captions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

#include "readers/video/start_code.h"
#include "testkit/encoders/video_builder.h"
#include "testkit/reader_support.h"

namespace korr::txsub {
namespace {

using encoders::atscUserData;
using encoders::Bytes;
using encoders::captionSeiMessage;
using encoders::encode;
using encoders::join;
using encoders::Picture;
using encoders::seiMessage;
using encoders::seiUnit;
using encoders::textTriplets;
using encoding::subtitling::kSecond;
using test_support::RecordingLogger;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

constexpr MediaTime kFrame = kSecond * 1001 / 30000;

using Pes = std::pair<std::optional<MediaTime>, Bytes>;

/// An extractor and what came out of it: time and text of each sample.
struct Extraction {
  explicit Extraction(VideoCodec codec)
      : extractor(codec,
                  [this](MediaTime time, std::span<const std::uint8_t> triplets) {
                    samples.emplace_back(time, test_support::textOf(triplets));
                  },
                  {&logger, "PID 256"}) {}

  /// Of a whole stream.
  Extraction(VideoCodec codec, const std::vector<Pes>& stream) : Extraction(codec) {
    for (const auto& [pts, payload] : stream) pes(pts, payload);
    extractor.flush();
  }

  void pes(std::optional<MediaTime> pts, std::span<const std::uint8_t> payload) {
    extractor.beginPes(pts);
    extractor.feed(payload);
  }

  RecordingLogger logger;
  std::vector<std::pair<MediaTime, std::string>> samples;
  VideoCaptionExtractor extractor;
};

class EveryCodec : public testing::TestWithParam<VideoCodec> {
 protected:
  Bytes picture(std::string_view text) const {
    return encode({.codec = GetParam(), .triplets = textTriplets(text)});
  }
};

INSTANTIATE_TEST_SUITE_P(VideoCaptions, EveryCodec,
                         testing::Values(VideoCodec::Mpeg2, VideoCodec::H264, VideoCodec::Hevc));

TEST_P(EveryCodec, ComesOutInPresentationOrder) {
  const Extraction out(GetParam(), {{1 * kFrame, picture("I1")},
                                    {4 * kFrame, picture("P4")},
                                    {2 * kFrame, picture("B2")},
                                    {3 * kFrame, picture("")}});
  EXPECT_THAT(out.samples,
              ElementsAre(Pair(1 * kFrame, "I1"), Pair(2 * kFrame, "B2"), Pair(4 * kFrame, "P4")));
  EXPECT_THAT(out.logger.lines, IsEmpty());
}

TEST_P(EveryCodec, TakesEveryCutOfTheStream) {
  // A byte of 00 in the text needs emulation prevention, and looks like the next start code.
  const Bytes stream = join({picture("first"), picture(std::string_view("\0\0\0\1", 4)),
                             encode({.codec = GetParam()}), picture("last")});
  const Extraction whole(GetParam(), {{kSecond, stream}});
  ASSERT_FALSE(whole.samples.empty());

  for (std::size_t piece = 1; piece < 50; ++piece) {
    Extraction cut{GetParam()};
    cut.extractor.beginPes(kSecond);
    for (std::size_t at = 0; at < stream.size(); at += piece) {
      cut.extractor.feed(std::span(stream).subspan(at, std::min(piece, stream.size() - at)));
    }
    cut.extractor.flush();
    EXPECT_EQ(cut.samples, whole.samples) << "pieces of " << piece;
  }
}

TEST_P(EveryCodec, LossCostsOnlyTheTornUnit) {
  Extraction out{GetParam()};
  const Bytes torn = picture("torn");
  out.pes(1 * kFrame, picture("good"));
  out.pes(2 * kFrame, std::span(torn).first(20));
  out.extractor.lostData();
  out.extractor.feed(std::span(torn).last(60));
  out.pes(3 * kFrame, picture("next"));
  out.extractor.flush();
  EXPECT_THAT(out.samples, ElementsAre(Pair(1 * kFrame, "good"), Pair(3 * kFrame, "next")));
}

TEST_P(EveryCodec, PicturesWithoutSlicesStayApart) {
  const Bytes picture = encode({.codec = GetParam(), .triplets = textTriplets("ab"), .slices = 0});
  const Extraction out(GetParam(),
                       {{1 * kFrame, picture}, {2 * kFrame, picture}, {3 * kFrame, picture}});
  EXPECT_THAT(out.samples,
              ElementsAre(Pair(1 * kFrame, "ab"), Pair(2 * kFrame, "ab"), Pair(3 * kFrame, "ab")));
}

TEST_P(EveryCodec, AStepInTimeKeepsTheOrderOfTheStream) {
  const Extraction out(GetParam(),
                       {{100 * kSecond, picture("before")}, {10 * kSecond, picture("then")}});
  EXPECT_THAT(out.samples, ElementsAre(Pair(100 * kSecond, "before"), Pair(10 * kSecond, "then")));
}

TEST_P(EveryCodec, SaysWhatItCannotPlaceInTime) {
  const Extraction out(GetParam(), {{{}, picture("lost")}, {kSecond, picture("kept")}});
  EXPECT_THAT(out.samples, ElementsAre(Pair(kSecond, "kept")));
  EXPECT_THAT(out.logger.lines, ElementsAre(HasSubstr("PID 256")));
}

TEST_P(EveryCodec, SurvivesNoise) {
  std::mt19937 random{7};
  Bytes stream;
  for (int i = 0; i < 200; ++i) stream = join({stream, picture("some text")});
  for (int i = 0; i < 2000; ++i) {
    stream[random() % stream.size()] = static_cast<std::uint8_t>(random() % 4);
  }
  Extraction out{GetParam()};
  for (std::size_t at = 0; at + 184 <= stream.size(); at += 184) {
    if (random() % 3 == 0) out.extractor.beginPes(at * kFrame / 100);
    out.extractor.feed(std::span(stream).subspan(at, 184));
  }
  out.extractor.flush();
  EXPECT_FALSE(out.samples.empty());
  EXPECT_LE(out.logger.lines.size(), 20U);
}

TEST(VideoCaptions, Mpeg2CountsPicturesWithoutPtsByTemporalReference) {
  const auto picture = [](int reference, std::string_view text, bool beginsGroup = false) {
    return encode({.codec = VideoCodec::Mpeg2,
                   .triplets = textTriplets(text),
                   .temporalReference = reference,
                   .beginsGroup = beginsGroup});
  };
  // Two open groups in coding order; only the first picture has a PTS.
  constexpr MediaTime kStart = 10 * kSecond - 2 * kFrame;
  const Extraction out(
      VideoCodec::Mpeg2,
      {{kStart + 2 * kFrame,
        join({picture(2, "I2", true), picture(0, "B0"), picture(1, "B1"), picture(5, "P5"),
              picture(3, "B3"), picture(4, "B4"), picture(1, "i1", true), picture(0, "b0")})}});
  std::vector<std::pair<MediaTime, std::string>> expected;
  for (const char* text : {"B0", "B1", "I2", "B3", "B4", "P5", "b0", "i1"}) {
    expected.emplace_back(kStart + expected.size() * kFrame, text);
  }
  EXPECT_EQ(out.samples, expected);
}

TEST(VideoCaptions, FieldsOfOneFrameAreOneSample) {
  for (const VideoCodec codec : {VideoCodec::Mpeg2, VideoCodec::H264}) {
    const auto field = [&](std::string_view text) {
      return encode({.codec = codec, .triplets = textTriplets(text), .temporalReference = 6});
    };
    const Extraction out(codec, {{kSecond, join({field("top."), field("bottom")})}});
    EXPECT_THAT(out.samples, ElementsAre(Pair(kSecond, "top.bottom")));
  }
}

TEST(VideoCaptions, ReadsSeveralMessagesOfOneSei) {
  const Bytes registeredElsewhere = seiMessage(4, Bytes{0xB5, 0x00, 0x3C, 1, 2, 3});
  const Bytes large = seiMessage(0xFF, Bytes(2 * 0xFF, 0));  // numbers that end in a byte of 0
  const Bytes sei = seiUnit(VideoCodec::H264, join({seiMessage(1, Bytes{0x12}), registeredElsewhere,
                                                    captionSeiMessage(textTriplets("ab")), large,
                                                    captionSeiMessage(textTriplets("cd"))}));
  const Extraction out(VideoCodec::H264, {{kSecond, join({sei, encode({.slices = 1})})}});
  EXPECT_THAT(out.samples, ElementsAre(Pair(kSecond, "abcd")));
  EXPECT_THAT(out.logger.lines, IsEmpty());
}

TEST(VideoCaptions, ReadsDamagedUserDataAsFarAsItGoes) {
  const Bytes provider{0xB5, 0x00, 0x31};
  const Bytes userData = join({provider, atscUserData(textTriplets("abcd"))});
  const Bytes tooLong = seiUnit(VideoCodec::H264, seiMessage(4, userData, 250));
  const Bytes cutShort = seiUnit(
      VideoCodec::H264, seiMessage(4, join({provider, atscUserData(textTriplets("efgh"), 31)})));
  const Extraction out(VideoCodec::H264, {{1 * kSecond, join({tooLong, encode({})})},
                                          {2 * kSecond, join({cutShort, encode({})})}});
  EXPECT_THAT(out.samples, ElementsAre(Pair(1 * kSecond, "abcd"), Pair(2 * kSecond, "efgh")));
  EXPECT_THAT(
      out.logger.lines,
      ElementsAre("PID 256, 1.000 s: an SEI message of 250 bytes ends after 18; read as far "
                  "as it goes",
                  "PID 256, 2.000 s: 29 of 31 caption triplets are cut off; the others are "
                  "used"));
}

TEST(VideoCaptions, HevcMayCarryThemBehindThePicture) {
  Bytes suffix = seiUnit(VideoCodec::Hevc, captionSeiMessage(textTriplets("ab")));
  suffix[3] = 40 << 1;  // nal_unit_type of a suffix SEI
  const Bytes picture = encode({.codec = VideoCodec::Hevc});
  const Extraction out(VideoCodec::Hevc,
                       {{1 * kSecond, join({picture, suffix})}, {2 * kSecond, picture}});
  EXPECT_THAT(out.samples, ElementsAre(Pair(1 * kSecond, "ab")));
}

TEST(VideoCaptions, DamageDoesNotPileUpTriplets) {
  const std::string text(62, 'x');  // as much as cc_count can say
  Bytes messages;
  for (int i = 0; i < 100; ++i) messages = join({messages, captionSeiMessage(textTriplets(text))});
  const Bytes full = join({seiUnit(VideoCodec::H264, messages), encode({})});
  const Extraction onePicture(VideoCodec::H264, {{kSecond, full}});
  ASSERT_EQ(onePicture.samples.size(), 1U);
  EXPECT_LE(onePicture.samples[0].second.size(), 4096U);

  std::vector<Pes> alike(200, {kSecond, encode({.triplets = textTriplets(text)})});
  const Extraction oneTime(VideoCodec::H264, alike);
  ASSERT_GT(oneTime.samples.size(), 1U);
  for (const auto& [time, sample] : oneTime.samples) EXPECT_LE(sample.size(), 4096U + 62U);
}

TEST(VideoCaptions, AUnitFarTooLargeIsLeftOut) {
  const Bytes filler = seiMessage(5, Bytes(70'000, 0x55));
  const Bytes large =
      seiUnit(VideoCodec::H264, join({filler, captionSeiMessage(textTriplets("no"))}));
  const Extraction out(VideoCodec::H264, {{1 * kSecond, join({large, encode({})})},
                                          {2 * kSecond, encode({.triplets = textTriplets("ok")})}});
  EXPECT_THAT(out.samples, ElementsAre(Pair(2 * kSecond, "ok")));
}

TEST(VideoCaptions, HoldsBackAsManyPicturesAsADecoder) {
  std::vector<Pes> stream;
  stream.emplace_back(17 * kFrame, encode({.triplets = textTriplets("last")}));
  for (MediaTime i = 1; i <= 16; ++i) {
    stream.emplace_back(i * kFrame,
                        encode({.triplets = textTriplets(std::string(2, char('a' + i)))}));
  }
  const Extraction out(VideoCodec::H264, stream);
  ASSERT_EQ(out.samples.size(), 17U);
  EXPECT_THAT(out.samples.front(), Pair(kFrame, "bb"));
  EXPECT_THAT(out.samples.back(), Pair(17 * kFrame, "last"));
}

TEST(VideoCaptions, TripletsOfEveryTypeComeAsTheyAre) {
  const Bytes triplets{0xFC, 0x94, 0x20, 0xFD, 0x80, 0x80, 0xFF, 0x05, 0x25,
                       0xFE, 0x00, 0x00, 0xF8, 0x00, 0x00, 0xFA, 0x12, 0x34};
  std::vector<Bytes> samples;
  VideoCaptionExtractor extractor(VideoCodec::H264,
                                  [&](MediaTime, std::span<const std::uint8_t> data) {
                                    samples.emplace_back(data.begin(), data.end());
                                  },
                                  {nullptr, ""});
  extractor.beginPes(kSecond);
  extractor.feed(encode({.triplets = triplets}));
  extractor.flush();
  EXPECT_THAT(samples, ElementsAre(triplets));
}

TEST(VideoCaptions, PassesOverUserDataThatIsNoCaptions) {
  Bytes notProcessed = atscUserData(textTriplets("ab"));
  notProcessed[5] &= 0xBF;  // process_cc_data_flag
  Bytes barData = atscUserData(textTriplets("ab"));
  barData[4] = 0x06;  // user_data_type_code of bar data
  EXPECT_FALSE(captionsOfUserData(notProcessed));
  EXPECT_FALSE(captionsOfUserData(barData));
  EXPECT_FALSE(captionsOfUserData(Bytes{'G', 'A', '9', '4', 0x03}));
}

TEST(StartCode, IsFoundAtEveryPlace) {
  for (std::size_t size = 0; size < 120; ++size) {
    Bytes bytes(size, 0);  // zeros alone make no start code
    EXPECT_EQ(findStartCode(bytes, 0), size);
    for (std::size_t at = 0; at + 3 <= size; ++at) {
      bytes.assign(size, 0x01);
      bytes[at] = bytes[at + 1] = 0;
      EXPECT_EQ(findStartCode(bytes, 0), at) << "of " << size;
      EXPECT_EQ(findStartCode(bytes, at), at) << "of " << size;
      EXPECT_EQ(findStartCode(bytes, at + 1), size) << "of " << size;
    }
  }
}

}  // namespace
}  // namespace korr::txsub
