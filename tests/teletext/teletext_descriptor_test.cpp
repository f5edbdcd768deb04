// SPDX-License-Identifier: MIT
#include "teletext/teletext_descriptor.h"

#include <gtest/gtest.h>

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {
namespace {

// A stream identifier descriptor, then a teletext descriptor with four pages.
const std::vector<std::uint8_t> kDescriptors = {
    0x52, 1,   7,                      //
    0x56, 20,                          //
    'd',  'a', 'n', 2 << 3 | 7, 0x99,  //
    'e',  'n', 'g', 1 << 3 | 1, 0x00,  // an initial page: no subtitles
    'e',  'n', 'g', 2 << 3 | 0, 0x88,  // magazine 8
    'e',  'n', 'g', 5 << 3 | 0, 0x09,
};

FollowedPage follow(const std::string& language, bool hearingImpaired, std::uint32_t page = 0x150) {
  return followLanguage(readTeletextPages(kDescriptors), language, hearingImpaired, page);
}

TEST(TeletextDescriptor, FollowTheLanguageOnThePageForItsAudience) {
  EXPECT_EQ(follow("", false).page, 0x150u);
  EXPECT_EQ(follow("", false).list, "[dan, 799] [eng, 888] [eng-imp, 809] ");
  EXPECT_EQ(follow("", false).follow, "");
  EXPECT_EQ(follow("eng", false).page, 0x888u);
  EXPECT_EQ(follow("eng", false).follow, "=> Follow language eng on page 888");
  EXPECT_EQ(follow("eng", true).page, 0x809u);
  EXPECT_EQ(follow("eng", true).follow, "=> Follow language eng-imp on page 809");
  EXPECT_EQ(follow("dan", true).page, 0x150u) << "no Danish page for the hard of hearing";
  EXPECT_EQ(follow("en", false).page, 0x150u) << "a language is all of its three letters";
  EXPECT_EQ(follow("eng", false, 0x888).follow, "") << "already there";
}

TEST(TeletextDescriptor, KeepTheWholeEntriesBeforeTheDamage) {
  constexpr std::size_t kBeforeEntries = 5;
  for (std::size_t size = 0; size <= kDescriptors.size(); ++size) {
    const std::size_t entries = size < kBeforeEntries ? 0 : (size - kBeforeEntries) / 5;
    EXPECT_EQ(readTeletextPages({kDescriptors.data(), size}).size(), entries) << size;
  }
  auto twice = kDescriptors;
  twice.insert(twice.end(), {0x56, 200, 'd', 'e', 'u', 0x10, 0x50, 'f', 'r'});
  ASSERT_EQ(readTeletextPages(twice).size(), 5u);
  EXPECT_EQ(readTeletextPages(twice).back().language, "deu");
}

}  // namespace
}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
