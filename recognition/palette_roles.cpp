// SPDX-License-Identifier: MIT
#include "recognition/palette_roles.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace korr::recognition {

namespace {

using Premultiplied = std::array<double, 4>;

constexpr std::size_t kNone = SIZE_MAX;
constexpr std::size_t kMostSolids = 12;

// How far two colours may differ and still be one to whoever drew them.
constexpr double kSameColour = 48;

// Squares of 2 by 2 for each pixel: contours have next to none, a stroke of two pixels has this
// many.
constexpr double kLeastDensity = 0.04;

// Of the pixels that can be seen: fewer are no colour of their own.
constexpr double kLeastShare = 0.01;

// A blend is as wide as the smoothing of a contour.
constexpr std::int32_t kMostBlendWidth = 3;

// Pixels of a box for each of its pixels that touch the background; an outline has two or three.
constexpr double kLeastBoxThickness = 6;

Premultiplied premultiplied(const Colour& colour) {
  const double alpha = colour.alpha / 255.0;
  return {colour.red * alpha, colour.green * alpha, colour.blue * alpha, double(colour.alpha)};
}

double distance(const Premultiplied& left, const Premultiplied& right) {
  double sum = 0;
  for (std::size_t i = 0; i < 4; ++i) sum += (left[i] - right[i]) * (left[i] - right[i]);
  return std::sqrt(sum);
}

double luma(const Colour& colour) {
  return (0.299 * colour.red + 0.587 * colour.green + 0.114 * colour.blue) * colour.alpha / 255;
}

// Where `point` lies between two others: 0 at the first one, 1 at the second one.
double positionBetween(const Premultiplied& first, const Premultiplied& second,
                       const Premultiplied& point) {
  double along = 0, length = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    along += (point[i] - first[i]) * (second[i] - first[i]);
    length += (second[i] - first[i]) * (second[i] - first[i]);
  }
  return length == 0 ? 0 : std::clamp(along / length, 0.0, 1.0);
}

Premultiplied mixed(const Premultiplied& first, const Premultiplied& second, double position) {
  Premultiplied out{};
  for (std::size_t i = 0; i < 4; ++i) out[i] = first[i] + (second[i] - first[i]) * position;
  return out;
}

// What is counted of each palette entry.
struct Usage {
  std::size_t pixels = 0;
  std::size_t squares = 0;  // of 2 by 2 pixels
};

std::vector<Usage> countUsage(const IndexedPicture& picture) {
  std::vector<Usage> usage(picture.palette.size());
  for (std::int32_t y = 0; y < picture.height; ++y) {
    for (std::int32_t x = 0; x < picture.width; ++x) {
      const auto entry = picture.at(x, y);
      ++usage[entry].pixels;
      if (entry != 0 && x + 1 < picture.width && y + 1 < picture.height &&
          picture.at(x + 1, y) == entry && picture.at(x, y + 1) == entry &&
          picture.at(x + 1, y + 1) == entry) {
        ++usage[entry].squares;
      }
    }
  }
  return usage;
}

class RoleFinder {
 public:
  explicit RoleFinder(const IndexedPicture& picture)
      : picture_(picture), usage_(countUsage(picture)) {
    for (const auto& colour : picture.palette) points_.push_back(premultiplied(colour));
  }

  PaletteRoles find() {
    findSolids();
    countContacts();
    giveRoles();
    return spread();
  }

 private:
  // Colours that areas are filled with; entry 0 first. The others are blends of them.
  void findSolids() {
    std::vector<std::size_t> order;
    std::size_t most = 0;
    for (std::size_t i = 1; i < usage_.size(); ++i) {
      order.push_back(i);
      most = std::max(most, usage_[i].squares);
    }
    const auto weight = [this](std::size_t i) { return usage_[i].squares * 4 + usage_[i].pixels; };
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return weight(a) > weight(b); });
    solids_ = {0};
    for (const std::size_t entry : order) {
      if (solids_.size() == kMostSolids) break;
      if (isSolid(entry, most)) solids_.push_back(entry);
    }
    addUnexplained();
    if (solids_.size() == 1 && !order.empty()) solids_.push_back(order.front());
    solidOf_.assign(usage_.size(), kNone);
    for (std::size_t s = 0; s < solids_.size(); ++s) solidOf_[solids_[s]] = s;
    for (std::size_t i = 1; i < usage_.size(); ++i) {
      for (std::size_t s = 1; s < solids_.size() && solidOf_[i] == kNone; ++s) {
        if (distance(points_[i], points_[solids_[s]]) < kSameColour / 2) solidOf_[i] = s;
      }
    }
  }

  // Strokes thinner than two pixels fill no squares: colours that no two solid ones blend to, the
  // farthest first.
  void addUnexplained() {
    double visible = 0;
    for (std::size_t i = 1; i < usage_.size(); ++i) visible += double(usage_[i].pixels);
    while (solids_.size() < kMostSolids) {
      std::size_t farthest = kNone;
      double most = kSameColour;
      for (std::size_t i = 1; i < usage_.size(); ++i) {
        if (double(usage_[i].pixels) < kLeastShare * visible) continue;
        const double miss = missOf(i);
        if (miss <= most) continue;
        most = miss;
        farthest = i;
      }
      if (farthest == kNone) return;
      solids_.push_back(farthest);
    }
  }

  // To the nearest blend of two solid colours.
  double missOf(std::size_t entry) const {
    double least = 1e9;
    for (const std::size_t a : solids_) {
      for (const std::size_t b : solids_) {
        const double position = positionBetween(points_[a], points_[b], points_[entry]);
        least = std::min(least, distance(points_[entry], mixed(points_[a], points_[b], position)));
      }
    }
    return least;
  }

  bool isSolid(std::size_t entry, std::size_t most) const {
    const auto& usage = usage_[entry];
    if (usage.squares < 4 || usage.squares * 50 < most) return false;
    const double density = double(usage.squares) / double(usage.pixels);
    if (density < kLeastDensity) return false;
    for (std::size_t a = 0; a < solids_.size(); ++a) {
      if (distance(points_[entry], points_[solids_[a]]) < kSameColour) return false;
      for (std::size_t b = a + 1; b < solids_.size() && density < 0.4; ++b) {
        const auto& first = points_[solids_[a]];
        const auto& second = points_[solids_[b]];
        const double position = positionBetween(first, second, points_[entry]);
        if (position > 0.1 && position < 0.9 &&
            distance(points_[entry], mixed(first, second, position)) < kSameColour / 2) {
          return false;
        }
      }
    }
    return true;
  }

  // How often each solid colour meets each other one along rows and columns, blends skipped.
  void countContacts() {
    contacts_.assign(solids_.size(), std::vector<std::size_t>(solids_.size()));
    for (std::int32_t y = 0; y < picture_.height; ++y) {
      walk(picture_.width, [&](std::int32_t x) { return picture_.at(x, y); });
    }
    for (std::int32_t x = 0; x < picture_.width; ++x) {
      walk(picture_.height, [&](std::int32_t y) { return picture_.at(x, y); });
    }
  }

  template <class At>
  void walk(std::int32_t length, At at) {
    std::size_t last = 0;
    std::int32_t lastPlace = -1;
    for (std::int32_t i = 0; i <= length; ++i) {
      const std::size_t solid = i < length ? solidOf_[at(i)] : 0;
      if (solid == kNone) continue;
      if (solid != last && i - lastPlace <= kMostBlendWidth + 1) {
        ++contacts_[last][solid];
        ++contacts_[solid][last];
      }
      last = solid;
      lastPlace = i;
    }
  }

  std::size_t contactsOf(std::size_t solid) const {
    std::size_t sum = 0;
    for (const auto count : contacts_[solid]) sum += count;
    return sum;
  }

  void giveRoles() {
    roles_.assign(solids_.size(), ColourRole::Fill);
    roles_[0] = ColourRole::Background;
    findBox();
    const auto outside = [this](std::size_t solid) {
      std::size_t sum = 0;
      for (std::size_t other = 0; other < solids_.size(); ++other) {
        if (roles_[other] == ColourRole::Background || roles_[other] == ColourRole::Box) {
          sum += contacts_[solid][other];
        }
      }
      return sum;
    };
    std::vector<bool> isEnclosed(solids_.size());
    bool anyEnclosed = false;
    for (std::size_t s = 1; s < solids_.size(); ++s) {
      isEnclosed[s] = roles_[s] == ColourRole::Fill && outside(s) * 4 < contactsOf(s);
      anyEnclosed = anyEnclosed || isEnclosed[s];
    }
    for (std::size_t s = 1; s < solids_.size(); ++s) {
      if (roles_[s] != ColourRole::Fill) continue;
      if (anyEnclosed ? !isEnclosed[s] : isShadow(s)) roles_[s] = ColourRole::Edge;
    }
  }

  void findBox() {
    for (std::size_t s = 1; s < solids_.size(); ++s) {
      const double touching = double(std::max<std::size_t>(contacts_[s][0], 1));
      if (double(usage_[solids_[s]].pixels) < touching * kLeastBoxThickness) continue;
      // Something must be written on it, and it must reach the outside more than what is on it.
      if (contactsOf(s) > contacts_[s][0] && contacts_[s][0] > 0 && isLargest(s)) {
        roles_[s] = ColourRole::Box;
      }
    }
  }

  bool isLargest(std::size_t solid) const {
    for (std::size_t s = 1; s < solids_.size(); ++s) {
      if (usage_[solids_[s]].pixels > usage_[solids_[solid]].pixels) return false;
    }
    return true;
  }

  // Beside a brighter colour that it touches often.
  bool isShadow(std::size_t solid) const {
    for (std::size_t s = 1; s < solids_.size(); ++s) {
      if (s == solid || roles_[s] == ColourRole::Box) continue;
      if (contacts_[solid][s] * 5 > contactsOf(solid) &&
          luma(picture_.palette[solids_[s]]) > luma(picture_.palette[solids_[solid]])) {
        return true;
      }
    }
    return false;
  }

  // From the solid colours to every entry.
  PaletteRoles spread() const {
    PaletteRoles out;
    const auto count = picture_.palette.size();
    out.roles.assign(count, ColourRole::Blend);
    out.coverage.assign(count, 0);
    out.fillOf.assign(count, 0);
    for (std::size_t s = 0; s < solids_.size(); ++s) {
      if (roles_[s] == ColourRole::Fill) out.fills.push_back(static_cast<std::uint8_t>(solids_[s]));
    }
    for (std::size_t i = 0; i < count; ++i) {
      if (const auto solid = solidOf_[i]; solid != kNone) out.roles[i] = roles_[solid];
      setCoverage(out, i);
    }
    return out;
  }

  void setCoverage(PaletteRoles& out, std::size_t entry) const {
    if (entry == 0) return;
    double best = 1e9;
    double nearestFill = 1e9;
    for (std::size_t a = 0; a < solids_.size(); ++a) {
      for (std::size_t b = 0; b < solids_.size(); ++b) {
        const double position =
            a == b ? 1 : positionBetween(points_[solids_[a]], points_[solids_[b]], points_[entry]);
        const auto point = mixed(points_[solids_[a]], points_[solids_[b]], position);
        const double miss = distance(points_[entry], point);
        if (miss >= best - 1e-9) continue;
        best = miss;
        const double fromA = roles_[a] == ColourRole::Fill ? 1 - position : 0;
        const double fromB = roles_[b] == ColourRole::Fill ? position : 0;
        out.coverage[entry] = static_cast<std::uint8_t>(std::lround(255 * (fromA + fromB)));
      }
    }
    for (std::size_t i = 0; i < out.fills.size(); ++i) {
      const double miss = hueDistance(entry, out.fills[i]);
      if (miss < nearestFill) {
        nearestFill = miss;
        out.fillOf[entry] = static_cast<std::uint8_t>(i);
      }
    }
  }

  // Of a blend to a fill: to the nearest point between it and whatever is no fill.
  double hueDistance(std::size_t entry, std::size_t fill) const {
    double best = distance(points_[entry], points_[fill]);
    for (std::size_t s = 0; s < solids_.size(); ++s) {
      if (roles_[s] == ColourRole::Fill) continue;
      const double position = positionBetween(points_[solids_[s]], points_[fill], points_[entry]);
      best = std::min(
          best, distance(points_[entry], mixed(points_[solids_[s]], points_[fill], position)));
    }
    return best;
  }

  const IndexedPicture& picture_;
  std::vector<Usage> usage_;
  std::vector<Premultiplied> points_;
  std::vector<std::size_t> solids_;   // palette entries
  std::vector<std::size_t> solidOf_;  // of each palette entry: index of `solids_`
  std::vector<std::vector<std::size_t>> contacts_;
  std::vector<ColourRole> roles_;  // of `solids_`
};

}  // namespace

PaletteRoles findRoles(const IndexedPicture& picture) {
  return RoleFinder(picture).find();
}

}  // namespace korr::recognition
