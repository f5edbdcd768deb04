// SPDX-License-Identifier: MIT
#include "util/utf.h"

#include <gmock/gmock.h>

namespace korr::util {
namespace {

TEST(Utf8ToUtf16, KeepsWellFormedTextAndMarksEveryOtherByte) {
  EXPECT_EQ(utf8ToUtf16("aé♪\U0001F600"), u"aé♪\U0001F600");
  EXPECT_EQ(utf8ToUtf16("\x80x"), u"\uFFFDx") << "a continuation alone";
  EXPECT_EQ(utf8ToUtf16("\xE2\x99"), u"\uFFFD\uFFFD") << "cut short";
  EXPECT_EQ(utf8ToUtf16("\xC3x"), u"\uFFFDx") << "what follows a torn sequence stays";
  EXPECT_EQ(utf8ToUtf16("\xC0\x80"), u"\uFFFD\uFFFD") << "too long for its value";
  EXPECT_EQ(utf8ToUtf16("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD") << "a surrogate";
  EXPECT_EQ(utf8ToUtf16("\xF4\x90\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD") << "beyond U+10FFFF";
}

}  // namespace
}  // namespace korr::util
