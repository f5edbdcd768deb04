// SPDX-License-Identifier: MIT
#include "recognition/shapes_file.h"

#include <charconv>
#include <cstdio>
#include <optional>
#include <utility>

namespace korr::recognition {

namespace {

constexpr std::string_view kHead =
    "tessary-shapes 1\n"
    "# The letters of one channel. Under each 'letter' line stand the shapes that are read as it:\n"
    "# how far the topmost row lies above the line of writing, then the rows, '.' empty to '#' "
    "full.\n"
    "# To correct a letter write it between the quotation marks and 'corrected' for 'learnt': it\n"
    "# wins over everything from then on.\n";

constexpr std::string_view kLevels = ".-+#";
constexpr std::int32_t kMostPixels = 2000;  // of a side
constexpr std::size_t kMostProblems = 100;
constexpr double kLeastGap = 0.01;  // as it is written, with two places
constexpr double kMostGap = 1.99;
constexpr double kMostWeight = 24;  // what a file says of itself counts no more than that

// Takes words off a line and knows in which column it is.
class LineReader {
 public:
  explicit LineReader(std::string_view line) : line_(line) {}

  std::size_t column() const { return place_ + 1; }

  std::string_view word() {
    while (place_ < line_.size() && line_[place_] == ' ') ++place_;
    start_ = place_;
    while (place_ < line_.size() && line_[place_] != ' ') ++place_;
    return line_.substr(start_, place_ - start_);
  }

  /// Text between quotation marks; a backslash keeps the next character as it is.
  std::optional<std::string> quoted() {
    while (place_ < line_.size() && line_[place_] == ' ') ++place_;
    start_ = place_;
    if (place_ == line_.size() || line_[place_] != '"') return std::nullopt;
    std::string out;
    for (std::size_t i = place_ + 1; i < line_.size(); ++i) {
      if (line_[i] == '"') {
        place_ = i + 1;
        return out;
      }
      if (line_[i] == '\\' && i + 1 < line_.size()) ++i;
      out += line_[i];
    }
    return std::nullopt;
  }

  template <class Number>
  std::optional<Number> number() {
    const auto text = word();
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return value;
  }

  std::size_t lastColumn() const { return start_ + 1; }

 private:
  std::string_view line_;
  std::size_t place_ = 0;
  std::size_t start_ = 0;
};

struct Entry {
  std::string text;
  bool isTogether = false;
  bool isCorrected = false;
  bool isItalic = false;
  std::uint32_t seen = 0;
  double weight = 0;
  std::vector<Shape> shapes;
};

class ShapesReader {
 public:
  ShapesReader(std::string_view text, ShapeBook& book) : text_(text), book_(book) {}

  ShapesReport read() {
    while (nextLine()) {
      // A row may begin with '#' too, but no row holds a blank.
      if (line_.empty() || line_.starts_with("# ")) continue;
      LineReader words(line_);
      const auto first = words.word();
      if (first == "tessary-shapes") {
        if (words.word() != "1")
          fail(words.lastColumn(), "a version that this program does not know");
      } else if (first == "gap") {
        readGap(words);
      } else if (first == "letter" || first == "together") {
        begin(words, first == "together");
      } else if (entry_ && first == "rise") {
        beginShape(words);
      } else if (entry_ && !entry_->shapes.empty() && first == line_) {
        addRow();
      } else {
        fail(1, "neither 'letter', 'together', 'rise' nor a row of a shape");
      }
    }
    finish();
    return std::move(report_);
  }

 private:
  bool nextLine() {
    if (place_ >= text_.size()) return false;
    const auto end = std::min(text_.find('\n', place_), text_.size());
    line_ = text_.substr(place_, end - place_);
    if (!line_.empty() && line_.back() == '\r') line_.remove_suffix(1);
    place_ = end + 1;
    ++number_;
    if (line_.starts_with("letter") || line_.starts_with("together")) {
      // What went before is complete, and is no part of this entry should it be damaged.
      finish();
      raw_.clear();
      isDamaged_ = false;
    }
    if (!line_.starts_with("# ") && !line_.starts_with("tessary-shapes") &&
        !line_.starts_with("gap")) {
      raw_ += std::string(line_) + '\n';
    }
    return true;
  }

  void fail(std::size_t column, std::string what) {
    if (!isDamaged_ && report_.problems.size() < kMostProblems) {
      report_.problems.push_back({number_, column, std::move(what)});
    }
    isDamaged_ = true;
  }

  void readGap(LineReader& words) {
    const auto gap = words.number<double>();
    if (gap && *gap >= kLeastGap && *gap <= kMostGap) {
      report_.gap = *gap;
      return;
    }
    // The entry around it is as good or as damaged as before.
    const bool wasDamaged = std::exchange(isDamaged_, false);
    fail(words.lastColumn(), "no gap between 0.01 and 1.99");
    isDamaged_ = wasDamaged;
  }

  // letter "e" learnt seen 132 sure 23.5 [italic]
  void begin(LineReader& words, bool isTogether) {
    entry_.emplace();
    entry_->isTogether = isTogether;
    const auto text = words.quoted();
    if (!text || text->empty() || text->size() > 64)
      return fail(words.column(), "no text between quotation marks");
    entry_->text = *text;
    const auto state = words.word();
    entry_->isCorrected = state == "corrected";
    if (!entry_->isCorrected && state != "learnt")
      return fail(words.lastColumn(), "neither 'learnt' nor 'corrected'");
    for (auto word = words.word(); !word.empty(); word = words.word()) {
      if (word == "italic") {
        entry_->isItalic = true;
      } else if (word == "seen") {
        const auto seen = words.number<std::uint32_t>();
        if (!seen) return fail(words.lastColumn(), "no number after 'seen'");
        entry_->seen = *seen;
      } else if (word == "sure") {
        const auto weight = words.number<double>();
        if (!weight || !(*weight >= 0)) return fail(words.lastColumn(), "no number after 'sure'");
        entry_->weight = std::min(*weight, kMostWeight);
      } else {
        std::string what(word.substr(0, 20));
        return fail(words.lastColumn(), what += ": not known here");
      }
    }
  }

  void beginShape(LineReader& words) {
    const auto rise = words.number<std::int32_t>();
    if (!rise || *rise < -kMostPixels || *rise > kMostPixels)
      return fail(words.lastColumn(), "no number of rows after 'rise'");
    entry_->shapes.push_back({.width = 0, .height = 0, .rise = *rise, .levels = {}});
  }

  void addRow() {
    auto& shape = entry_->shapes.back();
    const auto width =
        static_cast<std::int32_t>(std::min<std::size_t>(line_.size(), kMostPixels + 1));
    if (width > kMostPixels || shape.height == kMostPixels)
      return fail(1, "a shape of more than 2000 pixels");
    if (shape.height > 0 && width != shape.width)
      return fail(line_.size() + 1, "a row of another length than those above it");
    shape.width = width;
    for (std::size_t i = 0; i < line_.size(); ++i) {
      const auto level = kLevels.find(line_[i]);
      if (level == std::string_view::npos)
        return fail(i + 1, "a row has '.', '-', '+' and '#' only");
      shape.levels.push_back(static_cast<std::uint8_t>(level));
    }
    ++shape.height;
  }

  void finish() {
    if (entry_ && !isDamaged_) take(*entry_);
    if (isDamaged_) report_.damaged += raw_;
    entry_.reset();
    raw_.clear();
    isDamaged_ = false;
  }

  void take(const Entry& entry) {
    for (const auto& shape : entry.shapes) {
      if (shape.height == 0) return fail(1, "a shape without rows");
    }
    if (entry.isTogether) {
      if (entry.shapes.size() != 2) return fail(1, "'together' takes two shapes");
      const ShapeId first = book_.add(entry.shapes[0]), second = book_.add(entry.shapes[1]);
      if (first == kNoShape || second == kNoShape) return;
      book_.voteTogether(book_.kindOf(first), book_.kindOf(second), entry.text,
                         entry.isCorrected ? 1e6 : entry.weight);
      ++report_.letters;
      return;
    }
    if (entry.shapes.empty()) return fail(1, "a letter without a shape");
    const auto kind = book_.addKind(entry.shapes);
    if (!kind) return;
    ++report_.letters;
    book_.remember(*kind, entry.seen, entry.isItalic);
    if (entry.isCorrected) {
      book_.correct(*kind, entry.text);
    } else {
      book_.vote(*kind, entry.text, entry.weight);
    }
  }

  std::string_view text_;
  ShapeBook& book_;
  std::size_t place_ = 0;
  std::size_t number_ = 0;
  std::string_view line_;
  std::string raw_;  // lines of the entry at hand
  bool isDamaged_ = false;
  std::optional<Entry> entry_;
  ShapesReport report_;
};

std::string inQuotes(const std::string& text) {
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') out += '\\';
    out += c == '\n' ? ' ' : c;
  }
  return out + '"';
}

void append(std::string& out, const Shape& shape) {
  out += "rise " + std::to_string(shape.rise) + '\n';
  for (std::int32_t y = 0; y < shape.height; ++y) {
    for (std::int32_t x = 0; x < shape.width; ++x) {
      out += kLevels[static_cast<std::size_t>(shape.at(x, y))];
    }
    out += '\n';
  }
}

std::string decimal(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f", number);
  return text;
}

}  // namespace

ShapesReport readShapes(std::string_view text, ShapeBook& book) {
  return ShapesReader(text, book).read();
}

std::string writeShapes(const ShapeBook& book, double gap, std::string_view damaged) {
  std::string out(kHead);
  if (gap > 0) out += "gap " + decimal(gap) + '\n';
  for (KindId id = 0; id < book.kindCount(); ++id) {
    const auto& kind = book.kind(id);
    if (kind.votes.empty() && !kind.isCorrected) continue;
    const auto& text = kind.isCorrected ? kind.corrected : kind.votes.front().text;
    out += "\nletter " + inQuotes(text) + (kind.isCorrected ? " corrected" : " learnt") + " seen " +
           std::to_string(kind.seen);
    if (!kind.isCorrected) out += " sure " + decimal(kind.votes.front().weight);
    if (kind.leaning() > 0) out += " italic";
    out += '\n';
    for (const ShapeId shape : kind.shapes) append(out, book.shape(shape));
  }
  for (const auto& pair : book.allTogether()) {
    const bool isCorrected = pair.vote.weight >= 1e6;
    out += "\ntogether " + inQuotes(pair.vote.text) +
           (isCorrected ? " corrected" : " learnt sure " + decimal(pair.vote.weight)) + '\n';
    append(out, book.shape(book.kind(pair.first).shapes.front()));
    append(out, book.shape(book.kind(pair.second).shapes.front()));
  }
  if (!damaged.empty()) {
    out += "\n# What could not be read:\n";
    out += damaged;
  }
  return out;
}

}  // namespace korr::recognition
