// SPDX-License-Identifier: MIT

// What there is to know of single characters.
#pragma once

#include <string>
#include <vector>

namespace korr::recognition {

/// The first character; 0 for none or a damaged one.
char32_t firstLetter(const std::string& text);

std::vector<char32_t> lettersOf(const std::string& text);

std::string utf8Of(char32_t letter);

/// Marks that stand on the baseline, or low: . , ; : _ and low quotation marks.
bool isLowMark(char32_t letter);

/// Marks that hang at the height of capitals: apostrophes and quotation marks.
bool isHighMark(char32_t letter);

bool isDigit(char32_t letter);

/// Of Latin, Greek, Cyrillic, Hebrew or Arabic.
bool isLetter(char32_t letter);

bool isUpperCase(char32_t letter);
bool isLowerCase(char32_t letter);

/// Whether a word is in small letters, in capitals or begins with one, as most words are.
bool hasUsualCase(const std::string& word);

/// Letters of one word in one alphabet: a capital A among Cyrillic letters is the Cyrillic one.
std::string inOneAlphabet(const std::string& word);

/// Hebrew and Arabic letters and marks.
bool isRightToLeftLetter(char32_t letter);

/// Whether the letters of a language (ISO 639-2, or several as in "ara+eng") are joined.
bool isJoinedLanguage(const std::string& languages);

/// Whose letters are joined: Arabic.
bool isJoinedScript(char32_t letter);

}  // namespace korr::recognition
