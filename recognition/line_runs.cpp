// SPDX-License-Identifier: MIT
#include "recognition/line_runs.h"

#include <algorithm>
#include <array>
#include <utility>

#include "recognition/letters.h"
#include "recognition/writing_order.h"

namespace korr::recognition {

namespace {

struct Pair {
  const char* opening;
  const char* closing;
};
constexpr std::array<Pair, 3> kPairs = {{{"(", ")"}, {"[", "]"}, {"«", "»"}}};

using Texts = std::vector<std::string>;

std::ptrdiff_t countOf(const Texts& texts, const char* text) {
  return std::count(texts.begin(), texts.end(), text);
}

// In italics a parenthesis is easily read as a brace.
void mendBraces(Texts& texts) {
  const auto missing = countOf(texts, "(") - countOf(texts, ")");
  const bool hasClosing = countOf(texts, "}") > countOf(texts, "{");
  const bool hasOpening = countOf(texts, "{") > countOf(texts, "}");
  if (missing > 0 && hasClosing)
    std::replace(texts.begin(), texts.end(), std::string("}"), std::string(")"));
  if (missing < 0 && hasOpening)
    std::replace(texts.begin(), texts.end(), std::string("{"), std::string("("));
}

// In the order of reading an opening one comes first.
void turnPairs(Texts& texts) {
  for (const auto& pair : kPairs) {
    const auto first = std::find_if(texts.begin(), texts.end(), [&](const std::string& text) {
      return text == pair.opening || text == pair.closing;
    });
    if (first == texts.end() || *first == pair.opening) continue;
    if (countOf(texts, pair.opening) != countOf(texts, pair.closing)) continue;
    for (auto& text : texts) {
      if (text == pair.opening) {
        text = pair.closing;
      } else if (text == pair.closing) {
        text = pair.opening;
      }
    }
  }
}

bool isNumberAt(const Texts& texts, std::size_t i) {
  return i < texts.size() && isDigit(firstLetter(texts[i]));
}

void mendCommas(Texts& texts) {
  const bool isArabic = std::any_of(texts.begin(), texts.end(), [](const std::string& text) {
    return isJoinedScript(firstLetter(text));
  });
  for (std::size_t i = 0; isArabic && i < texts.size(); ++i) {
    auto& text = texts[i];
    if (!text.ends_with(',') || (isNumberAt(texts, i - 1) && isNumberAt(texts, i + 1))) continue;
    text.replace(text.size() - 1, 1, "،");
  }
}

}  // namespace

std::vector<TextRun> runsInOrder(const std::vector<std::string>& texts,
                                 const std::vector<TextRun>& styles) {
  const bool isTurned = std::any_of(texts.begin(), texts.end(), isRightToLeft);
  const auto order = screenOrder(texts);
  Texts read;
  for (const auto i : order) read.push_back(isTurned ? mirrored(texts[i]) : texts[i]);
  mendBraces(read);
  if (isTurned) {
    turnPairs(read);
    mendCommas(read);
  }
  std::vector<TextRun> runs;
  for (std::size_t place = 0; place < order.size(); ++place) {
    const auto& text = read[place];
    const auto& style = styles[order[place]];
    const bool isNew = runs.empty() || (text != " " && (!(runs.back().colour == style.colour) ||
                                                        runs.back().italic != style.italic));
    if (isNew) runs.push_back(style);
    runs.back().text += text;
  }
  return runs;
}

}  // namespace korr::recognition
