// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "services/service.h"
#include "services/teletext_services.h"
#include "testkit/encoders/dtvcc_encoder.h"
#include "testkit/encoders/teletext_encoder.h"

namespace korr::txsub {
namespace {

using testing::IsEmpty;

constexpr auto kTeletext = SubtitleInputType::Teletext;

// Teletext descriptor: Swedish on 888, Finnish on 889, Swedish for the hard of hearing on 899.
const std::vector<std::uint8_t> kTeletextDescriptor = {0x56, 15,                    //
                                                       's',  'w', 'e', 0x10, 0x88,  //
                                                       'f',  'i', 'n', 0x10, 0x89,  //
                                                       's',  'w', 'e', 0x28, 0x99};

StreamInfo streamOf(SubtitleInputType type, std::vector<std::uint8_t> descriptors) {
  StreamInfo stream;
  stream.type = type;
  stream.descriptors = std::move(descriptors);
  return stream;
}

// A PES data field with the header of one page.
InputSample pageHeader(std::uint32_t page, bool isSubtitle) {
  const auto packet = encoders::headerPacket({.page = page, .subtitle = isSubtitle});
  InputSample sample;
  sample.data = encoders::teletextDataField({&packet, 1});
  return sample;
}

// The names of what is found, in order.
std::string namesOf(const std::vector<Service>& services) {
  std::string names;
  for (const auto& service : services) {
    if (!names.empty()) names += ", ";
    names += displayName(service) + ' ' + service.language +
             (service.hearingImpaired ? "-imp" : "") + (service.isDeclared ? "" : " on air");
  }
  return names;
}

std::string described(const StreamInfo& stream, const ServiceQuery& query) {
  const auto finder = createServiceFinder(stream, query, nullptr);
  return finder ? namesOf(finder->describe(stream)) : "unwanted";
}

TEST(TeletextServices, AreThePagesThatTheDescriptorsName) {
  const auto stream = streamOf(kTeletext, kTeletextDescriptor);
  EXPECT_EQ(described(stream, {}), "page 888 swe, page 889 fin, page 899 swe-imp");
  EXPECT_EQ(described(stream, {.page = 0x889}), "page 889 fin");
  EXPECT_EQ(described(stream, {.page = 0x150}), "page 150  on air");
  EXPECT_EQ(described(stream, {.page = 1}), "unwanted");
}

TEST(TeletextServices, FollowTheLanguageAndElseThePage) {
  const auto stream = streamOf(kTeletext, kTeletextDescriptor);
  EXPECT_EQ(described(stream, {.language = "swe", .hearingImpaired = true}), "page 899 swe-imp");
  EXPECT_EQ(described(stream, {.page = 0x150, .language = "fin"}), "page 889 fin");
  EXPECT_EQ(described(stream, {.page = 0x150, .language = "dan"}), "page 150  on air");
  EXPECT_EQ(described(stream, {.language = "dan"}), "");
}

TEST(TeletextServices, AreFoundOnAirWhereNoneAreNamed) {
  const auto stream = streamOf(kTeletext, {});
  const auto finder = createServiceFinder(stream, {}, nullptr);
  EXPECT_THAT(finder->describe(stream), IsEmpty());
  ASSERT_TRUE(finder->isSearching());
  EXPECT_THAT(finder->inspect(pageHeader(0x100, false)), IsEmpty());
  EXPECT_EQ(namesOf(finder->inspect(pageHeader(0x888, true))), "page 888  on air");
  EXPECT_THAT(finder->inspect(pageHeader(0x888, true)), IsEmpty()) << "known already";
  EXPECT_THAT(finder->inspect(pageHeader(0x1FF, true)), IsEmpty()) << "no page that one can key in";

  const auto named = createServiceFinder(streamOf(kTeletext, kTeletextDescriptor), {}, nullptr);
  named->describe(streamOf(kTeletext, kTeletextDescriptor));
  EXPECT_FALSE(named->isSearching());
}

TEST(TeletextServices, TakeTheirCharactersFromTheLanguage) {
  const auto stream = streamOf(kTeletext, {0x56, 5, 'p', 'o', 'l', 0x10, 0x88});
  const auto groupOf = [&](const ServiceQuery& query) {
    return createServiceFinder(stream, query, nullptr)->describe(stream).front().pageOption;
  };
  EXPECT_EQ(groupOf({}), 1U);
  EXPECT_EQ(groupOf({.pageOption = 4}), 4U);
  EXPECT_EQ(characterGroupOf("heb"), 10U);
  EXPECT_EQ(characterGroupOf("swe"), 0U);
  EXPECT_EQ(characterGroupOf(""), 0U);
}

TEST(DvbServices, AreThePagesOfTheLanguageThatIsAskedForOrElseAll) {
  const auto stream = streamOf(SubtitleInputType::DvbSubtitle,
                               {0x59, 16,                           //
                                'f',  'r', 'a', 0x10, 0,  1, 0, 1,  //
                                'd',  'e', 'u', 0x20, 0,  2, 0, 2,  //
                                0x59, 8,   'i', 't',  'a'});        // and a descriptor cut short
  EXPECT_EQ(described(stream, {}), "DVB subtitles page 1 fra, DVB subtitles page 2 deu-imp");
  EXPECT_EQ(described(stream, {.language = "deu", .hearingImpaired = true}),
            "DVB subtitles page 2 deu-imp");
  EXPECT_EQ(described(stream, {.language = "ita"}), "");
  EXPECT_EQ(described(stream, {.page = 0x888}), "unwanted");
}

TEST(CaptionServices, AreFourUnlessOneIsAskedFor) {
  const auto stream = streamOf(SubtitleInputType::ClosedCaption, {});
  EXPECT_EQ(described(stream, {}), "CC1 , CC2 , CC3 , CC4 ");
  EXPECT_EQ(described(stream, {.page = 3}), "CC3 ");
  EXPECT_EQ(described(stream, {.page = 0x888}), "unwanted");
}

// caption_service_descriptor: line 21 field 1 in English; service 1 in English, easy, wide; service
// 2 in Korean, 4:3; and an entry that is cut.
const std::vector<std::uint8_t> kCaptionDescriptor = {0x86, 21,  0xE4,                    //
                                                      'e',  'n', 'g',  0x7E, 0x3F, 0xFF,  //
                                                      'e',  'n', 'g',  0xC1, 0xFF, 0xFF,  //
                                                      'k',  'o', 'r',  0xC2, 0x3F, 0xFF,  //
                                                      's',  'p'};

InputSample digitalCaptions(unsigned service, std::string_view text) {
  InputSample sample;
  sample.data =
      encoders::DtvccChannel().add(service, encoders::DtvccCodes().define(0, {}).text(text)).take();
  return sample;
}

TEST(CaptionServices, AreThoseOfLine21AndTheDigitalOnesThatAreNamed) {
  auto stream = streamOf(SubtitleInputType::ClosedCaption, kCaptionDescriptor);
  stream.isVideo = true;
  EXPECT_EQ(described(stream, {}),
            "CC1 eng on air, CC2  on air, CC3  on air, CC4  on air, 708 service 1 eng on air, 708 "
            "service 2 kor on air");
  EXPECT_EQ(described(stream, {.page = digitalPage(2)}), "708 service 2 kor on air");
  EXPECT_EQ(described(stream, {.page = digitalPage(63)}), "708 service 63  on air");
  EXPECT_EQ(described(stream, {.page = 0x888}), "unwanted");

  const auto services = createServiceFinder(stream, {}, nullptr)->describe(stream);
  EXPECT_TRUE(services.at(4).isEasyReader);
  EXPECT_TRUE(services.at(4).isWide);
  EXPECT_FALSE(services.at(5).isEasyReader);
  EXPECT_FALSE(services.at(5).isWide);
}

TEST(CaptionServices, AreFoundOnAirOnce) {
  const auto stream = streamOf(SubtitleInputType::ClosedCaption, kCaptionDescriptor);
  const auto finder = createServiceFinder(stream, {}, nullptr);
  finder->describe(stream);
  ASSERT_TRUE(finder->isSearching());
  EXPECT_THAT(finder->inspect(digitalCaptions(1, "named already")), IsEmpty());
  EXPECT_EQ(namesOf(finder->inspect(digitalCaptions(9, "new"))), "708 service 9  on air");
  EXPECT_THAT(finder->inspect(digitalCaptions(9, "known")), IsEmpty());

  const auto chosen = createServiceFinder(stream, {.page = 1}, nullptr);
  EXPECT_FALSE(chosen->isSearching()) << "only CC1 is asked for";
}

}  // namespace
}  // namespace korr::txsub
