// SPDX-License-Identifier: MIT
#include "recognition/line_decoder.h"

#include <algorithm>
#include <cmath>

#include "recognition/letters.h"
#include "recognition/line_runs.h"
#include "recognition/quote_marks.h"
#include "recognition/word_variants.h"
#include "recognition/writing_order.h"

namespace korr::recognition {

namespace {

// From so many votes and such a share on, no word list overrules a shape.
constexpr double kSharpVotes = 3;
constexpr double kSharpShare = 0.8;

// Of the votes for a shape: fewer are slips of the engine.
constexpr double kLeastShare = 0.15;

// A gap so near to the threshold is decided by what the engine saw in this very line.
constexpr double kUnsureGap = 0.3;

// In heights of a tall letter.
constexpr double kOtherSize = 0.13;

// In heights of a tall letter: what a 1 leaves free beside other digits.
constexpr double kNarrowDigit = 0.2;

// Percent.
constexpr std::uint8_t kSureOfJoined = 60;

// Engines are sure of joined letters, and of wrong ones a little less.
constexpr double kJoinedExponent = 6;

// For a shape that nobody has read: nothing is lost without a trace.
constexpr const char* kUnread = "\uFFFD";

// One or two glyphs that are one letter, or several that touch.
struct Item {
  std::string text;
  std::vector<std::string> others;  // what it could be instead
  double confidence = 1;
  bool isSharp = false;
  bool isOtherSize = false;  // than most of the same text
  std::uint16_t colour = 0;
  double leaning = 0;  // -1 upright to 1 italic, by how often it has been seen
};

// The only letter of its alphabet that differs by dots or a breve above.
std::string withDots(const std::string& letter) {
  if (letter == "е") return "ё";
  if (letter == "Е") return "Ё";
  return {};
}

class Decoder {
 public:
  Decoder(const SeenLine& line, const Learnt& learnt, std::vector<std::string>& doubts)
      : line_(line), learnt_(learnt), doubts_(doubts) {
    for (std::size_t i = 0; i < line.glyphs.size() && !isRightToLeft_; ++i) {
      isRightToLeft_ = isRightToLeft(usualText(i));
    }
  }

  RecognisedLine decode() {
    std::vector<std::vector<Item>> words;
    for (std::size_t i = 0; i < line_.glyphs.size();) {
      if (i == 0 || isSpaceBefore(i)) words.emplace_back();
      i += addItem(words.back(), i);
    }
    RecognisedLine out;
    out.box = line_.box;
    out.baseline = line_.baseline;
    out.height = line_.height;
    for (auto& word : words) out.confidence = std::min(out.confidence, settle(word));
    out.runs = runsOf(words);
    return out;
  }

 private:
  bool isSpaceBefore(std::size_t i) const {
    const auto& glyph = line_.glyphs[i];
    const double gap = double(glyph.gapBefore) / line_.height;
    const double threshold = learnt_.gaps.threshold() + (isAtNarrowDigit(i) ? kNarrowDigit : 0);
    if (glyph.space >= 0 && std::abs(gap - threshold) < kUnsureGap * threshold &&
        learnt_.gaps.isUnsure(gap)) {
      return glyph.space == 1;
    }
    return gap > threshold;
  }

  // Digits stand in cells of one width, in which a 1 leaves much free: "11.", "802.1X".
  bool isAtNarrowDigit(std::size_t i) const {
    const auto left = letterAt(i - 1), right = letterAt(i);
    if (isDigit(left) && isDigit(right)) return left == '1' || right == '1';
    const auto before = i >= 2 ? letterAt(i - 2) : 0;
    return left == '1' && (right == '.' || right == ',' || before == '.' || isDigit(before));
  }

  char32_t letterAt(std::size_t i) const { return firstLetter(usualText(i)); }

  // What a shape mostly is; empty where nobody has read it.
  std::string usualText(std::size_t i) const {
    const ShapeId shape = line_.glyphs[i].shape;
    if (shape == kNoShape) return {};
    const auto& kind = learnt_.book.kind(learnt_.book.kindOf(shape));
    if (kind.isCorrected) return kind.corrected;
    return kind.votes.empty() ? std::string() : kind.votes.front().text;
  }

  // How many glyphs it takes.
  std::size_t addItem(std::vector<Item>& word, std::size_t i) {
    const auto& glyph = line_.glyphs[i];
    Item item{.text = {},
              .others = {},
              .confidence = 0,
              .isSharp = false,
              .isOtherSize = false,
              .colour = glyph.colour,
              .leaning = 0};
    if (glyph.shape == kNoShape) {
      item.text = glyph.reading != 0 ? learnt_.texts[glyph.reading] : kUnread;
      item.confidence = 0.3 * glyph.confidence / 100;
      word.push_back(std::move(item));
      return 1;
    }
    const auto& book = learnt_.book;
    const KindId kindId = book.kindOf(glyph.shape);
    const auto& kind = book.kind(kindId);
    item.leaning = kind.leaning();
    if (kind.isCorrected) {
      item.text = kind.corrected;
      item.confidence = 1;
      item.isSharp = true;
      word.push_back(std::move(item));
      return 1;
    }
    if (i + 1 < line_.glyphs.size() && line_.glyphs[i + 1].shape != kNoShape &&
        !isSpaceBefore(i + 1)) {
      if (const auto both = book.together(kindId, book.kindOf(line_.glyphs[i + 1].shape))) {
        item.text = both->text;
        item.confidence = std::min(0.95, 0.3 + 0.3 * both->weight);
        item.isSharp = both->weight >= kSharpVotes;
        word.push_back(std::move(item));
        return 2;
      }
    }
    readKind(item, kind, glyph);
    const bool isSecond = glyph.isRead && glyph.joined == 0;
    if (item.text.empty() && !isSecond) item.text = kUnread;
    item.text = byItsForm(item.text, learnt_.book.shape(glyph.shape));
    if (item.text == "-" && isRightToLeft_ &&
        learnt_.book.shape(glyph.shape).width - 2 > 0.6 * line_.height) {
      item.text = "–";  // which data for Hebrew and Arabic lacks
    }
    const auto shapes = someShapes(kind);
    item.text = asDrawn(item.text, shapes, double(line_.slant));
    std::erase_if(item.others, [&](const std::string& other) {
      return asDrawn(other, shapes, double(line_.slant)) == item.text;
    });
    checkSize(item, glyph, kind);
    word.push_back(std::move(item));
    return 1;
  }

  // What engines mix up though the shape tells it.
  static std::string byItsForm(const std::string& text, const Shape& shape) {
    const std::int32_t width = shape.width - 2, height = shape.height - 2;  // without its margin
    if (text == "." && height >= 5 && height * 2 >= width * 3) return ",";
    if (text == "--") return "—";
    return text;
  }

  std::vector<const Shape*> someShapes(const ShapeKind& kind) const {
    constexpr std::size_t kSome = 8;
    std::vector<const Shape*> out;
    for (const ShapeId id : kind.shapes) {
      if (out.size() < kSome) out.push_back(&learnt_.book.shape(id));
    }
    return out;
  }

  // An accent that was overlooked makes a letter higher than others of its name.
  void checkSize(Item& item, const SeenGlyph& glyph, const ShapeKind& kind) const {
    if (item.isSharp && kind.weight >= 2 * kSharpVotes) return;
    if (isJoinedScript(firstLetter(item.text))) return;  // one letter, several forms
    const auto known = learnt_.sizes.of(item.text);
    if (!known) return;
    const auto& shape = learnt_.book.shape(glyph.shape);
    const double pixelTop = shape.rise - 1, pixelBottom = shape.rise + 1 - shape.height;
    const double height = line_.height;
    const double top = pixelTop / height, bottom = pixelBottom / height;
    const double miss = std::max(std::abs(top - known->top), std::abs(bottom - known->bottom));
    const double pixelMiss =
        std::max(std::abs(pixelTop - known->pixelTop), std::abs(pixelBottom - known->pixelBottom));
    if (std::min(miss, pixelMiss / height) < kOtherSize) return;
    if (top > known->top + kOtherSize) {
      if (const auto dotted = withDots(item.text); !dotted.empty()) {
        item.text = dotted;
        return;
      }
    }
    item.confidence *= 0.4;
    item.isOtherSize = true;
  }

  static std::string shortest(const ShapeKind& kind) {
    const Vote* best = &kind.votes.front();
    for (const auto& vote : kind.votes) {
      if (vote.weight >= 0.4 * best->weight &&
          lettersOf(vote.text).size() < lettersOf(best->text).size())
        best = &vote;
    }
    return best->text;
  }

  void readKind(Item& item, const ShapeKind& kind, const SeenGlyph& glyph) const {
    const bool hasOwn = glyph.isRead && glyph.joined == 1 && glyph.reading != 0;
    const std::string& own = learnt_.texts[glyph.reading];
    if (kind.votes.empty()) {
      item.text = hasOwn ? own : "";
      item.confidence = hasOwn ? 0.5 * glyph.confidence / 100 : 0;
      return;
    }
    const auto& best = kind.votes.front();
    item.isSharp = kind.weight >= kSharpVotes && kind.share() >= kSharpShare;
    // Pieces of joined letters are easily cut in the wrong place; what an engine read in this very
    // line fits together.
    const bool isWhole =
        hasOwn && glyph.confidence >= kSureOfJoined && isJoinedScript(firstLetter(own));
    if (isWhole && own != best.text) item.isSharp = false;
    item.text = item.isSharp || !hasOwn ? best.text : own;
    // Several letters, where the same shape has been one as often: the engine's order slipped.
    if (!item.isSharp && lettersOf(item.text).size() > 1 && !isRightToLeft(item.text))
      item.text = shortest(kind);
    for (const auto& vote : kind.votes) {
      if (vote.weight >= kLeastShare * kind.weight && vote.text != item.text)
        item.others.push_back(vote.text);
    }
    double share = 0;
    for (const auto& vote : kind.votes) {
      if (vote.text == item.text) share = vote.weight / kind.weight;
    }
    if (item.isSharp) {
      item.confidence = share;
    } else {
      // A shape that was seen once is as sure as the engine was, here or wherever it was asked.
      const double sure = glyph.confidence / 100.0;
      const double once = hasOwn ? sure * sure : std::min(0.9, best.weight);
      item.confidence = share * (kind.weight >= kSharpVotes ? 1 : once);
      if (isWhole) item.confidence = std::max(item.confidence, std::pow(sure, kJoinedExponent));
    }
  }

  // Takes what the word list and the case of the neighbours tell between readings that are equally
  // likely. Returns how sure the word is.
  double settle(std::vector<Item>& word) {
    const std::string first = textOf(word);
    const bool isUnsure = std::any_of(word.begin(), word.end(), [](const Item& item) {
      return !item.isSharp && !item.others.empty();
    });
    if (isUnsure) chooseVariant(word);
    double least = 1;
    const Item* weakest = nullptr;
    for (const auto& item : word) {
      if (item.confidence >= least) continue;
      least = item.confidence;
      weakest = &item;
    }
    const std::string text = textOf(word);
    const bool isListed = isWord(word);
    const bool canList = learnt_.words && lettersOf(text).size() >= 3;
    if (canList && least < 0.9) least = isListed ? std::max(least, 0.85) : least * 0.7;
    if (least < kDoubtful && weakest) {
      std::string doubt = "\"" + text + "\": ";
      if (weakest->text == kUnread) {
        doubt += "a shape that nobody has read";
      } else if (weakest->isOtherSize) {
        doubt += "\"" + weakest->text + "\" is of another size than others";
      } else if (!weakest->others.empty()) {
        doubt += "\"" + weakest->text + "\" may be \"" + weakest->others.front() + "\"";
      } else {
        doubt += "\"" + weakest->text + "\" was read with little certainty";
      }
      if (canList && !isListed) doubt += "; not in the word list";
      doubts_.push_back(std::move(doubt));
    }
    return least;
  }

  void chooseVariant(std::vector<Item>& word) const {
    std::vector<std::vector<std::string>> choices;
    for (const auto& item : word) {
      auto& texts = choices.emplace_back(1, item.text);
      if (!item.isSharp) texts.insert(texts.end(), item.others.begin(), item.others.end());
    }
    const auto best = likeliestWord(choices, learnt_.words);
    for (std::size_t i = 0; i < word.size(); ++i) {
      if (word[i].text == best[i]) continue;
      std::replace(word[i].others.begin(), word[i].others.end(), best[i], word[i].text);
      word[i].text = best[i];
    }
  }

  bool isWord(const std::vector<Item>& word) const {
    return learnt_.words && learnt_.words->contains(textOf(word));
  }

  static std::string textOf(const std::vector<Item>& word) {
    std::vector<std::string> texts;
    for (const auto& item : word) texts.push_back(item.text);
    return logicalOrder(texts);
  }

  std::vector<TextRun> runsOf(const std::vector<std::vector<Item>>& words) const {
    std::vector<std::string> texts;
    std::vector<TextRun> styles;
    for (const auto& word : words) {
      double leaning = 0;
      for (const auto& item : word) leaning += item.leaning;
      const bool isItalic = leaning > 0;
      if (!texts.empty()) {
        texts.push_back(" ");
        styles.push_back(
            {.text = {}, .colour = learnt_.colours[word.front().colour], .italic = isItalic});
      }
      for (const auto& item : word) {
        texts.push_back(item.text);
        styles.push_back({.text = {}, .colour = learnt_.colours[item.colour], .italic = isItalic});
      }
    }
    return runsInOrder(texts, styles);
  }

  const SeenLine& line_;
  const Learnt& learnt_;
  std::vector<std::string>& doubts_;
  bool isRightToLeft_ = false;
};

}  // namespace

std::string RecognisedLine::text() const {
  std::string out;
  for (const auto& run : runs) out += run.text;
  return out;
}

std::string RecognisedPicture::text() const {
  std::string out;
  for (const auto& line : lines) {
    if (!out.empty()) out += '\n';
    out += line.text();
  }
  return out;
}

RecognisedLine decodeLine(const SeenLine& line, const Learnt& learnt,
                          std::vector<std::string>& doubts) {
  return Decoder(line, learnt, doubts).decode();
}

}  // namespace korr::recognition
