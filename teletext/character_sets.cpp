// SPDX-License-Identifier: MIT
#include "teletext/character_sets.h"

#include <string_view>

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {
namespace {

using Set = CharacterSet::Set;
using Subset = CharacterSet::Subset;

constexpr Set makeSet(const char* const (&characters)[96]) {
  Set set{};
  for (std::size_t i = 0; i < set.size(); ++i) set[i] = GlyphText(std::string_view(characters[i]));
  return set;
}

constexpr Subset makeSubset(const char* const (&characters)[13]) {
  Subset subset{};
  for (std::size_t i = 0; i < subset.size(); ++i)
    subset[i] = GlyphText(std::string_view(characters[i]));
  return subset;
}

// EN 300 706, table 35: Latin. ASCII but for two; a nation fills thirteen positions.
constexpr Set kLatin = [] {
  Set set{};
  for (std::size_t i = 0; i < set.size(); ++i) set[i] = GlyphText(static_cast<char>(0x20 + i));
  set[0x24 - 0x20] = GlyphText("¤");
  set[0x7C - 0x20] = GlyphText("¦");
  set[0x7F - 0x20] = GlyphText("■");
  return set;
}();

// clang-format off
// EN 300 706, table 38: Cyrillic, option 1: Serbian and Croatian.
constexpr Set kCyrillicSerbian = makeSet({
    " ", "!", "\"", "#", "$", "%", "&", "'", "(", ")", "*", "+", ",", "-", ".", "/",  // 0x20
    "0", "1", "2", "3", "4", "5", "6", "7", "8", "9", ":", ";", "<", "=", ">", "?",  // 0x30
    "Ч", "А", "Б", "Ц", "Д", "Е", "Ф", "Г", "Х", "И", "Ј", "К", "Л", "М", "Н", "О",  // 0x40
    "П", "Ќ", "Р", "С", "Т", "У", "В", "Ѓ", "Љ", "Њ", "З", "Ћ", "Ж", "Ђ", "Ш", "Џ",  // 0x50
    "ч", "а", "б", "ц", "д", "е", "ф", "г", "х", "и", "ј", "к", "л", "м", "н", "о",  // 0x60
    "п", "ќ", "р", "с", "т", "у", "в", "ѓ", "љ", "њ", "з", "ћ", "ж", "ђ", "ш", "■",  // 0x70
});

// EN 300 706, table 39: Cyrillic, option 2: Russian and Bulgarian.
constexpr Set kCyrillicRussian = makeSet({
    " ", "!", "\"", "#", "$", "%", "ы", "'", "(", ")", "*", "+", ",", "-", ".", "/",  // 0x20
    "0", "1", "2", "3", "4", "5", "6", "7", "8", "9", ":", ";", "<", "=", ">", "?",  // 0x30
    "Ю", "А", "Б", "Ц", "Д", "Е", "Ф", "Г", "Х", "И", "Й", "К", "Л", "М", "Н", "О",  // 0x40
    "П", "Я", "Р", "С", "Т", "У", "Ж", "В", "Ь", "Ъ", "З", "Ш", "Э", "Щ", "Ч", "Ы",  // 0x50
    "ю", "а", "б", "ц", "д", "е", "ф", "г", "х", "и", "й", "к", "л", "м", "н", "о",  // 0x60
    "п", "я", "р", "с", "т", "у", "ж", "в", "ь", "ъ", "з", "ш", "э", "щ", "ч", "■",  // 0x70
});

// EN 300 706, table 40: Cyrillic, option 3: Ukrainian.
constexpr Set kCyrillicUkrainian = makeSet({
    " ", "!", "\"", "#", "$", "%", "ї", "'", "(", ")", "*", "+", ",", "-", ".", "/",  // 0x20
    "0", "1", "2", "3", "4", "5", "6", "7", "8", "9", ":", ";", "<", "=", ">", "?",  // 0x30
    "Ю", "А", "Б", "Ц", "Д", "Е", "Ф", "Г", "Х", "И", "Й", "К", "Л", "М", "Н", "О",  // 0x40
    "П", "Я", "Р", "С", "Т", "У", "Ж", "В", "Ь", "І", "З", "Ш", "Є", "Щ", "Ч", "Ї",  // 0x50
    "ю", "а", "б", "ц", "д", "е", "ф", "г", "х", "и", "й", "к", "л", "м", "н", "о",  // 0x60
    "п", "я", "р", "с", "т", "у", "ж", "в", "ь", "і", "з", "ш", "є", "щ", "ч", "■",  // 0x70
});

// EN 300 706, table 42: Greek.
constexpr Set kGreek = makeSet({
    " ", "!", "\"", "#", "$", "%", "&", "'", "(", ")", "*", "+", ",", "-", ".", "/",  // 0x20
    "0", "1", "2", "3", "4", "5", "6", "7", "8", "9", ":", ";", "«", "=", "»", "?",  // 0x30
    "ΐ", "Α", "Β", "Γ", "Δ", "Ε", "Ζ", "Η", "Θ", "Ι", "Κ", "Λ", "Μ", "Ν", "Ξ", "Ο",  // 0x40
    "Π", "Ρ", "΄", "Σ", "Τ", "Υ", "Φ", "Χ", "Ψ", "Ω", "Ϊ", "Ϋ", "ά", "έ", "ή", "ί",  // 0x50
    "ΰ", "α", "β", "γ", "δ", "ε", "ζ", "η", "θ", "ι", "κ", "λ", "μ", "ν", "ξ", "ο",  // 0x60
    "π", "ρ", "ς", "σ", "τ", "υ", "φ", "χ", "ψ", "ω", "ϊ", "ϋ", "ό", "ύ", "ώ", "■",  // 0x70
});

// EN 300 706, table 44: Arabic, in the contextual forms that the set holds.
constexpr Set kArabic = makeSet({
    " ", "!", "\"", "£", "$", "%", "\uFEF0", "\uFEF2", ")", "(", "*", "+", "،", "-", ".", "/",  // 0x20
    "0", "1", "2", "3", "4", "5", "6", "7", "8", "9", ":", "\u061B", ">", "=", "<", "\u061F",  // 0x30
    "\uFE94", "\u0621", "\uFE92", "\u0628", "\uFE98", "\u062A", "\uFE8E", "\u0627", "\uFE91", "\u0629", "\uFE97", "\uFE9B", "\uFE9F", "\uFEA3", "\uFEA7", "\u062F",  // 0x40
    "\u0630", "\u0631", "\u0632", "\uFEB3", "\uFEB7", "\uFEBB", "\uFEBF", "\u0637", "\u0638", "\uFECB", "\uFECF", "\uFE9C", "\uFEA0", "\uFEA4", "\uFEA8", "#",  // 0x50
    "\u0640", "\uFED3", "\uFED7", "\uFEDB", "\uFEDF", "\uFEE3", "\uFEE7", "\uFEEB", "\u0648", "\u0649", "\uFEF3", "\u062B", "\u062C", "\u062D", "\u062E", "\uFEF4",  // 0x60
    "\uFEF0", "\uFECC", "\uFED0", "\uFED4", "\u0641", "\uFED8", "\u0642", "\u0643", "\uFEE0", "\u0644", "\uFEE4", "\u0645", "\uFEE8", "\u0646", "\uFEFB", "■",  // 0x70
});

// EN 300 706, table 46: Hebrew.
constexpr Set kHebrew = makeSet({
    " ", "!", "\"", "£", "$", "%", "&", "'", "(", ")", "*", "+", ",", "-", ".", "/",  // 0x20
    "0", "1", "2", "3", "4", "5", "6", "7", "8", "9", ":", ";", "<", "=", ">", "?",  // 0x30
    "@", "A", "B", "C", "D", "E", "F", "G", "H", "I", "J", "K", "L", "M", "N", "O",  // 0x40
    "P", "Q", "R", "S", "T", "U", "V", "W", "X", "Y", "Z", "←", "½", "→", "↑", "#",  // 0x50
    "\u05D0", "\u05D1", "\u05D2", "\u05D3", "\u05D4", "\u05D5", "\u05D6", "\u05D7", "\u05D8", "\u05D9", "\u05DA", "\u05DB", "\u05DC", "\u05DD", "\u05DE", "\u05DF",  // 0x60
    "\u05E0", "\u05E1", "\u05E2", "\u05E3", "\u05E4", "\u05E5", "\u05E6", "\u05E7", "\u05E8", "\u05E9", "\u05EA", "₪", "‖", "¾", "÷", "■",  // 0x70
});

// EN 300 706, table 37: Latin supplementary.
constexpr Set kLatinSupplement = makeSet({
    " ", "¡", "¢", "£", "$", "¥", "#", "§", "¤", "‘", "“", "«", "←", "↑", "→", "↓",  // 0x20
    "°", "±", "²", "³", "×", "µ", "¶", "·", "÷", "’", "”", "»", "¼", "½", "¾", "¿",  // 0x30
    " ", "ˋ", "ˊ", "ˆ", "˜", "ˉ", "˘", "˙", "¨", ".", "˚", "¸", "ˍ", "˝", "˛", "ˇ",  // 0x40
    "—", "¹", "®", "©", "™", "♪", "€", "‰", "α", " ", " ", " ", "⅛", "⅜", "⅝", "⅞",  // 0x50
    "Ω", "Æ", "Đ", "ª", "Ħ", " ", "Ĳ", "Ŀ", "Ł", "Ø", "Œ", "º", "Þ", "Ŧ", "Ŋ", "ŉ",  // 0x60
    "ĸ", "æ", "đ", "ð", "ħ", "ı", "ĳ", "ŀ", "ł", "ø", "œ", "ß", "þ", "ŧ", "ŋ", "■",  // 0x70
});

// EN 300 706, table 41: Cyrillic supplementary.
constexpr Set kCyrillicSupplement = makeSet({
    " ", "¡", "¢", "£", " ", "¥", "#", "§", " ", "‘", "“", "«", "←", "↑", "→", "↓",  // 0x20
    "°", "±", "²", "³", "×", "µ", "¶", "·", "÷", "’", "”", "»", "¼", "½", "¾", "¿",  // 0x30
    " ", "ˋ", "ˊ", "ˆ", "˜", "ˉ", "˘", "˙", "¨", ".", "˚", "¸", "ˍ", "˝", "˛", "ˇ",  // 0x40
    "—", "¹", "®", "©", "™", "♪", "€", "‰", "α", "Ł", "ł", "ß", "⅛", "⅜", "⅝", "⅞",  // 0x50
    "D", "E", "F", "G", "I", "J", "K", "L", "N", "Q", "R", "S", "U", "V", "W", "Z",  // 0x60
    "d", "e", "f", "g", "i", "j", "k", "l", "n", "q", "r", "s", "u", "v", "w", "z",  // 0x70
});

// EN 300 706, table 43: Greek supplementary.
constexpr Set kGreekSupplement = makeSet({
    " ", "a", "b", "£", "e", "h", "i", "§", ":", "‘", "“", "k", "←", "↑", "→", "↓",  // 0x20
    "°", "±", "²", "³", "x", "m", "n", "p", "÷", "’", "”", "t", "¼", "½", "¾", "x",  // 0x30
    " ", "ˋ", "ˊ", "ˆ", "˜", "ˉ", "˘", "˙", "¨", ".", "˚", "¸", "ˍ", "˝", "˛", "ˇ",  // 0x40
    "?", "¹", "®", "©", "™", "♪", "€", "‰", "α", "Ί", "Ύ", "Ώ", "⅛", "⅜", "⅝", "⅞",  // 0x50
    "C", "D", "F", "G", "J", "L", "Q", "R", "S", "U", "V", "W", "Y", "Z", "Ά", "Ή",  // 0x60
    "c", "d", "f", "g", "j", "l", "q", "r", "s", "u", "v", "w", "y", "z", "Έ", "■",  // 0x70
});

// EN 300 706, table 45: Arabic supplementary: more contextual forms, digits and Latin letters.
constexpr Set kArabicSupplement = makeSet({
    " ", "\u0639", "\uFEC9", "\uFE83", "\uFE85", "\uFE87", "\uFE8B", "\uFE89", "\uFB7C", "\uFB7D", "\uFB7A", "\uFB58", "\uFB59", "\uFB56", "\uFB6D", "\uFB8E",  // 0x20
    "\u0660", "\u0661", "\u0662", "\u0663", "\u0664", "\u0665", "\u0666", "\u0667", "\u0668", "\u0669", "\uFECE", "\uFECD", "\uFEFC", "\uFEEC", "\uFEEA", "\uFEE9",  // 0x30
    "à", "A", "B", "C", "D", "E", "F", "G", "H", "I", "J", "K", "L", "M", "N", "O",  // 0x40
    "P", "Q", "R", "S", "T", "U", "V", "W", "X", "Y", "Z", "ë", "ê", "ù", "î", "\uFECA",  // 0x50
    "é", "a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l", "m", "n", "o",  // 0x60
    "p", "q", "r", "s", "t", "u", "v", "w", "x", "y", "z", "â", "ô", "û", "ç", " ",  // 0x70
});

// EN 300 706, table 36: Latin national option subsets.
// English
constexpr Subset kEnglish = makeSubset({
    "£", "$", "@", "←", "½", "→", "↑", "#", "—", "¼", "‖", "¾", "÷"});
// German
constexpr Subset kGerman = makeSubset({
    "#", "$", "§", "Ä", "Ö", "Ü", "^", "_", "°", "ä", "ö", "ü", "ß"});
// Swedish, Finnish, Hungarian
constexpr Subset kSwedishFinnishHungarian = makeSubset({
    "#", "¤", "É", "Ä", "Ö", "Å", "Ü", "_", "é", "ä", "ö", "å", "ü"});
// Italian
constexpr Subset kItalian = makeSubset({
    "£", "$", "é", "°", "ç", "→", "↑", "#", "ù", "à", "ò", "è", "ì"});
// French
constexpr Subset kFrench = makeSubset({
    "é", "ï", "à", "ë", "ê", "ù", "î", "#", "è", "â", "ô", "û", "ç"});
// Portuguese, Spanish
constexpr Subset kPortugueseSpanish = makeSubset({
    "ç", "$", "¡", "á", "é", "í", "ó", "ú", "¿", "ü", "ñ", "è", "à"});
// Czech, Slovak
constexpr Subset kCzechSlovak = makeSubset({
    "#", "ů", "č", "ť", "ž", "ý", "í", "ř", "é", "á", "ě", "ú", "š"});
// Polish
constexpr Subset kPolish = makeSubset({
    "#", "ń", "ą", "Ż", "Ś", "Ł", "ć", "ó", "ę", "ż", "ś", "ł", "ź"});
// Turkish
constexpr Subset kTurkish = makeSubset({
    "₺", "ğ", "İ", "Ş", "Ö", "Ç", "Ü", "Ğ", "ı", "ş", "ö", "ç", "ü"});
// Serbian, Croatian, Slovenian
constexpr Subset kSerbianCroatianSlovenian = makeSubset({
    "#", "Ë", "Č", "Ć", "Ž", "Đ", "Š", "ë", "č", "ć", "ž", "đ", "š"});
// Romanian
constexpr Subset kRomanian = makeSubset({
    "#", "¤", "Ț", "Â", "Ș", "Ă", "Î", "ı", "ț", "â", "ș", "ă", "î"});
// Estonian
constexpr Subset kEstonian = makeSubset({
    "#", "õ", "Š", "Ä", "Ö", "Ž", "Ü", "Õ", "š", "ä", "ö", "ž", "ü"});
// Lettish, Lithuanian
constexpr Subset kLettishLithuanian = makeSubset({
    "#", "$", "Š", "ė", "ę", "Ž", "č", "ū", "š", "ą", "ų", "ž", "į"});

// A diacritic as a combining mark, and the letters that have it precomposed: each letter, then what
// it becomes.
struct Diacritic {
  const char* combining;
  const char* composed;
};

// EN 300 706, table 37, column 4.
constexpr std::array<Diacritic, 16> kDiacritics = {{
    {"", ""},
    {"\u0300", "AÀEÈIÌNǸOÒUÙWẀYỲaàeèiìnǹoòuùwẁyỳΑᾺΕῈΗῊΙῚΟῸΥῪΩῺαὰεὲηὴιὶοὸυὺωὼϊῒϋῢЕЀИЍеѐиѝÂẦÜǛâầêềôồüǜĂẰăằ"},  // grave
    {"\u0301", "AÁCĆEÉGǴIÍKḰLĹMḾNŃOÓPṔRŔSŚUÚWẂYÝZŹaácćeégǵiíkḱlĺmḿnńoópṕrŕsśuúwẃyýzźΑΆΕΈΗΉΙΊΟΌΥΎΩΏαάεέηήιίοόυύωώϊΐϋΰГЃКЌгѓкќÂẤÅǺÇḈÕṌÜǗâấåǻçḉêếïḯôốõṍüǘĂẮăắ"},  // acute
    {"\u0302", "AÂCĈEÊGĜHĤIÎJĴOÔSŜUÛWŴYŶZẐaâcĉeêgĝhĥiîjĵoôsŝuûwŵyŷzẑ"},  // circumflex
    {"\u0303", "AÃEẼIĨNÑOÕUŨVṼYỸaãeẽiĩnñoõuũvṽyỹÂẪâẫêễôỗĂẴăẵ"},  // tilde
    {"\u0304", "AĀEĒGḠIĪOŌUŪYȲaāeēgḡiīoōuūyȳΑᾹΙῙΥῩαᾱιῑυῡИӢУӮиӣуӯÄǞÕȬÖȪÜǕäǟõȭöȫüǖ"},  // macron
    {"\u0306", "AĂEĔGĞIĬOŎUŬaăeĕgğiĭoŏuŭΑᾸΙῘΥῨαᾰιῐυῠАӐЕӖЖӁИЙУЎаӑеӗжӂийуў"},  // breve
    {"\u0307", "AȦBḂCĊDḊEĖFḞGĠHḢIİMṀNṄOȮPṖRṘSṠTṪWẆXẊYẎZŻaȧbḃcċdḋeėfḟgġhḣmṁnṅoȯpṗrṙsṡtṫwẇxẋyẏzżŚṤśṥŠṦšṧ"},  // dot above
    {"\u0308", "AÄEËHḦIÏOÖUÜWẄXẌYŸaäeëhḧiïoötẗuüwẅxẍyÿΙΪΥΫιϊυϋІЇАӒЕЁЖӜЗӞИӤОӦУӰЧӴЫӸЭӬаӓеёжӝзӟиӥоӧуӱчӵыӹэӭіїÕṎõṏūṻ"},  // diaeresis
    {"\u0323", "AẠBḄDḌEẸHḤIỊKḲLḶMṂNṆOỌRṚSṢTṬUỤVṾWẈYỴZẒaạbḅdḍeẹhḥiịkḳlḷmṃnṇoọrṛsṣtṭuụvṿwẉyỵzẓÂẬâậêệôộĂẶăặ"},  // dot below
    {"\u030A", "AÅUŮaåuůwẘyẙ"},  // ring
    {"\u0327", "CÇDḐEȨGĢHḨKĶLĻNŅRŖSŞTŢcçdḑeȩgģhḩkķlļnņrŗsştţĆḈćḉ"},  // cedilla
    {"\u0332", ""},  // low line
    {"\u030B", "OŐUŰoőuűУӲуӳ"},  // double acute
    {"\u0328", "AĄEĘIĮOǪUŲaąeęiįoǫuų"},  // ogonek
    {"\u030C", "AǍCČDĎEĚGǦHȞIǏKǨLĽNŇOǑRŘSŠTŤUǓZŽaǎcčdďeěgǧhȟiǐjǰkǩlľnňoǒrřsštťuǔzžÜǙüǚ"},  // caron
}};
// clang-format on

// The positions that a subset fills, in its order.
constexpr std::string_view kNationalCodes = "#$@[\\]^_`{|}~";

std::optional<GlyphText> characterOf(const Set& set, std::uint8_t code) {
  const GlyphText character = set[(code - 0x20u) % set.size()];
  if (character.view().empty()) return std::nullopt;
  return character;
}

// Takes the first character off UTF-8 text that is known to be well-formed.
std::string_view takeCharacter(std::string_view& text) {
  const auto lead = static_cast<std::uint8_t>(text.front());
  const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  const auto character = text.substr(0, length);
  text.remove_prefix(length);
  return character;
}

// Table 32, by group and option.
constexpr CharacterSet latin(const Subset* national) {
  return {kLatin, kLatinSupplement, national};
}

constexpr CharacterSet kNone = latin(nullptr);

using Group = std::array<CharacterSet, 8>;

constexpr Group kWestern = {latin(&kEnglish),
                            latin(&kGerman),
                            latin(&kSwedishFinnishHungarian),
                            latin(&kItalian),
                            latin(&kFrench),
                            latin(&kPortugueseSpanish),
                            latin(&kCzechSlovak),
                            kNone};
constexpr Group kCentral = {latin(&kPolish),
                            latin(&kGerman),
                            latin(&kSwedishFinnishHungarian),
                            latin(&kItalian),
                            latin(&kFrench),
                            kNone,
                            latin(&kCzechSlovak),
                            kNone};
constexpr Group kWithTurkish = {latin(&kEnglish),
                                latin(&kGerman),
                                latin(&kSwedishFinnishHungarian),
                                latin(&kItalian),
                                latin(&kFrench),
                                latin(&kPortugueseSpanish),
                                latin(&kTurkish),
                                kNone};
constexpr Group kSouthEast = {
    kNone, kNone, kNone, kNone, kNone, latin(&kSerbianCroatianSlovenian), kNone, latin(&kRomanian)};
constexpr Group kCyrillicAndBaltic = {
    CharacterSet{kCyrillicSerbian, kCyrillicSupplement, nullptr},
    latin(&kGerman),
    latin(&kEstonian),
    latin(&kLettishLithuanian),
    CharacterSet{kCyrillicRussian, kCyrillicSupplement, nullptr},
    CharacterSet{kCyrillicUkrainian, kCyrillicSupplement, nullptr},
    latin(&kCzechSlovak),
    kNone};
constexpr Group kGreekAndTurkish = {kNone,
                                    kNone,
                                    kNone,
                                    kNone,
                                    kNone,
                                    kNone,
                                    latin(&kTurkish),
                                    CharacterSet{kGreek, kGreekSupplement, nullptr}};
constexpr Group kArabicAndLatin = {CharacterSet{kLatin, kArabicSupplement, &kEnglish},
                                   kNone,
                                   kNone,
                                   kNone,
                                   CharacterSet{kLatin, kArabicSupplement, &kFrench},
                                   kNone,
                                   kNone,
                                   CharacterSet{kArabic, kArabicSupplement, nullptr}};
constexpr Group kHebrewAndArabic = {kNone, kNone,
                                    kNone, kNone,
                                    kNone, CharacterSet{kHebrew, kArabicSupplement, nullptr},
                                    kNone, CharacterSet{kArabic, kArabicSupplement, nullptr}};

const Group* groupOf(std::uint32_t number) {
  switch (number) {
    case 0:
      return &kWestern;
    case 1:
      return &kCentral;
    case 2:
      return &kWithTurkish;
    case 3:
      return &kSouthEast;
    case 4:
      return &kCyrillicAndBaltic;
    case 6:
      return &kGreekAndTurkish;
    case 8:
      return &kArabicAndLatin;
    case 10:
      return &kHebrewAndArabic;
    default:
      return nullptr;
  }
}

}  // namespace

CharacterSet CharacterSet::of(std::uint32_t group, std::uint32_t option) {
  const auto* options = groupOf(group);
  return options && option < options->size() ? (*options)[option] : kNone;
}

std::optional<CharacterSet> CharacterSet::designated(std::uint32_t code) {
  const CharacterSet set = of(code >> 3, code & 7);
  const bool isEmpty = set.g0_ == &kLatin && !set.national_;
  return isEmpty ? std::nullopt : std::optional(set);
}

std::optional<GlyphText> CharacterSet::g0(std::uint8_t code) const {
  if (g0_ == &kLatin) {
    const auto position = kNationalCodes.find(static_cast<char>(code));
    if (position != kNationalCodes.npos) {
      if (!national_) return std::nullopt;
      return (*national_)[position];
    }
  }
  return characterOf(*g0_, code);
}

std::optional<GlyphText> CharacterSet::basicG0(std::uint8_t code) const {
  return characterOf(*g0_, code);
}

std::optional<GlyphText> CharacterSet::g2(std::uint8_t code) const {
  return characterOf(*g2_, code);
}

GlyphText withDiacritic(GlyphText letter, std::uint32_t mark) {
  const Diacritic& diacritic = kDiacritics[mark % kDiacritics.size()];
  for (std::string_view rest = diacritic.composed; !rest.empty();) {
    const auto base = takeCharacter(rest);
    const auto composed = takeCharacter(rest);
    if (base == letter.view()) return GlyphText(composed);
  }
  std::array<char, GlyphText::kMaxBytes> bytes{};
  std::size_t size = 0;
  for (const auto part : {letter.view(), std::string_view(diacritic.combining)}) {
    if (size + part.size() > bytes.size()) break;
    for (const char byte : part) bytes[size++] = byte;
  }
  return GlyphText(std::string_view(bytes.data(), size));
}

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
