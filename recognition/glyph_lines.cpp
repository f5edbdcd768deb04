// SPDX-License-Identifier: MIT
#include "recognition/glyph_lines.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <utility>

#include "recognition/glyph_joining.h"

namespace korr::recognition {

namespace {

// Of the usual height of parts: less is a dot, a comma or an accent.
constexpr double kLeastLetter = 0.45;

// Of the same: what stands alone and is lower makes no line beside others.
constexpr double kLeastAlone = 0.75;

struct Band {
  std::vector<std::uint32_t> letters;  // parts, left to right
  std::vector<std::uint32_t> marks;    // dots, commas, accents
  std::int32_t top = 0;
  std::int32_t bottom = 0;
};

std::int32_t overlap(std::int32_t from, std::int32_t to, std::int32_t otherFrom,
                     std::int32_t otherTo) {
  return std::min(to, otherTo) - std::max(from, otherFrom);
}

double median(std::vector<double> values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// The height that half of all letter rows belong to, so that dots do not count for much.
std::int32_t usualHeight(const std::vector<Part>& parts) {
  std::vector<std::int32_t> heights;
  std::int64_t sum = 0;
  for (const auto& part : parts) {
    heights.push_back(part.box.height());
    sum += part.box.height();
  }
  std::sort(heights.begin(), heights.end());
  std::int64_t below = 0;
  for (const auto height : heights) {
    below += height;
    if (below * 2 >= sum) return height;
  }
  return 0;
}

class LineFinder {
 public:
  LineFinder(const LetterMask& mask, const LetterParts& parts, Script script)
      : mask_(mask),
        parts_(parts.parts),
        all_(parts),
        script_(script),
        usual_(usualHeight(parts.parts)) {}

  std::vector<GlyphLine> find() {
    std::vector<std::uint32_t> order(parts_.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = static_cast<std::uint32_t>(i);
    std::stable_sort(order.begin(), order.end(),
                     [this](auto a, auto b) { return parts_[a].box.left < parts_[b].box.left; });
    std::vector<std::uint32_t> marks;
    for (const auto part : order) {
      if (parts_[part].box.height() < kLeastLetter * usual_) {
        marks.push_back(part);
      } else {
        addLetter(bands_, part);
      }
    }
    mergeBands();
    dissolveLowBands(marks);
    addMarks(marks);
    std::sort(bands_.begin(), bands_.end(),
              [](const Band& a, const Band& b) { return a.top + a.bottom < b.top + b.bottom; });
    std::vector<GlyphLine> lines;
    for (const auto& band : bands_) lines.push_back(lineOf(band));
    return lines;
  }

 private:
  const Box& boxOf(std::uint32_t part) const { return parts_[part].box; }

  // To the band whose last letters stand at the same height.
  void addLetter(std::vector<Band>& bands, std::uint32_t part) {
    const Box& box = boxOf(part);
    Band* best = nullptr;
    double bestShare = 0.5;
    for (auto& band : bands) {
      const std::size_t count = band.letters.size();
      for (std::size_t i = count - std::min<std::size_t>(count, 4); i < count; ++i) {
        const Box& other = boxOf(band.letters[i]);
        const double share = double(overlap(box.top, box.bottom, other.top, other.bottom)) /
                             double(std::min(box.height(), other.height()));
        // A comma stands within a letter that descends; the letters before it are its line.
        const double rank = share > 0.5 ? share + (count >= 3 ? 0.5 : 0) : 0;
        if (rank > bestShare) {
          bestShare = rank;
          best = &band;
        }
      }
    }
    if (!best)
      best = &bands.emplace_back(
          Band{.letters = {}, .marks = {}, .top = box.top, .bottom = box.bottom});
    best->letters.push_back(part);
    measure(*best);
  }

  void measure(Band& band) const {
    std::vector<double> tops, bottoms;
    for (const auto part : band.letters.empty() ? band.marks : band.letters) {
      tops.push_back(boxOf(part).top);
      bottoms.push_back(boxOf(part).bottom);
    }
    band.top = static_cast<std::int32_t>(median(std::move(tops)));
    band.bottom = static_cast<std::int32_t>(median(std::move(bottoms)));
  }

  void mergeBands() {
    for (std::size_t i = 0; i < bands_.size(); ++i) {
      for (std::size_t j = i + 1; j < bands_.size();) {
        auto& a = bands_[i];
        auto& b = bands_[j];
        if (overlap(a.top, a.bottom, b.top, b.bottom) * 2 <=
            std::min(a.bottom - a.top, b.bottom - b.top)) {
          ++j;
          continue;
        }
        a.letters.insert(a.letters.end(), b.letters.begin(), b.letters.end());
        bands_.erase(bands_.begin() + static_cast<std::ptrdiff_t>(j));
        measure(a);
        j = i + 1;
      }
    }
  }

  // Tall commas and quotation marks of low letters.
  void dissolveLowBands(std::vector<std::uint32_t>& marks) {
    if (bands_.size() < 2) return;
    for (auto& band : bands_) {
      const bool isLow = std::all_of(band.letters.begin(), band.letters.end(), [this](auto part) {
        return boxOf(part).height() < (script_ == Script::Joined ? 1 : kLeastAlone) * usual_;
      });
      if (!isLow) continue;
      marks.insert(marks.end(), band.letters.begin(), band.letters.end());
      band.letters.clear();
    }
    std::erase_if(bands_, [](const Band& band) { return band.letters.empty(); });
  }

  // A mark belongs to the band with the nearest letter; far from all it makes its own.
  void addMarks(const std::vector<std::uint32_t>& marks) {
    std::vector<Band> ownBands;
    for (const auto part : marks) {
      Band* nearest = nullptr;
      double least = 1e9;
      for (auto& band : bands_) {
        const double miss = distanceTo(band, boxOf(part));
        if (miss < least) {
          least = miss;
          nearest = &band;
        }
      }
      if (nearest) {
        nearest->marks.push_back(part);
      } else {
        addLetter(ownBands, part);
      }
    }
    for (auto& band : ownBands) bands_.push_back(std::move(band));
  }

  double distanceTo(const Band& band, const Box& box) const {
    const double height = band.bottom - band.top;
    const double middle = (box.top + box.bottom) / 2.0;
    // Joined letters hang deep below each other, and most are low.
    const bool isJoined = script_ == Script::Joined;
    const double above = (isJoined ? 1.6 : 1.25) * height;
    const double below = (isJoined ? 1.6 : 0.65) * height;
    if (middle < band.top - above || middle > band.bottom + below) return 1e9;
    double least = 1e9;
    for (const auto part : band.letters) {
      const Box& other = boxOf(part);
      const double across = std::max(0, -overlap(box.left, box.right, other.left, other.right));
      const double down = std::max(0, -overlap(box.top, box.bottom, other.top, other.bottom));
      least = std::min(least, across * across + 4 * down * down);
    }
    return least;
  }

  GlyphLine lineOf(const Band& band) {
    GlyphLine line;
    line.baseline = baselineOf(band);
    std::vector<double> heights;
    for (const auto part : band.letters) heights.push_back(line.baseline - boxOf(part).top);
    if (heights.empty()) heights.push_back(usual_);
    std::sort(heights.begin(), heights.end());
    line.height = std::max(1, static_cast<std::int32_t>(heights[heights.size() * 9 / 10]));
    if (script_ == Script::Separate) line.slant = slantOf(mask_, all_, band.letters, line.baseline);
    std::vector<std::uint32_t> all = band.letters;
    all.insert(all.end(), band.marks.begin(), band.marks.end());
    line.glyphs = glyphsOf(all, line);
    return line;
  }

  // The row that most letters stand on.
  std::int32_t baselineOf(const Band& band) const {
    std::vector<std::pair<std::int32_t, int>> counts;
    for (const auto part : band.letters.empty() ? band.marks : band.letters) {
      const auto bottom = boxOf(part).bottom;
      const auto found = std::find_if(counts.begin(), counts.end(),
                                      [&](const auto& c) { return c.first == bottom; });
      if (found == counts.end())
        counts.emplace_back(bottom, 1);
      else
        ++found->second;
    }
    std::int32_t best = band.bottom;
    double most = 0;
    for (const auto& [bottom, count] : counts) {
      double weight = count;
      for (const auto& [other, more] : counts) {
        if (std::abs(other - bottom) == 1) weight += 0.5 * more;
      }
      if (weight > most || (weight == most && bottom < best)) {
        most = weight;
        best = bottom;
      }
    }
    return best;
  }

  std::vector<Glyph> glyphsOf(const std::vector<std::uint32_t>& parts,
                              const GlyphLine& line) const {
    std::vector<Glyph> glyphs;
    for (const auto part : parts) {
      const Box& box = boxOf(part);
      const auto [left, right] = uprightExtent(part, line);
      glyphs.push_back({.parts = {part}, .box = box, .left = left, .right = right});
    }
    joinParts(glyphs, line, script_);
    return glyphs;
  }

  // Left and right as if the letters did not lean.
  std::pair<double, double> uprightExtent(std::uint32_t part, const GlyphLine& line) const {
    const Box& box = boxOf(part);
    if (line.slant == 0) return {box.left, box.right};
    double left = 1e9, right = -1e9;
    for (std::int32_t y = box.top; y < box.bottom; ++y) {
      const double shift = (y + 0.5 - line.baseline) * line.slant;
      const std::size_t row = static_cast<std::size_t>(y) * static_cast<std::size_t>(mask_.width);
      std::int32_t first = box.left, last = box.right;
      while (first < last && all_.labels[row + static_cast<std::size_t>(first)] != part + 1)
        ++first;
      if (first == last) continue;
      while (all_.labels[row + static_cast<std::size_t>(last - 1)] != part + 1) --last;
      left = std::min(left, first + shift);
      right = std::max(right, last + shift);
    }
    return {left, right};
  }

  const LetterMask& mask_;
  const std::vector<Part>& parts_;
  const LetterParts& all_;
  Script script_;
  std::int32_t usual_;
  std::vector<Band> bands_;
};

}  // namespace

std::vector<GlyphLine> findLines(const LetterMask& mask, const LetterParts& parts, Script script) {
  if (parts.parts.empty()) return {};
  return LineFinder(mask, parts, script).find();
}

}  // namespace korr::recognition
