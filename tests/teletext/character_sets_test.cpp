// SPDX-License-Identifier: MIT
#include "teletext/character_sets.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "util/utf.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {
namespace {

constexpr std::string_view kNationalCodes = "#$@[\\]^_`{|}~";

std::string text(const std::optional<GlyphText>& glyph) {
  return glyph ? std::string(glyph->view()) : std::string();
}

std::string textOf(const CharacterSet& set, std::string_view codes,
                   decltype(&CharacterSet::g0) glyphs = &CharacterSet::g0) {
  std::string result;
  for (const char code : codes) result += text((set.*glyphs)(static_cast<std::uint8_t>(code)));
  return result;
}

// The national letters of each group and option (EN 300 706, tables 32 and 36); others have none.
const std::map<std::pair<std::uint32_t, std::uint32_t>, std::string> kNational = {
    {{0, 0}, "£$@←½→↑#—¼‖¾÷"}, {{0, 1}, "#$§ÄÖÜ^_°äöüß"}, {{0, 2}, "#¤ÉÄÖÅÜ_éäöåü"},
    {{0, 3}, "£$é°ç→↑#ùàòèì"}, {{0, 4}, "éïàëêùî#èâôûç"}, {{0, 5}, "ç$¡áéíóú¿üñèà"},
    {{0, 6}, "#ůčťžýířéáěúš"}, {{1, 0}, "#ńąŻŚŁćóężśłź"}, {{1, 1}, "#$§ÄÖÜ^_°äöüß"},
    {{1, 2}, "#¤ÉÄÖÅÜ_éäöåü"}, {{1, 3}, "£$é°ç→↑#ùàòèì"}, {{1, 4}, "éïàëêùî#èâôûç"},
    {{1, 6}, "#ůčťžýířéáěúš"}, {{2, 0}, "£$@←½→↑#—¼‖¾÷"}, {{2, 1}, "#$§ÄÖÜ^_°äöüß"},
    {{2, 2}, "#¤ÉÄÖÅÜ_éäöåü"}, {{2, 3}, "£$é°ç→↑#ùàòèì"}, {{2, 4}, "éïàëêùî#èâôûç"},
    {{2, 5}, "ç$¡áéíóú¿üñèà"}, {{2, 6}, "₺ğİŞÖÇÜĞışöçü"}, {{3, 5}, "#ËČĆŽĐŠëčćžđš"},
    {{3, 7}, "#¤ȚÂȘĂÎıțâșăî"}, {{4, 1}, "#$§ÄÖÜ^_°äöüß"}, {{4, 2}, "#õŠÄÖŽÜÕšäöžü"},
    {{4, 3}, "#$ŠėęŽčūšąųžį"}, {{4, 6}, "#ůčťžýířéáěúš"}, {{6, 6}, "₺ğİŞÖÇÜĞışöçü"},
    {{8, 0}, "£$@←½→↑#—¼‖¾÷"}, {{8, 4}, "éïàëêùî#èâôûç"},
};

// The other alphabets, in the order of the codes from 0x40 on as EN 300 706 lists them. Those of
// Russian and its neighbours follow the sound of the Latin letters, as KOI-7 does.
const std::map<std::pair<std::uint32_t, std::uint32_t>, std::string> kAlphabets = {
    {{4, 0}, "ЧАБЦДЕФГХИЈКЛМНОПЌРСТУВЃЉЊЗЋЖЂШЏчабцдефгхијклмнопќрстувѓљњзћжђш"},
    {{4, 4}, "ЮАБЦДЕФГХИЙКЛМНОПЯРСТУЖВЬЪЗШЭЩЧЫюабцдефгхийклмнопярстужвьъзшэщч"},
    {{4, 5}, "ЮАБЦДЕФГХИЙКЛМНОПЯРСТУЖВЬІЗШЄЩЧЇюабцдефгхийклмнопярстужвьізшєщч"},
    {{6, 7}, "ΐΑΒΓΔΕΖΗΘΙΚΛΜΝΞΟΠΡ΄ΣΤΥΦΧΨΩΪΫάέήίΰαβγδεζηθικλμνξοπρςστυφχψωϊϋόύώ"},
    {{8, 7}, "ﺔءﺒبﺘتﺎاﺑةﺗﺛﺟﺣﺧدذرزﺳﺷﺻﺿطظﻋﻏﺜﺠﺤﺨ#ـﻓﻗﻛﻟﻣﻧﻫوىﻳثجحخﻴﻰﻌﻐﻔفﻘقكﻠلﻤمﻨنﻻ"},
    {{10, 5}, "@ABCDEFGHIJKLMNOPQRSTUVWXYZ←½→↑#אבגדהוזחטיךכלםמןנסעףפץצקרשת₪‖¾÷"},
    {{10, 7}, "ﺔءﺒبﺘتﺎاﺑةﺗﺛﺟﺣﺧدذرزﺳﺷﺻﺿطظﻋﻏﺜﺠﺤﺨ#ـﻓﻗﻛﻟﻣﻧﻫوىﻳثجحخﻴﻰﻌﻐﻔفﻘقكﻠلﻤمﻨنﻻ"},
};

TEST(CharacterSets, HaveTheLettersOfEveryGroupAndOption) {
  std::string letters;
  for (char code = '@'; code != 0x7F; ++code) letters += code;
  for (std::uint32_t group = 0; group < 16; ++group) {
    for (std::uint32_t option = 0; option < 8; ++option) {
      SCOPED_TRACE(testing::Message() << group << ' ' << option);
      const auto set = CharacterSet::of(group, option);
      if (const auto alphabet = kAlphabets.find({group, option}); alphabet != kAlphabets.end()) {
        EXPECT_EQ(textOf(set, letters), alphabet->second);
        EXPECT_EQ(textOf(set, " !$%*+./09:=\x7F"), " !$%*+./09:=■");
        continue;
      }
      const auto national = kNational.find({group, option});
      EXPECT_EQ(textOf(set, kNationalCodes), national == kNational.end() ? "" : national->second);
      EXPECT_EQ(textOf(set, "AZaz"), "AZaz");
      EXPECT_EQ(textOf(set, kNationalCodes, &CharacterSet::basicG0), "#¤@[\\]^_`{¦}~")
          << "table 35";
      EXPECT_EQ(CharacterSet::designated(group << 3 | option).has_value(),
                national != kNational.end());
    }
  }
}

TEST(CharacterSets, HoldOneCharacterOfUnicodeAtEveryPlace) {
  for (const auto& [key, letters] : kAlphabets) {
    const auto set = CharacterSet::of(key.first, key.second);
    for (std::uint8_t code = 0x20; code < 0x80; ++code) {
      EXPECT_EQ(util::utf8ToUtf16(text(set.g0(code))).size(), 1u) << int{code};
      const auto second = util::utf8ToUtf16(text(set.g2(code)));
      EXPECT_TRUE(second.size() <= 1 && second != u"\uFFFD") << int{code};
    }
  }
}

TEST(CharacterSets, HaveTheSecondSetsOfTheirScript) {
  const auto g2Text = [](std::uint32_t group, std::uint32_t option, std::string_view codes) {
    return textOf(CharacterSet::of(group, option), codes, &CharacterSet::g2);
  };
  EXPECT_EQ(g2Text(0, 0, "!'+059;?"), "¡§«°µ’»¿");
  EXPECT_EQ(g2Text(0, 0, "abcdfghijklmno"), "ÆĐªĦĲĿŁØŒºÞŦŊŉ");
  EXPECT_EQ(g2Text(0, 0, "pqrstuvwxyz{|}~"), "ĸæđðħıĳŀłøœßþŧŋ");
  EXPECT_EQ(g2Text(0, 0, "ABCDGHJKMNO"), "ˋˊˆ˜˙¨˚¸˝˛ˇ");
  EXPECT_EQ(g2Text(4, 4, "YZ[`pot"), "ŁłßDdZi");
  EXPECT_EQ(g2Text(6, 7, "YZ[no~"), "ΊΎΏΆΉΈ");
  EXPECT_EQ(g2Text(8, 7, "0189@{~"), "٠١٨٩àâç");
  EXPECT_EQ(g2Text(8, 7, "!\"#$%&'()*+,-./"), "عﻉﺃﺅﺇﺋﺉﭼﭽﭺﭘﭙﭖﭭﮎ");
  EXPECT_EQ(g2Text(10, 7, ":;<=>?_"), "ﻎﻍﻼﻬﻪﻩﻊ");
  EXPECT_EQ(textOf(CharacterSet::of(10, 5), "\"#$"), "\"£$") << "Hebrew, table 46";
}

TEST(Diacritics, MakeTheLetterThatUnicodeHasOrAddTheMark) {
  const auto composed = [](std::string_view letter) {
    std::string all;
    for (std::uint32_t mark = 0; mark < 16; ++mark) {
      all += text(withDiacritic(GlyphText(letter), mark)) + ' ';
    }
    return all;
  };
  EXPECT_EQ(composed("a"), "a à á â ã ā ă ȧ ä ạ å a\u0327 a\u0332 a\u030B ą ǎ ");
  EXPECT_EQ(composed("Z"),
            "Z Z\u0300 Ź Ẑ Z\u0303 Z\u0304 Z\u0306 Ż Z\u0308 Ẓ Z\u030A Z\u0327 "
            "Z\u0332 Z\u030B Z\u0328 Ž ");
  EXPECT_EQ(text(withDiacritic(GlyphText("Å"), 2)), "Ǻ");
  EXPECT_EQ(text(withDiacritic(GlyphText("и"), 6)), "й");
  EXPECT_EQ(text(withDiacritic(GlyphText("ω"), 2)), "ώ");
  EXPECT_EQ(text(withDiacritic(GlyphText("\uFE94"), 2)), "\uFE94") << "five bytes are too many";
}

}  // namespace
}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
