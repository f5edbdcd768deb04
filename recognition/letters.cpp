// SPDX-License-Identifier: MIT
#include "recognition/letters.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace korr::recognition {

std::vector<char32_t> lettersOf(const std::string& text) {
  std::vector<char32_t> out;
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i]);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC0 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                                             : 4;
    if (length == 0 || i + length > text.size()) {
      ++i;
      continue;
    }
    char32_t letter = length == 1 ? lead : lead & (0xFFu >> (length + 1));
    for (std::size_t k = 1; k < length; ++k)
      letter = letter << 6 | (static_cast<unsigned char>(text[i + k]) & 0x3Fu);
    out.push_back(letter);
    i += length;
  }
  return out;
}

char32_t firstLetter(const std::string& text) {
  const auto letters = lettersOf(text);
  return letters.empty() ? 0 : letters.front();
}

std::string utf8Of(char32_t letter) {
  std::string out;
  if (letter < 0x80) {
    out += static_cast<char>(letter);
  } else if (letter < 0x800) {
    out += static_cast<char>(0xC0 | letter >> 6);
    out += static_cast<char>(0x80 | (letter & 0x3F));
  } else if (letter < 0x10000) {
    out += static_cast<char>(0xE0 | letter >> 12);
    out += static_cast<char>(0x80 | (letter >> 6 & 0x3F));
    out += static_cast<char>(0x80 | (letter & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | letter >> 18);
    out += static_cast<char>(0x80 | (letter >> 12 & 0x3F));
    out += static_cast<char>(0x80 | (letter >> 6 & 0x3F));
    out += static_cast<char>(0x80 | (letter & 0x3F));
  }
  return out;
}

bool isLowMark(char32_t letter) {
  switch (letter) {
    case U'.':
    case U',':
    case U'_':
    case U'„':
    case U'‚':
    case U'…':
    case U'،':
    case U'۔':
      return true;
    default:
      return false;
  }
}

bool isHighMark(char32_t letter) {
  switch (letter) {
    case U'\'':
    case U'"':
    case U'`':
    case U'‘':
    case U'’':
    case U'“':
    case U'”':
    case U'°':
    case U'´':
    case U'׳':
    case U'״':
      return true;
    default:
      return false;
  }
}

bool isDigit(char32_t letter) {
  return (letter >= U'0' && letter <= U'9') || (letter >= 0x660 && letter <= 0x669) ||
         (letter >= 0x6F0 && letter <= 0x6F9);
}

bool isLetter(char32_t letter) {
  if (letter < 0x80)
    return (letter >= U'A' && letter <= U'Z') || (letter >= U'a' && letter <= U'z');
  return (letter >= 0xC0 && letter <= 0x24F && letter != 0xD7 && letter != 0xF7) ||
         (letter >= 0x386 && letter <= 0x3FF) || (letter >= 0x400 && letter <= 0x52F) ||
         (letter >= 0x5D0 && letter <= 0x5EA) || (letter >= 0x620 && letter <= 0x65F) ||
         (letter >= 0x671 && letter <= 0x6D3) || (letter >= 0x1E00 && letter <= 0x1FFF);
}

bool isUpperCase(char32_t letter) {
  if (letter < 0x80) return letter >= U'A' && letter <= U'Z';
  if (letter >= 0xC0 && letter <= 0xDE) return letter != 0xD7;
  if (letter >= 0x139 && letter <= 0x148) return letter % 2 == 1;
  if (letter >= 0x100 && letter <= 0x177) return letter % 2 == 0;
  if (letter >= 0x179 && letter <= 0x17D) return letter % 2 == 1;
  if (letter == 0x178) return true;
  if (letter >= 0x386 && letter <= 0x3AB) return letter != 0x390;
  return letter >= 0x400 && letter <= 0x42F;
}

bool isLowerCase(char32_t letter) {
  if (letter < 0x80) return letter >= U'a' && letter <= U'z';
  return isLetter(letter) && !isUpperCase(letter) && letter < 0x530;
}

bool hasUsualCase(const std::string& word) {
  std::size_t upper = 0, lower = 0;
  bool isFirstUpper = false;
  for (const auto letter : lettersOf(word)) {
    if (isUpperCase(letter)) {
      if (upper + lower == 0) isFirstUpper = true;
      ++upper;
    } else if (isLowerCase(letter)) {
      ++lower;
    }
  }
  return upper == 0 || lower == 0 || (upper == 1 && isFirstUpper);
}

namespace {

// A quotation mark between Hebrew letters marks an abbreviation: gershayim.
std::string withHebrewMarks(const std::vector<char32_t>& letters) {
  const auto isHebrew = [](char32_t letter) { return letter >= 0x5D0 && letter <= 0x5EA; };
  std::string out;
  for (std::size_t i = 0; i < letters.size(); ++i) {
    const bool isBetween =
        i > 0 && i + 1 < letters.size() && isHebrew(letters[i - 1]) && isHebrew(letters[i + 1]);
    const bool isQuote = letters[i] == U'"' || letters[i] == U'”' || letters[i] == U'“';
    out += utf8Of(isBetween && isQuote ? U'״' : letters[i]);
  }
  return out;
}

}  // namespace

std::string inOneAlphabet(const std::string& word) {
  struct Lookalike {
    char32_t latin, greek, cyrillic;  // 0: none
  };
  constexpr Lookalike kLookalikes[] = {
      {U'A', U'Α', U'А'}, {U'B', U'Β', U'В'}, {U'C', 0, U'С'},    {U'E', U'Ε', U'Е'},
      {U'H', U'Η', U'Н'}, {U'I', U'Ι', 0},    {U'K', U'Κ', U'К'}, {U'M', U'Μ', U'М'},
      {U'N', U'Ν', 0},    {U'O', U'Ο', U'О'}, {U'P', U'Ρ', U'Р'}, {U'T', U'Τ', U'Т'},
      {U'X', U'Χ', U'Х'}, {U'Y', U'Υ', 0},    {U'Z', U'Ζ', 0},    {U'a', 0, U'а'},
      {U'c', 0, U'с'},    {U'e', 0, U'е'},    {U'o', U'ο', U'о'}, {U'p', 0, U'р'},
      {U'u', U'υ', 0},    {U'v', U'ν', 0},    {U'x', U'χ', U'х'}, {U'y', 0, U'у'},
      {U'µ', U'μ', 0}};
  std::size_t greek = 0, cyrillic = 0, latin = 0;
  const auto letters = lettersOf(word);
  for (const auto letter : letters) {
    greek += letter >= 0x370 && letter < 0x400;
    cyrillic += letter >= 0x400 && letter < 0x530;
    latin += letter < 0x250 && isLetter(letter);
  }
  if (latin == 0 && greek + cyrillic == 0) return withHebrewMarks(letters);
  if (greek + cyrillic == 0 || latin > std::max(greek, cyrillic)) return word;
  std::string out;
  for (auto letter : letters) {
    for (const auto& alike : kLookalikes) {
      const auto other = greek > cyrillic ? alike.greek : alike.cyrillic;
      if (letter == alike.latin && other != 0) letter = other;
    }
    out += utf8Of(letter);
  }
  return out;
}

bool isRightToLeftLetter(char32_t letter) {
  return (letter >= 0x590 && letter <= 0x8FF && !isDigit(letter) && letter != 0x66B &&
          letter != 0x66C) ||
         (letter >= 0xFB1D && letter <= 0xFDFF) || (letter >= 0xFE70 && letter <= 0xFEFF);
}

bool isJoinedLanguage(const std::string& languages) {
  constexpr std::array<std::string_view, 8> kJoined = {"ara", "ckb", "fas", "kur_ara",
                                                       "pus", "snd", "uig", "urd"};
  return std::any_of(kJoined.begin(), kJoined.end(), [&](std::string_view language) {
    return ('+' + languages + '+').find('+' + std::string(language) + '+') != std::string::npos;
  });
}

bool isJoinedScript(char32_t letter) {
  return (letter >= 0x600 && letter <= 0x77F && !isDigit(letter)) ||
         (letter >= 0xFB50 && letter <= 0xFEFF);
}

}  // namespace korr::recognition
