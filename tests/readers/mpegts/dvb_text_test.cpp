// SPDX-License-Identifier: MIT
#include "readers/mpegts/dvb_text.h"

#include <gtest/gtest.h>

namespace korr::txsub {
namespace {

TEST(DvbText, ReadsTheTablesThatNamesComeIn) {
  const auto read = [](std::string_view text) {
    return dvbTextToUtf8({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  };
  using namespace std::string_view_literals;
  EXPECT_EQ(read(""), "");
  EXPECT_EQ(read("\x86RTL\x87"), "RTL") << "emphasis is left out";
  EXPECT_EQ(read("F\xC8ur S\xCFt \xE1 \xA4"), "Für Sť Æ €");
  EXPECT_EQ(read("\x01\xBF\xD5\xE0\xD2\xEB\xD9"), "Первый");
  EXPECT_EQ(read("\x10\x00\x01\xC5rs"sv), "Års");
  EXPECT_EQ(read("\x11\x00T\x00V\x20\xAC"sv), "TV€");
  EXPECT_EQ(read("\x15Čt"), "Čt");
  EXPECT_EQ(read("\x05\xFF!"), "�!") << "a table that is not read";
}

}  // namespace
}  // namespace korr::txsub
