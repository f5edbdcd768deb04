// SPDX-License-Identifier: MIT
#include "cues/reading_order.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace korr::txsub {

namespace {

/// A character with its diacritics, and the span that it comes from.
struct Cluster {
  char32_t character = 0;
  std::string marks;
  std::size_t span = 0;
};

// Takes the first character off text that is known to be well-formed UTF-8.
char32_t takeCharacter(std::string_view& text) {
  const auto lead = static_cast<std::uint8_t>(text.front());
  const std::size_t size = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  char32_t character = size == 1 ? lead : lead & (0x7Fu >> size);
  for (std::size_t i = 1; i < std::min(size, text.size()); ++i) {
    character = character << 6 | (static_cast<std::uint8_t>(text[i]) & 0x3F);
  }
  text.remove_prefix(std::min(size, text.size()));
  return character;
}

void append(std::string& text, char32_t character) {
  const auto put = [&text](char32_t byte) { text += static_cast<char>(byte); };
  if (character < 0x80) return put(character);
  if (character < 0x800) {
    put(0xC0 | character >> 6);
  } else if (character < 0x10000) {
    put(0xE0 | character >> 12);
    put(0x80 | (character >> 6 & 0x3F));
  } else {
    put(0xF0 | character >> 18);
    put(0x80 | (character >> 12 & 0x3F));
    put(0x80 | (character >> 6 & 0x3F));
  }
  put(0x80 | (character & 0x3F));
}

std::vector<Cluster> clustersOf(const std::vector<TextSpan>& spans) {
  std::vector<Cluster> clusters;
  for (std::size_t span = 0; span < spans.size(); ++span) {
    for (std::string_view rest = spans[span].text; !rest.empty();) {
      const char32_t character = takeCharacter(rest);
      if (isCombining(character) && !clusters.empty()) {
        append(clusters.back().marks, character);
      } else {
        clusters.push_back({character, {}, span});
      }
    }
  }
  return clusters;
}

/// The contextual forms of a letter: from `first` on, `count` of them.
struct Forms {
  char32_t first;
  char32_t count;
  char32_t letter;
  char32_t second = 0;  ///< of a ligature
};

// Unicode, Arabic Presentation Forms A (as far as teletext has them) and B.
constexpr auto kForms = std::to_array<Forms>({
    {0xFB56, 4, 0x067E},         {0xFB6A, 4, 0x06A4},         {0xFB7A, 4, 0x0686},
    {0xFB8E, 4, 0x06A9},         {0xFE80, 1, 0x0621},         {0xFE81, 2, 0x0622},
    {0xFE83, 2, 0x0623},         {0xFE85, 2, 0x0624},         {0xFE87, 2, 0x0625},
    {0xFE89, 4, 0x0626},         {0xFE8D, 2, 0x0627},         {0xFE8F, 4, 0x0628},
    {0xFE93, 2, 0x0629},         {0xFE95, 4, 0x062A},         {0xFE99, 4, 0x062B},
    {0xFE9D, 4, 0x062C},         {0xFEA1, 4, 0x062D},         {0xFEA5, 4, 0x062E},
    {0xFEA9, 2, 0x062F},         {0xFEAB, 2, 0x0630},         {0xFEAD, 2, 0x0631},
    {0xFEAF, 2, 0x0632},         {0xFEB1, 4, 0x0633},         {0xFEB5, 4, 0x0634},
    {0xFEB9, 4, 0x0635},         {0xFEBD, 4, 0x0636},         {0xFEC1, 4, 0x0637},
    {0xFEC5, 4, 0x0638},         {0xFEC9, 4, 0x0639},         {0xFECD, 4, 0x063A},
    {0xFED1, 4, 0x0641},         {0xFED5, 4, 0x0642},         {0xFED9, 4, 0x0643},
    {0xFEDD, 4, 0x0644},         {0xFEE1, 4, 0x0645},         {0xFEE5, 4, 0x0646},
    {0xFEE9, 4, 0x0647},         {0xFEED, 2, 0x0648},         {0xFEEF, 2, 0x0649},
    {0xFEF1, 4, 0x064A},         {0xFEF5, 2, 0x0644, 0x0622}, {0xFEF7, 2, 0x0644, 0x0623},
    {0xFEF9, 2, 0x0644, 0x0625}, {0xFEFB, 2, 0x0644, 0x0627},
});

void appendPlain(std::string& text, char32_t character) {
  const auto forms = std::ranges::find_if(kForms, [character](const Forms& f) {
    return character >= f.first && character < f.first + f.count;
  });
  if (forms == kForms.end()) return append(text, character);
  append(text, forms->letter);
  if (forms->second != 0) append(text, forms->second);
}

std::vector<TextSpan> spansOf(const std::vector<Cluster>& clusters, const LogicalOrder& order,
                              const std::vector<TextSpan>& styles) {
  std::vector<TextSpan> spans;
  std::size_t last = styles.size();
  for (std::size_t i = 0; i < order.places.size(); ++i) {
    const Cluster& cluster = clusters[order.places[i]];
    if (std::exchange(last, cluster.span) != cluster.span) {
      spans.push_back(styles[cluster.span]);
      spans.back().text.clear();
    }
    const char32_t character = cluster.character;
    appendPlain(spans.back().text, order.isMirrored[i] ? mirrored(character) : character);
    spans.back().text += cluster.marks;
  }
  return spans;
}

}  // namespace

TextDirection toReadingOrder(std::vector<TextSpan>& spans) {
  const auto clusters = clustersOf(spans);
  std::u32string characters;
  for (const Cluster& cluster : clusters) characters += cluster.character;
  if (std::ranges::none_of(characters, isRightToLeft)) return TextDirection::LeftToRight;

  const auto order = logicalOrderOf(characters);
  spans = spansOf(clusters, order, spans);
  std::u32string logical;
  for (const std::size_t place : order.places) logical += characters[place];
  if (startDirection(logical) != order.direction) {
    const bool isRight = order.direction == TextDirection::RightToLeft;
    spans.front().text.insert(0, isRight ? "\u200F" : "\u200E");
  }
  return order.direction;
}

}  // namespace korr::txsub
