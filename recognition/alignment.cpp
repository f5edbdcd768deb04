// SPDX-License-Identifier: MIT
#include "recognition/alignment.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string_view>

#include "recognition/letters.h"
#include "recognition/writing_order.h"

namespace korr::recognition {

namespace {

constexpr int kMostSymbols = 8;  // of one glyph: a word of a joined script
constexpr int kMostGlyphs = 3;   // of one symbol

constexpr double kSkip = 2.6;  // a glyph or a symbol without the other

constexpr double kTrust = 1.5;  // in what is known of a glyph

struct Cell {
  double cost = std::numeric_limits<double>::infinity();
  std::int8_t glyphs = 0;
  std::int8_t symbols = 0;
};

class Aligner {
 public:
  Aligner(const GlyphLine& line, const std::vector<EngineSymbol>& symbols,
          const std::vector<int>& words, const GlyphPrior& prior, const LetterSizes& sizes)
      : line_(line), symbols_(symbols), words_(words), prior_(prior), columns_(symbols.size() + 1) {
    for (const auto& symbol : symbols) {
      const auto letter = firstLetter(symbol.text);
      isMark_.push_back(isLowMark(letter) || isHighMark(letter));
      isLow_.push_back(isLowMark(letter));
      isHigh_.push_back(isHighMark(letter));
      isJoined_.push_back(isJoinedScript(letter));
      sizes_.push_back(sizes.of(symbol.text));
    }
  }

  Alignment align() {
    fillTable();
    Alignment out;
    out.cost = cell(line_.glyphs.size(), columns_ - 1).cost;
    out.readings = readings();
    for (const auto& reading : out.readings) out.unmatched += reading.isKnown ? 0 : 1;
    return out;
  }

 private:
  Cell& cell(std::size_t glyph, std::size_t symbol) { return cells_[glyph * columns_ + symbol]; }

  void fillTable() {
    const std::size_t glyphs = line_.glyphs.size();
    cells_.assign((glyphs + 1) * columns_, {});
    cell(0, 0).cost = 0;
    for (std::size_t g = 0; g <= glyphs; ++g) {
      for (std::size_t s = 0; s < columns_; ++s) {
        const double cost = cell(g, s).cost;
        if (std::isinf(cost)) continue;
        const auto offer = [&](int moreGlyphs, int moreSymbols, double price) {
          auto& next = cell(g + std::size_t(moreGlyphs), s + std::size_t(moreSymbols));
          if (cost + price < next.cost) {
            next = {.cost = cost + price,
                    .glyphs = static_cast<std::int8_t>(moreGlyphs),
                    .symbols = static_cast<std::int8_t>(moreSymbols)};
          }
        };
        if (g < glyphs) offer(1, 0, kSkip);
        if (s + 1 < columns_) offer(0, 1, kSkip);
        if (g == glyphs) continue;
        for (int n = 1; n <= kMostSymbols && s + std::size_t(n) < columns_; ++n) {
          const double price = oneGlyph(g, s, n);
          if (price < 6) offer(1, n, price);
        }
        for (int m = 2; m <= kMostGlyphs && g + std::size_t(m) <= glyphs && s + 1 < columns_; ++m) {
          offer(m, 1, manyGlyphs(g, s, m));
        }
      }
    }
  }

  double misplaced(double left, double right, std::size_t symbol, std::size_t lastSymbol) const {
    const double middle = (left + right) / 2;
    const double other = (symbols_[symbol].left + symbols_[lastSymbol].right) / 2;
    return std::min(1.5, std::abs(middle - other) / (0.7 * line_.height));
  }

  double oneGlyph(std::size_t g, std::size_t s, int count) const {
    const auto& glyph = line_.glyphs[g];
    const std::size_t last = s + std::size_t(count) - 1;
    double price = misplaced(glyph.box.left, glyph.box.right, s, last);
    if (count == 1) {
      price += kindMiss(glyph, s) + sizeMiss(glyph, s, 1);
      return price - kTrust * prior_(g, symbols_[s].text);
    }
    std::vector<std::string> texts;
    for (std::size_t i = s; i <= last; ++i) {
      texts.push_back(symbols_[i].text);
      price += isJoined_[i] ? 0.1 : 0.55;
      if (isMark_[i]) price += 0.5;
      if (i > s && words_[i] != words_[i - 1]) price += 1.2;
    }
    return price + sizeMiss(glyph, s, count) - kTrust * prior_(g, logicalOrder(texts));
  }

  double manyGlyphs(std::size_t g, std::size_t s, int count) const {
    const std::size_t last = g + std::size_t(count) - 1;
    double price = misplaced(line_.glyphs[g].box.left, line_.glyphs[last].box.right, s, s) +
                   0.75 * (count - 1);
    const double gap = line_.glyphs[last].left - line_.glyphs[g].right;
    if (gap > 0.25 * line_.height) price += 1;
    if (isMark_[s]) price += 0.3;
    const double width = (line_.glyphs[last].right - line_.glyphs[g].left) / line_.height;
    const double usual = sizes_[s] ? sizes_[s]->width : 1.0;
    if (!isJoined_[s]) price += std::min(2.0, 3 * std::max(0.0, width - usual - 0.1));
    for (std::size_t i = g; i <= last; ++i)
      price -= kTrust * std::min(0.0, prior_(i, symbols_[s].text));
    return price;
  }

  // Letters that are known to be of another size; unknown ones are taken for half as wide as high.
  double sizeMiss(const Glyph& glyph, std::size_t s, int count) const {
    if (isJoined_[s]) return 0;
    const auto size = sizeOf(glyph, line_);
    double width = 0, top = -1, bottom = 1;
    bool isKnown = true;
    for (std::size_t i = s; i < s + std::size_t(count); ++i) {
      isKnown = isKnown && sizes_[i];
      width += sizes_[i] ? sizes_[i]->width : isMark_[i] ? 0.15 : 0.6;
      if (!sizes_[i]) continue;
      top = std::max(top, sizes_[i]->top);
      bottom = std::min(bottom, sizes_[i]->bottom);
    }
    const double miss = std::max(0.0, std::abs(size.width - width) - 0.06 * count);
    if (!isKnown) return std::min(1.0, std::max(0.0, miss - 0.15 * count));
    return std::min(2.0, 3 * miss) +
           std::min(1.0, 3 * std::max(0.0, std::abs(size.top - top) - 0.06)) +
           std::min(1.0, 3 * std::max(0.0, std::abs(size.bottom - bottom) - 0.06));
  }

  // A comma for a tall glyph, a letter for a dot.
  double kindMiss(const Glyph& glyph, std::size_t s) const {
    const bool isSmall = glyph.box.height() * 20 < line_.height * 9;
    if (isSmall != isMark_[s]) return isSmall ? 0.7 : 0.9;
    if (!isSmall) return 0;
    const double middle = line_.baseline - (glyph.box.top + glyph.box.bottom) / 2.0;
    if (isLow_[s] && middle > 0.5 * line_.height) return 0.8;
    if (isHigh_[s] && middle < 0.4 * line_.height) return 0.8;
    return 0;
  }

  std::vector<GlyphReading> readings() {
    std::vector<GlyphReading> out(line_.glyphs.size());
    std::vector<int> firstWord(out.size(), -1), lastWord(out.size(), -1);
    std::size_t g = line_.glyphs.size(), s = symbols_.size();
    while (g > 0 || s > 0) {
      const Cell& at = cell(g, s);
      const auto moreGlyphs = std::size_t(at.glyphs), moreSymbols = std::size_t(at.symbols);
      g -= moreGlyphs;
      s -= moreSymbols;
      if (moreGlyphs == 0 || moreSymbols == 0) continue;
      auto& reading = out[g];
      reading.isKnown = true;
      reading.glyphs = static_cast<int>(moreGlyphs);
      reading.confidence = 1;
      std::vector<std::string> texts;
      for (std::size_t i = s; i < s + moreSymbols; ++i) {
        texts.push_back(symbols_[i].text);
        reading.confidence = std::min(reading.confidence, symbols_[i].confidence);
      }
      reading.text = logicalOrder(texts);
      firstWord[g] = words_[s];
      lastWord[g + moreGlyphs - 1] = words_[s + moreSymbols - 1];
      for (std::size_t i = g + 1; i < g + moreGlyphs; ++i) {
        out[i].isKnown = true;
        out[i].glyphs = 0;
        out[i].confidence = reading.confidence;
      }
    }
    int word = -1;
    for (std::size_t i = 0; i < out.size(); ++i) {
      if (firstWord[i] >= 0) {
        out[i].spaceBefore = word >= 0 && word != firstWord[i];
      }
      if (lastWord[i] >= 0) word = lastWord[i];
    }
    return out;
  }

  const GlyphLine& line_;
  const std::vector<EngineSymbol>& symbols_;
  const std::vector<int>& words_;
  const GlyphPrior& prior_;
  std::size_t columns_;
  std::vector<bool> isMark_, isLow_, isHigh_, isJoined_;
  std::vector<std::optional<LetterSize>> sizes_;  // of the symbols
  std::vector<Cell> cells_;
};

// Left to right. Engines tell the place of a symbol roughly, so the order of reading decides.
void toScreenOrder(std::vector<EngineSymbol>& symbols, std::vector<int>& words) {
  std::vector<std::string> texts;
  for (const auto& symbol : symbols) texts.push_back(symbol.text);
  const auto order = screenOrder(texts);
  std::vector<EngineSymbol> sorted;
  std::vector<int> sortedWords;
  for (const auto i : order) {
    sorted.push_back(std::move(symbols[i]));
    sortedWords.push_back(words[i]);
  }
  symbols = std::move(sorted);
  words = std::move(sortedWords);
}

// Symbols that are out of order get a place between their neighbours: where an engine lost one, it
// gives the place of the whole word.
void mendPlaces(std::vector<EngineSymbol>& symbols) {
  const std::size_t count = symbols.size();
  // The longest run of symbols whose middles ascend.
  std::vector<std::size_t> length(count, 1), before(count, count);
  std::size_t last = count;
  const auto middle = [&](std::size_t i) { return symbols[i].left + symbols[i].right; };
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (middle(j) < middle(i) && length[j] + 1 > length[i]) {
        length[i] = length[j] + 1;
        before[i] = j;
      }
    }
    if (last == count || length[i] > length[last]) last = i;
  }
  std::vector<bool> isGood(count);
  for (std::size_t i = last; i < count; i = before[i]) isGood[i] = true;
  for (std::size_t i = 0; i < count;) {
    if (isGood[i]) {
      ++i;
      continue;
    }
    std::size_t end = i;
    while (end < count && !isGood[end]) ++end;
    const double from = i > 0 ? symbols[i - 1].right : symbols[end < count ? end : i].left;
    const double to = end < count ? symbols[end].left : from;
    const double step = std::max(0.0, to - from) / double(end - i);
    for (std::size_t k = i; k < end; ++k) {
      symbols[k].left = from + step * double(k - i);
      symbols[k].right = symbols[k].left + step;
    }
    i = end;
  }
}

}  // namespace

Alignment align(const GlyphLine& line, std::vector<EngineSymbol> symbols, const GlyphPrior& prior,
                const LetterSizes& sizes) {
  std::vector<int> words;
  int word = 0;
  for (const auto& symbol : symbols) {
    if (symbol.startsWord) ++word;
    words.push_back(word);
  }
  toScreenOrder(symbols, words);
  mendPlaces(symbols);
  return Aligner(line, symbols, words, prior, sizes).align();
}

}  // namespace korr::recognition
