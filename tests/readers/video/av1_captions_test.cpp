// SPDX-License-Identifier: MIT
#include "readers/video/av1_captions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "testkit/encoders/av1_builder.h"
#include "testkit/encoders/video_builder.h"
#include "testkit/reader_support.h"

namespace korr::txsub {
namespace {

using encoders::av1CaptionUnit;
using encoders::av1TemporalUnit;
using encoders::Bytes;
using encoders::join;
using encoders::obu;
using encoders::ObuType;
using encoders::textTriplets;
using encoding::subtitling::kSecond;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

struct Extraction {
  test_support::RecordingLogger logger;
  std::vector<std::pair<MediaTime, std::string>> samples;
  Av1CaptionExtractor extractor{[this](MediaTime time, std::span<const std::uint8_t> triplets) {
                                  samples.emplace_back(time, test_support::textOf(triplets));
                                },
                                &logger, "track 1"};
};

TEST(Av1Captions, ComeFromEveryMetadataUnitOfAFrame) {
  Extraction out;
  out.extractor.take(1 * kSecond, av1TemporalUnit(textTriplets("ab")));
  out.extractor.take(2 * kSecond, av1TemporalUnit({}));
  const Bytes otherMetadata = obu(ObuType::Metadata, Bytes{0x01, 0x10, 0x20, 0x80});
  const Bytes otherProvider = obu(ObuType::Metadata, Bytes{0x04, 0xB5, 0x00, 0x3C, 0x00, 0x80});
  out.extractor.take(3 * kSecond, join({av1CaptionUnit(textTriplets("cd")), otherMetadata,
                                        otherProvider, av1CaptionUnit(textTriplets("ef"))}));
  // More than 127 bytes need a second byte of size; the last unit may have none.
  const Bytes unit = av1CaptionUnit(textTriplets("gh"));
  const Bytes unsized = obu(ObuType::Metadata, std::span(unit).subspan(2), false);
  out.extractor.take(4 * kSecond, join({obu(ObuType::Frame, Bytes(200, 0x55)), unsized}));
  EXPECT_THAT(out.samples, ElementsAre(Pair(1 * kSecond, "ab"), Pair(3 * kSecond, "cdef"),
                                       Pair(4 * kSecond, "gh")));
  EXPECT_THAT(out.logger.lines, IsEmpty());
}

TEST(Av1Captions, AUnitWithAnExtensionIsOneAllTheSame) {
  Bytes unit = av1CaptionUnit(textTriplets("ab"));
  unit[0] |= 0x04;                      // obu_extension_flag
  unit.insert(unit.begin() + 1, 0x20);  // temporal and spatial id
  Extraction out;
  out.extractor.take(kSecond, unit);
  EXPECT_THAT(out.samples, ElementsAre(Pair(kSecond, "ab")));
}

TEST(Av1Captions, DamageCostsWhatIsCutOff) {
  Extraction out;
  const Bytes unit = av1CaptionUnit(textTriplets("abcd"));
  out.extractor.take(1 * kSecond, std::span(unit).first(unit.size() - 5));
  out.extractor.take({}, unit);
  out.extractor.take(2 * kSecond, Bytes{0x2A, 0xFF, 0xFF});    // a size without end
  out.extractor.take(2 * kSecond, join({Bytes{0xFF}, unit}));  // obu_forbidden_bit
  EXPECT_THAT(out.samples, ElementsAre(Pair(1 * kSecond, "ab")));
  EXPECT_THAT(
      out.logger.lines,
      ElementsAre("track 1, 1.000 s: a metadata unit of 19 bytes ends after 14; read as far "
                  "as it goes",
                  "track 1, 1.000 s: 1 of 2 caption triplets are cut off; the others are "
                  "used",
                  "track 1, 1.000 s: captions without a time stamp; left out"));
}

TEST(Av1Captions, DamageDoesNotPileUp) {
  Bytes frame;
  for (int i = 0; i < 100; ++i) {
    frame = join({frame, av1CaptionUnit(textTriplets(std::string(62, 'x')))});
  }
  Extraction out;
  for (int i = 0; i < 100; ++i) {
    out.extractor.take(kSecond, frame);
    out.extractor.take(kSecond, std::span(frame).first(20));
  }
  for (const auto& [time, text] : out.samples) EXPECT_LE(text.size(), 4096U);
  EXPECT_EQ(out.logger.lines.size(), 20U);
}

}  // namespace
}  // namespace korr::txsub
