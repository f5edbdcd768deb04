// SPDX-License-Identifier: MIT
#include "recognition/word_variants.h"

#include <algorithm>

#include "recognition/letters.h"
#include "recognition/writing_order.h"

namespace korr::recognition {

namespace {

using Variant = std::vector<std::string>;

constexpr std::size_t kMostVariants = 64;

int scoreOf(const Variant& variant, IWordList* words) {
  const std::string text = logicalOrder(variant);
  return (hasUsualCase(text) ? 1 : 0) + (words && words->contains(text) ? 2 : 0);
}

}  // namespace

Variant likeliestWord(const std::vector<std::vector<std::string>>& choices, IWordList* words) {
  std::vector<Variant> variants{{}};
  for (const auto& texts : choices) {
    std::vector<Variant> longer;
    for (const auto& text : texts) {
      for (const auto& variant : variants) {
        if (&text != &texts.front() && longer.size() >= kMostVariants) break;
        longer.push_back(variant);
        longer.back().push_back(text);
      }
    }
    variants = std::move(longer);
  }
  std::size_t best = 0;
  int most = scoreOf(variants.front(), words);
  for (std::size_t i = 1; i < variants.size(); ++i) {
    const int score = scoreOf(variants[i], words);
    if (score <= most) continue;
    most = score;
    best = i;
  }
  return variants[best];
}

}  // namespace korr::recognition
