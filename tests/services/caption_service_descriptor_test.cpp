// SPDX-License-Identifier: MIT
#include "services/caption_service_descriptor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korr::txsub {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Bytes = std::vector<std::uint8_t>;

TEST(CaptionServiceDescriptor, NamesLanguagesServicesAndFields) {
  const Bytes descriptors{0x0A, 4,   'e',         'n',           'g',          0,  // of the sound
                          0x86, 19,  0b111'00011,                                  //
                          'e',  'n', 'g',         0b1'1'000001,  0b1'0'111111, 0xFF,  // easy reader
                          's',  'p', 'a',         0b1'1'111111,  0b0'1'111111, 0xFF,  // 16:9
                          'f',  'r', 'e',         0b0'1'11111'1, 0b0'0'111111, 0xFF};  // line 21
  const AnnouncedCaptions english{.language = "eng",
                                  .isDigital = true,
                                  .service = 1,
                                  .field = 0,
                                  .isEasyReader = true,
                                  .isWideAspect = false};
  const AnnouncedCaptions spanish{.language = "spa",
                                  .isDigital = true,
                                  .service = 63,
                                  .field = 0,
                                  .isEasyReader = false,
                                  .isWideAspect = true};
  const AnnouncedCaptions french{.language = "fre",
                                 .isDigital = false,
                                 .service = 0,
                                 .field = 2,
                                 .isEasyReader = false,
                                 .isWideAspect = false};
  EXPECT_EQ(readCaptionServices(descriptors), (std::vector{english, spanish, french}));

  const auto cut = std::span(descriptors).first(descriptors.size() - 7);
  EXPECT_EQ(readCaptionServices(cut), (std::vector{english})) << "whole entries stay";
}

TEST(CaptionServiceDescriptor, CountsNoMoreThanItSays) {
  const Bytes one{0x86, 13, 0xE1, 'e', 'n', 'g', 0xC1, 0x3F, 0xFF, 's', 'p', 'a', 0xC2, 0x3F, 0xFF};
  EXPECT_EQ(readCaptionServices(one).size(), 1U);
  EXPECT_THAT(readCaptionServices(Bytes{0x86, 0}), IsEmpty());
  EXPECT_THAT(readCaptionServices(Bytes{0x86, 1, 0xFF}), IsEmpty());
}

}  // namespace
}  // namespace korr::txsub
