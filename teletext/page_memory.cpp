// SPDX-License-Identifier: MIT
#include "teletext/page_memory.h"

#include <algorithm>
#include <utility>

#include "teletext/row_decoder.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {
namespace {

constexpr std::uint32_t kHeaderRow = 0;

// Whether two rows show the same wherever the first was received well.
bool agree(const PageMemory::Cells& damaged, const PageMemory::Cells& whole) {
  return std::ranges::equal(damaged, whole, [](std::uint8_t cell, std::uint8_t other) {
    return cell == kUnknownCharacter || cell == other;
  });
}

void mend(PageMemory::Cells& damaged, const PageMemory::Cells& other) {
  std::ranges::transform(damaged, other, damaged.begin(),
                         [](std::uint8_t cell, std::uint8_t known) {
                           return cell == kUnknownCharacter ? known : cell;
                         });
}

bool hasText(const std::vector<TeletextText::Run>& runs) {
  const auto isLetter = [](const GlyphText& glyph) {
    return !glyph.view().empty() && glyph.view() != " ";
  };
  return std::ranges::any_of(runs, [&](const TeletextText::Run& run) {
    return std::ranges::any_of(run.glyphs, isLetter);
  });
}

bool hasDoubleHeight(const std::vector<TeletextText::Run>& runs) {
  return std::ranges::any_of(runs, [](const TeletextText::Run& run) {
    return run.size == TeletextSize::DoubleHeight || run.size == TeletextSize::Double;
  });
}

class Composer {
 public:
  Composer(const PageMemory& page, const PageDisplay& display)
      : page_(page),
        characters_(defaultSet(page.designation, display.magazine, display.characterGroup,
                               page.header.nationalOption)) {
    // A page that names its second set goes before its magazine.
    if (page.designation) second_ = page.designation->secondSet();
    if (!second_ && display.magazine) second_ = display.magazine->secondSet();
    for (const auto& packet : page.enhancements) {
      if (packet) {
        enhancements_.take(*packet, characters_);
      } else {
        enhancements_.loseRow();
      }
    }
  }

  TeletextText rows(std::uint32_t first, bool boxesOnly) const {
    TeletextText text;
    for (std::uint32_t row = first; row < PageMemory::kRows; ++row) {
      if (!page_.rows[row]) continue;
      auto runs = decode(row, boxesOnly);
      const bool coversNext = hasDoubleHeight(runs);
      if (hasText(runs)) text.rows.push_back({static_cast<std::int32_t>(row), std::move(runs)});
      if (coversNext) ++row;
    }
    return text;
  }

 private:
  std::vector<TeletextText::Run> decode(std::uint32_t row, bool boxesOnly) const {
    const std::uint32_t column = row == kHeaderRow ? kHeaderTextColumn : 0;
    const RowContext context{.row = row,
                             .firstColumn = column,
                             .characters = characters_,
                             .enhancements = enhancements_,
                             .second = second_ ? &*second_ : nullptr,
                             .boxesOnly = boxesOnly};
    return decodeCodes<kReceiver>(std::span(*page_.rows[row]).subspan(column), context);
  }

  const PageMemory& page_;
  CharacterSet characters_;
  std::optional<CharacterSet> second_;
  Enhancements enhancements_;
};

}  // namespace

void PageMemory::storeRow(std::uint32_t row, std::span<const std::uint8_t, Packet::kDataSize> bytes,
                          const PageMemory& before) {
  constexpr auto& kCodes = characterCodes(kReceiver);
  Cells cells;
  std::ranges::transform(bytes, cells.begin(), [](std::uint8_t byte) { return kCodes[byte]; });
  // The first bytes of a header are no characters.
  if (row == kHeaderRow) std::fill_n(cells.begin(), kHeaderTextColumn, std::uint8_t{' '});
  // Nearly all rows come undamaged.
  if (std::ranges::find(cells, kUnknownCharacter) != cells.end()) {
    const auto& repeated = before.rows[row];
    if (rows[row]) mend(cells, *rows[row]);
    if (repeated && agree(cells, *repeated)) mend(cells, *repeated);
  }
  rows[row] = cells;
}

void PageMemory::storeEnhancement(std::span<const std::uint8_t, Packet::kDataSize> data) {
  if (!kIsHamming84[data[0]]) return;
  std::ranges::copy(data, enhancements[decodeHamming84(data[0])].emplace().begin());
}

void PageMemory::erase() {
  rows = {};
  enhancements = {};
  designation.reset();
}

std::size_t PageMemory::damagedCells() const {
  std::ptrdiff_t count = 0;
  for (const auto& row : rows) {
    if (row) count += std::ranges::count(*row, kUnknownCharacter);
  }
  return static_cast<std::size_t>(count);
}

TeletextText compose(const PageMemory& page, const PageDisplay& display) {
  const bool isBoxed = kReceiver.shows(page.header);
  if (!isBoxed && (!display.isAskedFor || page.header.inhibitDisplay)) return {};
  const Composer composer(page, display);
  if (isBoxed) return composer.rows(kHeaderRow, true);
  auto boxes = composer.rows(kHeaderRow + 1, true);
  return boxes.rows.empty() ? composer.rows(kHeaderRow + 1, false) : std::move(boxes);
}

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
