// SPDX-License-Identifier: MIT
#include "services/teletext_survey.h"

#include <gtest/gtest.h>

#include "testkit/encoders/teletext_encoder.h"

namespace korr::txsub {
namespace {

using encoders::headerPacket;
using encoders::rowPacket;

TEST(TeletextSurvey, TellsWhichPagesCarryText) {
  TeletextSurvey survey;
  const auto take = [&](const std::vector<encoders::TeletextPacket>& packets) {
    survey.take(encoders::teletextDataField(packets));
  };
  take({headerPacket({.page = 0x100, .subtitle = false}), rowPacket(0x100, 1, "News"),
        headerPacket({.page = 0x101, .subtitle = false}), rowPacket(0x100, 1, "\x11pictures"),
        headerPacket({.page = 0x102}), rowPacket(0x100, 2, "      "), headerPacket({.page = 0x1FF}),
        rowPacket(0x100, 1, "nobody can key it in")});
  EXPECT_EQ(pageList(survey.pagesWithText()), "100");

  take({headerPacket({.page = 0x888}), headerPacket({.page = 0x102})});
  take({rowPacket(0x888, 20, "\v\vHello\n\n"), rowPacket(0x100, 24, "\x17pictures\x01 and text")});
  EXPECT_EQ(pageList(survey.pagesWithText()), "100 102 888") << "magazines in parallel";

  take({headerPacket({.page = 0x300, .magazineSerial = true}), rowPacket(0x888, 20, "888"),
        headerPacket({.page = 0x200, .magazineSerial = true}), rowPacket(0x300, 1, "late")});
  EXPECT_EQ(pageList(survey.pagesWithText()), "100 102 888") << "in series";
}

TEST(TeletextSurvey, ListsNeighboursAsRanges) {
  EXPECT_EQ(pageList(std::vector<std::uint32_t>{}), "");
  EXPECT_EQ(pageList(std::vector<std::uint32_t>{0x100, 0x101, 0x102, 0x150, 0x198, 0x199, 0x200,
                                                0x209, 0x210, 0x899}),
            "100-102 150 198-200 209 210 899");
}

}  // namespace
}  // namespace korr::txsub
