// SPDX-License-Identifier: MIT
#include "recognition/writing_order.h"

#include <algorithm>

#include "recognition/letters.h"

namespace korr::recognition {

namespace {

bool joinsNumbers(char32_t letter) {
  return letter == U'.' || letter == U',' || letter == U':' || letter == U'-' || letter == U'\'';
}

// Which parts keep their order from left to right.
std::vector<bool> forwardParts(const std::vector<std::string>& parts) {
  enum class Kind { Other, Digit, Letter };
  std::vector<Kind> kinds;
  for (const auto& part : parts) {
    const auto letter = firstLetter(part);
    kinds.push_back(isDigit(letter)                                    ? Kind::Digit
                    : isLetter(letter) && !isRightToLeftLetter(letter) ? Kind::Letter
                                                                       : Kind::Other);
  }
  std::vector<bool> forward;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const bool isBetween =
        i > 0 && i + 1 < parts.size() && kinds[i - 1] != Kind::Other && kinds[i + 1] != Kind::Other;
    const bool bothLetters =
        isBetween && kinds[i - 1] == Kind::Letter && kinds[i + 1] == Kind::Letter;
    forward.push_back(kinds[i] != Kind::Other ||
                      (isBetween && joinsNumbers(firstLetter(parts[i]))) ||
                      (bothLetters && parts[i] == " "));
  }
  return forward;
}

}  // namespace

bool isRightToLeft(const std::string& text) {
  const auto letters = lettersOf(text);
  return std::any_of(letters.begin(), letters.end(), isRightToLeftLetter);
}

std::vector<std::size_t> screenOrder(const std::vector<std::string>& parts) {
  std::vector<std::size_t> order(parts.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  if (std::none_of(parts.begin(), parts.end(), isRightToLeft)) return order;
  const auto forward = forwardParts(parts);
  order.clear();
  for (std::size_t end = parts.size(); end > 0;) {
    std::size_t first = end - 1;
    while (forward[first] && first > 0 && forward[first - 1]) --first;
    for (std::size_t i = first; i < end; ++i) order.push_back(i);
    end = first;
  }
  return order;
}

std::string mirrored(const std::string& letter) {
  constexpr const char* kPairs[][2] = {{"(", ")"}, {"[", "]"}, {"<", ">"}, {"«", "»"}};
  for (const auto& [open, close] : kPairs) {
    if (letter == open) return close;
    if (letter == close) return open;
  }
  return letter;
}

std::string logicalOrder(const std::vector<std::string>& parts) {
  const bool isTurned = std::any_of(parts.begin(), parts.end(), isRightToLeft);
  std::string out;
  for (const auto i : screenOrder(parts)) {
    out += isTurned ? mirrored(parts[i]) : parts[i];
  }
  return out;
}

}  // namespace korr::recognition
