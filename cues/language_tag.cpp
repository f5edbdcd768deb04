// SPDX-License-Identifier: MIT
#include "cues/language_tag.h"

#include <algorithm>
#include <array>
#include <utility>

namespace korr::txsub {

namespace {

using Language = std::pair<std::string_view, std::string_view>;

// ISO 639-2, both its bibliographic and its terminological codes, to ISO 639-1; with the codes
// "mol", "scc" and "scr", which are withdrawn but still on air.
// clang-format off
constexpr auto kLanguages = std::to_array<Language>({
    {"aar", "aa"}, {"abk", "ab"}, {"afr", "af"}, {"aka", "ak"}, {"alb", "sq"}, {"amh", "am"},
    {"ara", "ar"}, {"arg", "an"}, {"arm", "hy"}, {"asm", "as"}, {"ava", "av"}, {"ave", "ae"},
    {"aym", "ay"}, {"aze", "az"}, {"bak", "ba"}, {"bam", "bm"}, {"baq", "eu"}, {"bel", "be"},
    {"ben", "bn"}, {"bis", "bi"}, {"bod", "bo"}, {"bos", "bs"}, {"bre", "br"}, {"bul", "bg"},
    {"bur", "my"}, {"cat", "ca"}, {"ces", "cs"}, {"cha", "ch"}, {"che", "ce"}, {"chi", "zh"},
    {"chu", "cu"}, {"chv", "cv"}, {"cor", "kw"}, {"cos", "co"}, {"cre", "cr"}, {"cym", "cy"},
    {"cze", "cs"}, {"dan", "da"}, {"deu", "de"}, {"div", "dv"}, {"dut", "nl"}, {"dzo", "dz"},
    {"ell", "el"}, {"eng", "en"}, {"epo", "eo"}, {"est", "et"}, {"eus", "eu"}, {"ewe", "ee"},
    {"fao", "fo"}, {"fas", "fa"}, {"fij", "fj"}, {"fin", "fi"}, {"fra", "fr"}, {"fre", "fr"},
    {"fry", "fy"}, {"ful", "ff"}, {"geo", "ka"}, {"ger", "de"}, {"gla", "gd"}, {"gle", "ga"},
    {"glg", "gl"}, {"glv", "gv"}, {"gre", "el"}, {"grn", "gn"}, {"guj", "gu"}, {"hat", "ht"},
    {"hau", "ha"}, {"heb", "he"}, {"her", "hz"}, {"hin", "hi"}, {"hmo", "ho"}, {"hrv", "hr"},
    {"hun", "hu"}, {"hye", "hy"}, {"ibo", "ig"}, {"ice", "is"}, {"ido", "io"}, {"iii", "ii"},
    {"iku", "iu"}, {"ile", "ie"}, {"ina", "ia"}, {"ind", "id"}, {"ipk", "ik"}, {"isl", "is"},
    {"ita", "it"}, {"jav", "jv"}, {"jpn", "ja"}, {"kal", "kl"}, {"kan", "kn"}, {"kas", "ks"},
    {"kat", "ka"}, {"kau", "kr"}, {"kaz", "kk"}, {"khm", "km"}, {"kik", "ki"}, {"kin", "rw"},
    {"kir", "ky"}, {"kom", "kv"}, {"kon", "kg"}, {"kor", "ko"}, {"kua", "kj"}, {"kur", "ku"},
    {"lao", "lo"}, {"lat", "la"}, {"lav", "lv"}, {"lim", "li"}, {"lin", "ln"}, {"lit", "lt"},
    {"ltz", "lb"}, {"lub", "lu"}, {"lug", "lg"}, {"mac", "mk"}, {"mah", "mh"}, {"mal", "ml"},
    {"mao", "mi"}, {"mar", "mr"}, {"may", "ms"}, {"mkd", "mk"}, {"mlg", "mg"}, {"mlt", "mt"},
    {"mol", "ro"}, {"mon", "mn"}, {"mri", "mi"}, {"msa", "ms"}, {"mya", "my"}, {"nau", "na"},
    {"nav", "nv"}, {"nbl", "nr"}, {"nde", "nd"}, {"ndo", "ng"}, {"nep", "ne"}, {"nld", "nl"},
    {"nno", "nn"}, {"nob", "nb"}, {"nor", "no"}, {"nya", "ny"}, {"oci", "oc"}, {"oji", "oj"},
    {"ori", "or"}, {"orm", "om"}, {"oss", "os"}, {"pan", "pa"}, {"per", "fa"}, {"pli", "pi"},
    {"pol", "pl"}, {"por", "pt"}, {"pus", "ps"}, {"que", "qu"}, {"roh", "rm"}, {"ron", "ro"},
    {"rum", "ro"}, {"run", "rn"}, {"rus", "ru"}, {"sag", "sg"}, {"san", "sa"}, {"scc", "sr"},
    {"scr", "hr"}, {"sin", "si"}, {"slk", "sk"}, {"slo", "sk"}, {"slv", "sl"}, {"sme", "se"},
    {"smo", "sm"}, {"sna", "sn"}, {"snd", "sd"}, {"som", "so"}, {"sot", "st"}, {"spa", "es"},
    {"sqi", "sq"}, {"srd", "sc"}, {"srp", "sr"}, {"ssw", "ss"}, {"sun", "su"}, {"swa", "sw"},
    {"swe", "sv"}, {"tah", "ty"}, {"tam", "ta"}, {"tat", "tt"}, {"tel", "te"}, {"tgk", "tg"},
    {"tgl", "tl"}, {"tha", "th"}, {"tib", "bo"}, {"tir", "ti"}, {"ton", "to"}, {"tsn", "tn"},
    {"tso", "ts"}, {"tuk", "tk"}, {"tur", "tr"}, {"twi", "ak"}, {"uig", "ug"}, {"ukr", "uk"},
    {"urd", "ur"}, {"uzb", "uz"}, {"ven", "ve"}, {"vie", "vi"}, {"vol", "vo"}, {"wel", "cy"},
    {"wln", "wa"}, {"wol", "wo"}, {"xho", "xh"}, {"yid", "yi"}, {"yor", "yo"}, {"zha", "za"},
    {"zho", "zh"}, {"zul", "zu"},
});
// clang-format on
static_assert(std::ranges::is_sorted(kLanguages));

// ISO 639-2: the twenty languages with a bibliographic code of their own, and its terminological
// one.
// clang-format off
constexpr auto kBibliographic = std::to_array<Language>({
    {"alb", "sqi"}, {"arm", "hye"}, {"baq", "eus"}, {"bur", "mya"}, {"chi", "zho"}, {"cze", "ces"},
    {"dut", "nld"}, {"fre", "fra"}, {"geo", "kat"}, {"ger", "deu"}, {"gre", "ell"}, {"ice", "isl"},
    {"mac", "mkd"}, {"mao", "mri"}, {"may", "msa"}, {"per", "fas"}, {"rum", "ron"}, {"slo", "slk"},
    {"tib", "bod"}, {"wel", "cym"},
});
// clang-format on
static_assert(std::ranges::is_sorted(kBibliographic));

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

// In lower case; empty when it is no code.
std::string codeOf(std::string_view iso639) {
  std::string code = lowerCase(iso639);
  const bool isCode =
      code.size() == 3 && std::ranges::all_of(code, [](char c) { return c >= 'a' && c <= 'z'; });
  return isCode ? code : std::string();
}

// What a table says of a code; the code itself where it says nothing.
template <class Table>
std::string lookUp(const Table& table, const std::string& code) {
  const auto known = std::ranges::lower_bound(table, code, {}, &Language::first);
  const bool isKnown = known != table.end() && known->first == code;
  return isKnown ? std::string(known->second) : code;
}

}  // namespace

std::string languageTag(std::string_view iso639) {
  const std::string code = codeOf(iso639);
  return code.empty() ? "und" : lookUp(kLanguages, code);
}

std::string terminologicalCode(std::string_view iso639) {
  const std::string code = codeOf(iso639);
  return code.empty() ? "und" : lookUp(kBibliographic, code);
}

}  // namespace korr::txsub
