// SPDX-License-Identifier: MIT
#include "readers/mcc_reader.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "readers/mcc_packet.h"
#include "testkit/reader_support.h"

namespace korr::txsub {
namespace {

using encoding::subtitling::kSecond;
using test_support::MemorySource;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using Bytes = std::vector<std::uint8_t>;

struct Mcc : test_support::Reading<MccReader> {
  explicit Mcc(const std::string& text) : Reading(std::make_unique<MemorySource>(text)) {}
};

// A header as the format's own programs write it, and lines after it.
std::string file(const std::string& lines, const std::string& rate = "30DF",
                 const std::string& version = "1.0") {
  return "File Format=MacCaption_MCC V" + version +
         "\r\n\r\n/////\r\n// Computer Prompting and Captioning Company\r\n/////\r\n\r\n"
         "UUID=0FF0ECA2-5CE8-4A2D-8D2D-1F35E5C5A3B4\r\nCreation Program=An editor\r\n"
         "Time Code Rate=" +
         rate + "\r\n\r\n" + lines;
}

// 29.97: field 1 "94 20", field 2 empty, fill; the sums are those of its bytes.
constexpr const char* kLine =
    "T1FS1F4F430000"
    "72"
    "E6"
    "FC9420"
    "R"
    "J"
    "740000"
    "E0"
    "7B";

TEST(MccReader, ReadsTheTripletsOfAPicture) {
  const Mcc mcc(file(std::string("01:00:00;10\t") + kLine + "\r\n"));
  EXPECT_THAT(mcc.logger.lines, IsEmpty());
  ASSERT_THAT(mcc.listener.samples, SizeIs(1));
  const auto& sample = mcc.listener.samples[0].second;
  EXPECT_THAT(sample.data, ElementsAre(0xFC, 0x94, 0x20, 0xFD, 0x80, 0x80, 0xFA, 0, 0, 0xFA, 0, 0,
                                       0xFA, 0, 0, 0xFA, 0, 0));
  EXPECT_EQ(sample.times->start - *mcc.reader.startTime(0), 10 * 1001 * kSecond / 30000);
  EXPECT_EQ(mcc.listener.streams.at(0).type, SubtitleInputType::ClosedCaption);
}

TEST(MccReader, ExpandsEveryLetterAndCompressesBack) {
  for (char letter = 'G'; letter <= 'O'; ++letter) {
    Bytes expected;
    for (char i = 'G'; i <= letter; ++i) expected.insert(expected.end(), {0xFA, 0, 0});
    EXPECT_EQ(expandMcc(std::string(1, letter)), expected);
  }
  EXPECT_EQ(expandMcc("PQR"), (Bytes{0xFB, 0x80, 0x80, 0xFC, 0x80, 0x80, 0xFD, 0x80, 0x80}));
  EXPECT_EQ(expandMcc("STUZ"), (Bytes{0x96, 0x69, 0x61, 0x01, 0xE1, 0, 0, 0, 0}));
  EXPECT_EQ(expandMcc("a5FfZ"), (Bytes{0xA5, 0xFF, 0x00}));
  for (const char* bad : {"A", "1Z", "GX", "12 4", "V", "W"}) EXPECT_FALSE(expandMcc(bad)) << bad;

  EXPECT_EQ(compressMcc(*expandMcc("TSOGPQRZA5")), "TSOGPQRZA5");
  EXPECT_EQ(compressMcc(*expandMcc("U")), "E1ZZZ");
}

TEST(MccReader, TakesTheExactRateFromThePackets) {
  const auto secondOf = [](const std::string& rate, const util::TimeCodeRate& exact) {
    const auto packet = compressMcc(ancillaryPacket(Bytes{0xFC, 0x94, 0x20}, exact, 7));
    const Mcc mcc(file("00:00:01:00\t" + packet + '\n', rate, "2.0"));
    EXPECT_THAT(mcc.logger.lines, IsEmpty());
    return mcc.listener.samples.at(0).second.times->start;
  };
  EXPECT_EQ(secondOf("24", {24000, 1001, 24, false}), 10'010'000U);
  EXPECT_EQ(secondOf("24", {24, 1, 24, false}), kSecond);
  EXPECT_EQ(secondOf("25", {25, 1, 25, false}), kSecond);
  EXPECT_EQ(secondOf("30", {30, 1, 30, false}), kSecond);
  EXPECT_EQ(secondOf("30DF", {30000, 1001, 30, true}), 10'010'000U);
  EXPECT_EQ(secondOf("50", {50, 1, 50, false}), kSecond);
  EXPECT_EQ(secondOf("60DF", {60000, 1001, 60, true}), 10'010'000U);
  EXPECT_EQ(secondOf("60", {60, 1, 60, false}), kSecond);

  // Only the first one, or times would jump.
  const auto line = [](const util::TimeCodeRate& rate) {
    return "00:00:01:00\t" + compressMcc(ancillaryPacket(Bytes{0xFC, 0x94, 0x20}, rate, 7)) + '\n';
  };
  const Mcc mixed(file(line({30, 1, 30, false}) + line({30000, 1001, 30, false}), "30"));
  EXPECT_EQ(mixed.listener.samples.at(1).second.times->start, kSecond);
}

TEST(MccReader, ReadsVersion2OtherSectionsAndLine21) {
  const Mcc mcc(file(
      // A field and a line after the code; sections of time code and of services.
      "00:00:01:00.1,9\tT1ES1E4FC30000"
      "7180800080"
      "72E1FC9420"
      "73D100656E67C17FFF"
      "740000"
      "00"
      "00\n"
      "00:00:01:01\t6102"
      "03"
      "80"
      "94AE"
      "00\n"
      "00:00:01:02\t4101"
      "02"
      "1234"
      "00\n"
      "00:00:01:02\t6102"
      "03"
      "00"
      "9525"
      "00\n",
      "30", "2.0"));
  EXPECT_THAT(mcc.logger.lines, IsEmpty());
  std::vector<Bytes> triplets;
  for (const auto& [id, sample] : mcc.listener.samples) triplets.push_back(sample.data);
  EXPECT_THAT(triplets, ElementsAre(Bytes{0xFC, 0x94, 0x20}, Bytes{0xFC, 0x94, 0xAE},
                                    Bytes{0xFD, 0x95, 0x25}));
}

TEST(MccReader, LeavesOutBadLinesByNumber) {
  const std::string line = kLine;
  const Mcc mcc(file("00:00:00;30\t" + line + "\n00:00:01;00\tT1\n00:00:01;01\tT1FS1F\n" +
                     "00:00:02;00\t" + line + "\n00:00:01;00\t" + line + '\n' +
                     std::string(9000, '9') + "\n00:00:03;00\t" + line));
  EXPECT_THAT(mcc.listener.samples, SizeIs(2));
  EXPECT_THAT(mcc.logger.lines,
              ElementsAre(HasSubstr("line 11: \"00:00:00;30\" is no time code"),
                          HasSubstr("line 12: \"T1\" is no ancillary data"),
                          HasSubstr("line 13: \"T1FS1F\" is no whole caption distribution packet"),
                          HasSubstr("line 15: \"00:00:01;00\" lies before the line before"),
                          HasSubstr("line 16: longer than 8192 bytes")));
}

TEST(MccReader, RefusesOtherFiles) {
  EXPECT_THROW(Mcc("Scenarist_SCC V1.0\n"), util::TessaryException);
  EXPECT_THROW(Mcc(""), util::TessaryException);
  EXPECT_NO_THROW(
      Mcc("\xEF\xBB\xBF"
          "File Format=MacCaption_MCC V2.0"));
}

}  // namespace
}  // namespace korr::txsub
