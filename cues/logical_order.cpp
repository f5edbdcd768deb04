// SPDX-License-Identifier: MIT
#include "cues/logical_order.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <numeric>
#include <string>

namespace korr::txsub {

namespace {

// UAX #9, table 4, as far as the characters of teletext and captions go. Diacritics (NSM) are no
// characters of their own here, so that W1 has nothing to do.
enum class Class {
  Left,
  Right,
  ArabicLetter,
  EuropeanNumber,
  EuropeanSeparator,
  EuropeanTerminator,
  ArabicNumber,
  CommonSeparator,
  Neutral,
};
using enum Class;

struct Range {
  char32_t first;
  char32_t last;

  bool holds(char32_t c) const { return c >= first && c <= last; }
};

bool isHebrew(char32_t c) {
  return Range{0x0590, 0x05FF}.holds(c) || Range{0xFB1D, 0xFB4F}.holds(c);
}

bool isArabic(char32_t c) {
  return Range{0x0608, 0x07BF}.holds(c) || Range{0xFB50, 0xFDFF}.holds(c) ||
         Range{0xFE70, 0xFEFC}.holds(c);
}

Class classOf(char32_t c) {
  if (Range{'0', '9'}.holds(c)) return EuropeanNumber;
  if (Range{0x0660, 0x0669}.holds(c)) return ArabicNumber;
  if (c == '+' || c == '-') return EuropeanSeparator;
  if (std::u32string_view(U"#$%£¤¥€¢°±‰₪").find(c) != std::u32string_view::npos) {
    return EuropeanTerminator;
  }
  if (std::u32string_view(U",./:،").find(c) != std::u32string_view::npos) return CommonSeparator;
  if (isHebrew(c)) return Right;
  if (isArabic(c)) return ArabicLetter;
  const bool isLetter = Range{'A', 'Z'}.holds(c) || Range{'a', 'z'}.holds(c) || c == U'ª' ||
                        c == U'º' || c == U'µ' ||
                        (Range{0x00C0, 0x02B8}.holds(c) && c != U'×' && c != U'÷') ||
                        Range{0x0370, 0x0588}.holds(c) || Range{0x1E00, 0x1FFF}.holds(c);
  return isLetter ? Left : Neutral;
}

bool isNumber(Class c) {
  return c == EuropeanNumber || c == ArabicNumber;
}

// Whether European numbers after letters from left to right count as such letters (W7).
enum class NumbersAfterLetters { AreLetters, StayNumbers };

// W2 to W7: what numbers and their signs count as.
void resolveNumbers(std::vector<Class>& classes, Class base, NumbersAfterLetters numbers) {
  Class strong = base;
  for (Class& c : classes) {
    if (c == Left || c == Right || c == ArabicLetter) strong = c;
    if (c == EuropeanNumber && strong == ArabicLetter) c = ArabicNumber;  // W2
  }
  std::ranges::replace(classes, ArabicLetter, Right);     // W3
  for (std::size_t i = 1; i + 1 < classes.size(); ++i) {  // W4
    const Class before = classes[i - 1];
    if (before != classes[i + 1] || !isNumber(before)) continue;
    const bool joins = classes[i] == CommonSeparator ||
                       (classes[i] == EuropeanSeparator && before == EuropeanNumber);
    if (joins) classes[i] = before;
  }
  for (std::size_t first = 0; first < classes.size(); ++first) {  // W5
    std::size_t end = first;
    while (end < classes.size() && classes[end] == EuropeanTerminator) ++end;
    if (end == first) continue;
    const bool isBesideNumber = (first > 0 && classes[first - 1] == EuropeanNumber) ||
                                (end < classes.size() && classes[end] == EuropeanNumber);
    for (; first < end; ++first) classes[first] = isBesideNumber ? EuropeanNumber : Neutral;
  }
  strong = base;
  for (Class& c : classes) {
    if (c == EuropeanSeparator || c == CommonSeparator) c = Neutral;  // W6
    if (c == Left || c == Right) strong = c;
    if (numbers == NumbersAfterLetters::StayNumbers) continue;
    if (c == EuropeanNumber && strong == Left) c = Left;  // W7
  }
}

Class directionOf(Class c) {
  return isNumber(c) ? Right : c;  // as N0 to N2 have it
}

struct BracketPair {
  std::size_t opening;
  std::size_t closing;
};

// BD16: in the order of their opening brackets.
std::vector<BracketPair> bracketPairs(std::u32string_view characters,
                                      const std::vector<Class>& classes) {
  constexpr std::u32string_view kOpening = U"([{";
  constexpr std::u32string_view kClosing = U")]}";
  std::vector<BracketPair> pairs;
  std::vector<std::size_t> open;
  for (std::size_t i = 0; i < characters.size(); ++i) {
    if (classes[i] != Neutral) continue;
    if (kOpening.find(characters[i]) != kOpening.npos) open.push_back(i);
    const auto kind = kClosing.find(characters[i]);
    if (kind == kClosing.npos) continue;
    const auto match = std::find_if(open.rbegin(), open.rend(), [&](std::size_t place) {
      return characters[place] == kOpening[kind];
    });
    if (match == open.rend()) continue;
    pairs.push_back({*match, i});
    open.erase(std::prev(match.base()), open.end());
  }
  std::ranges::sort(pairs, {}, &BracketPair::opening);
  return pairs;
}

// N0: brackets take the direction of the line if anything between them has it; else the other one
// if that is between them and before them, and that of the line if it is only between them.
void resolveBrackets(std::vector<Class>& classes, const std::vector<BracketPair>& pairs,
                     Class base) {
  const Class opposite = base == Right ? Left : Right;
  for (const auto& [opening, closing] : pairs) {
    const auto first = classes.begin() + static_cast<std::ptrdiff_t>(opening);
    const auto last = classes.begin() + static_cast<std::ptrdiff_t>(closing);
    const auto holds = [&](Class direction) {
      return std::any_of(first, last, [&](Class c) { return directionOf(c) == direction; });
    };
    if (!holds(base) && !holds(opposite)) continue;
    const auto isStrong = [](Class c) { return directionOf(c) == Left || directionOf(c) == Right; };
    const auto before = std::find_if(std::make_reverse_iterator(first), classes.rend(), isStrong);
    const bool isOpposite =
        !holds(base) && before != classes.rend() && directionOf(*before) == opposite;
    *first = *last = isOpposite ? opposite : base;
  }
}

// N1 and N2: neutrals between two of one direction take it, others that of the line. Numbers count
// as right to left.
void resolveNeutrals(std::vector<Class>& classes, Class base) {
  for (std::size_t first = 0; first < classes.size();) {
    if (classes[first] != Neutral) {
      ++first;
      continue;
    }
    const Class before = first > 0 ? directionOf(classes[first - 1]) : base;
    std::size_t end = first;
    while (end < classes.size() && classes[end] == Neutral) ++end;
    const Class after = end < classes.size() ? directionOf(classes[end]) : base;
    const Class resolved = before == after ? before : base;
    for (; first < end; ++first) classes[first] = resolved;
  }
}

// I1 and I2.
std::uint8_t levelOf(Class c, Class base) {
  if (base == Right) return c == Right ? 1 : 2;
  return c == Left ? 0 : c == Right ? 1 : 2;
}

// L2: from the highest level down, what is at a level or above it turns around.
std::vector<std::size_t> reorder(const std::vector<std::uint8_t>& levels) {
  constexpr std::uint8_t kHighest = 2;
  std::vector<std::size_t> places(levels.size());
  std::iota(places.begin(), places.end(), std::size_t{0});
  for (std::uint8_t level = kHighest; level > 0; --level) {
    for (auto first = places.begin(); first != places.end();) {
      const auto isBelow = [&](std::size_t place) { return levels[place] < level; };
      first = std::find_if_not(first, places.end(), isBelow);
      const auto end = std::find_if(first, places.end(), isBelow);
      std::reverse(first, end);
      first = end;
    }
  }
  return places;
}

// Foreign names in a line are long; whole lines of foreign words have no other letters.
Class baseOf(std::u32string_view characters) {
  constexpr int kMostForeign = 3;  // letters for one of Hebrew or Arabic
  const auto right = std::ranges::count_if(characters, isRightToLeft);
  const auto left = std::ranges::count(characters, Left, classOf);
  return right * kMostForeign >= left ? Right : Left;
}

LogicalOrder reorder(std::u32string_view characters, Class base, NumbersAfterLetters numbers) {
  std::vector<Class> classes(characters.size());
  std::ranges::transform(characters, classes.begin(), classOf);
  resolveNumbers(classes, base, numbers);
  resolveBrackets(classes, bracketPairs(characters, classes), base);
  resolveNeutrals(classes, base);
  std::vector<std::uint8_t> levels(classes.size());
  std::ranges::transform(classes, levels.begin(), [base](Class c) { return levelOf(c, base); });

  LogicalOrder order;
  if (base == Right) order.direction = TextDirection::RightToLeft;
  order.places = reorder(levels);
  for (const std::size_t place : order.places) order.isMirrored.push_back(levels[place] == 1);
  return order;
}

std::u32string inOrder(std::u32string_view characters, const LogicalOrder& order) {
  std::u32string text;
  for (std::size_t i = 0; i < order.places.size(); ++i) {
    const char32_t c = characters[order.places[i]];
    text += order.isMirrored[i] ? mirrored(c) : c;
  }
  return text;
}

}  // namespace

LogicalOrder logicalOrderOf(std::u32string_view characters) {
  // On the screen nothing tells whether a number beside foreign words goes with them: whichever
  // reading a player shows as it stands is taken.
  using enum NumbersAfterLetters;
  const Class base = baseOf(characters);
  for (const auto numbers : {AreLetters, StayNumbers}) {
    auto order = reorder(characters, base, numbers);
    const auto logical = inOrder(characters, order);
    if (inOrder(logical, reorder(logical, base, AreLetters)) == characters) return order;
  }
  return reorder(characters, base, AreLetters);
}

std::optional<TextDirection> startDirection(std::u32string_view characters) {
  for (const char32_t c : characters) {
    if (isRightToLeft(c)) return TextDirection::RightToLeft;
    if (classOf(c) == Left) return TextDirection::LeftToRight;
  }
  return std::nullopt;
}

bool isRightToLeft(char32_t character) {
  const Class c = classOf(character);
  return c == Right || c == ArabicLetter;
}

bool isCombining(char32_t character) {
  return Range{0x0300, 0x036F}.holds(character) || Range{0x0591, 0x05BD}.holds(character) ||
         Range{0x064B, 0x065F}.holds(character);
}

char32_t mirrored(char32_t character) {
  constexpr std::u32string_view kPairs = U"()<>[]{}«»";
  const auto place = kPairs.find(character);
  return place == kPairs.npos ? character : kPairs[place ^ 1];
}

}  // namespace korr::txsub
