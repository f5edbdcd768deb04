// SPDX-License-Identifier: MIT
#include "recognition/tesseract/hunspell_words.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <hunspell/hunspell.hxx>
#include <string_view>
#include <vector>

#include "recognition/letters.h"

namespace korr::recognition {

namespace {

namespace fs = std::filesystem;

constexpr const char* kFolder = "/usr/share/hunspell";

// The names of dictionaries begin with two-letter codes.
constexpr std::array<std::array<std::string_view, 2>, 40> kCodes = {{
    {"ara", "ar"}, {"bul", "bg"}, {"cat", "ca"}, {"ces", "cs"}, {"cym", "cy"}, {"dan", "da"},
    {"deu", "de"}, {"ell", "el"}, {"eng", "en"}, {"spa", "es"}, {"est", "et"}, {"eus", "eu"},
    {"fas", "fa"}, {"fra", "fr"}, {"gla", "gd"}, {"gle", "ga"}, {"glg", "gl"}, {"heb", "he"},
    {"hrv", "hr"}, {"hun", "hu"}, {"isl", "is"}, {"ita", "it"}, {"kaz", "kk"}, {"lav", "lv"},
    {"lit", "lt"}, {"nld", "nl"}, {"nor", "nb"}, {"pol", "pl"}, {"por", "pt"}, {"ron", "ro"},
    {"rus", "ru"}, {"slk", "sk"}, {"slv", "sl"}, {"sqi", "sq"}, {"srp", "sr"}, {"swe", "sv"},
    {"tur", "tr"}, {"ukr", "uk"}, {"uzb", "uz"}, {"vie", "vi"},
}};

// "en_US" rather than "en_ZA": the one that repeats the language, or the first by name.
fs::path dictionaryOf(std::string_view language) {
  const auto code =
      std::find_if(kCodes.begin(), kCodes.end(), [&](const auto& c) { return c[0] == language; });
  if (code == kCodes.end()) return {};
  std::string home((*code)[1]);
  for (auto& c : home) c = static_cast<char>(c - 'a' + 'A');
  if (language == "eng") home = "US";
  std::vector<fs::path> found;
  std::error_code none;
  for (const auto& entry : fs::directory_iterator(kFolder, none)) {
    const auto name = entry.path().stem().string();
    if (entry.path().extension() != ".dic") continue;
    if (name == (*code)[1] || name == std::string((*code)[1]) + '_' + home) return entry.path();
    if (name.starts_with(std::string((*code)[1]) + '_')) found.push_back(entry.path());
  }
  std::sort(found.begin(), found.end());
  return found.empty() ? fs::path() : found.front();
}

class HunspellWords final : public IWordList {
 public:
  void add(const fs::path& dictionary) {
    auto affixes = dictionary;
    affixes.replace_extension(".aff");
    dictionaries_.push_back(std::make_unique<Hunspell>(affixes.c_str(), dictionary.c_str()));
  }
  bool isEmpty() const { return dictionaries_.empty(); }

  // Without the marks around it. A list in another encoding than UTF-8 is not asked for letters
  // that it cannot hold.
  bool contains(const std::string& word) override {
    auto letters = lettersOf(word);
    while (!letters.empty() && !isLetter(letters.back())) letters.pop_back();
    const auto first = std::find_if(letters.begin(), letters.end(), isLetter);
    letters.erase(letters.begin(), first);
    if (letters.empty()) return false;
    for (const auto& dictionary : dictionaries_) {
      std::string text;
      const bool isUtf8 = std::string_view(dictionary->get_dic_encoding()) == "UTF-8";
      const bool isLatin1 =
          std::string_view(dictionary->get_dic_encoding()).starts_with("ISO8859-1");
      for (const auto letter : letters) {
        if (isUtf8) {
          text += utf8Of(letter);
        } else if (letter < (isLatin1 ? 0x100u : 0x80u)) {
          text += static_cast<char>(letter);
        } else {
          return true;  // not to be told: no reason for doubt
        }
      }
      if (dictionary->spell(text)) return true;
    }
    return false;
  }

 private:
  std::vector<std::unique_ptr<Hunspell>> dictionaries_;
};

}  // namespace

std::unique_ptr<IWordList> openHunspell(const std::string& language) {
  auto words = std::make_unique<HunspellWords>();
  for (std::size_t first = 0; first <= language.size();) {
    const auto end = std::min(language.find('+', first), language.size());
    const auto dictionary = dictionaryOf(std::string_view(language).substr(first, end - first));
    if (!dictionary.empty()) words->add(dictionary);
    first = end + 1;
  }
  if (words->isEmpty()) return nullptr;
  return words;
}

}  // namespace korr::recognition
