// SPDX-License-Identifier: MIT
#include "readers/libav/container_samples.h"

#include <gtest/gtest.h>

namespace korr::txsub {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(NalLengths, AreReadFromTheConfigurationRecord) {
  const Bytes avcC{1, 0x42, 0xC0, 0x0A, 0xFD, 0xE1};
  Bytes hvcC(23, 0);
  hvcC[0] = 1;
  hvcC[21] = 0xFF;
  EXPECT_EQ(nalLengthBytes(VideoCodec::H264, avcC), 2U);
  EXPECT_EQ(nalLengthBytes(VideoCodec::Hevc, hvcC), 4U);
  EXPECT_EQ(nalLengthBytes(VideoCodec::H264, Bytes{0, 0, 0, 1, 0x67}), std::nullopt);
  EXPECT_EQ(nalLengthBytes(VideoCodec::H264, Bytes{}), std::nullopt);
}

TEST(NalLengths, NeverReachPastTheSample) {
  const Bytes sample{0, 2, 'a', 'b', 0xFF, 0xFF, 'c'};
  std::span<const std::uint8_t> rest = sample;
  EXPECT_EQ(takeLengthPrefixedUnit(rest, 2)->size(), 2U);
  EXPECT_EQ(takeLengthPrefixedUnit(rest, 2)->size(), 1U);
  EXPECT_FALSE(takeLengthPrefixedUnit(rest, 2));
}

TEST(DvbTrack, SamplesEndAtTheirEndMarker) {
  const Bytes segments{0x0F, 0x80, 0, 1, 0, 2, 0xFF, 0xFF};  // the body looks like the marker
  const auto sample = [&](Bytes before, const Bytes& after) {
    before.insert(before.end(), segments.begin(), segments.end());
    before.insert(before.end(), after.begin(), after.end());
    return before;
  };
  const Bytes field = sample({0x20, 0x00}, {0xFF});
  EXPECT_EQ(dvbSubtitleDataField(sample({0x20, 0x00}, {0xFF, 0x00, 0x47})), field);
  EXPECT_EQ(dvbSubtitleDataField(sample({}, {0xFF, 0xFF, 0x00})), field);
  EXPECT_EQ(dvbSubtitleDataField(sample({0x20, 0x00}, {0xFF})), field);
  EXPECT_EQ(dvbSubtitleDataField(sample({0x20, 0x00}, {0x00})), sample({0x20, 0x00}, {0x00}));
}

TEST(TeletextTrack, PagesAndLanguagesMakeADescriptor) {
  EXPECT_EQ(teletextDescriptor("ger,fre", Bytes{0x09, 0x50, 0x10, 0x88}),
            (Bytes{0x56, 10, 'g', 'e', 'r', 0x09, 0x50, 'f', 'r', 'e', 0x10, 0x88}));
  EXPECT_EQ(teletextDescriptor("", Bytes{0x09, 0x50}), (Bytes{0x56, 5, 'u', 'n', 'd', 0x09, 0x50}));
  EXPECT_EQ(teletextDescriptor("ger", Bytes{}), Bytes{});
  EXPECT_EQ(teletextDataField(Bytes{0x02, 0x2C}), (Bytes{0x10, 0x02, 0x2C}));
}

}  // namespace
}  // namespace korr::txsub
