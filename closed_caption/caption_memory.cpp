// SPDX-License-Identifier: MIT
#include "closed_caption/caption_memory.h"

#include <algorithm>

namespace korr::encoding::subtitling::closed_caption::inline v2 {
namespace {

bool holdsText(const CaptionText::TextRow& row) {
  return std::any_of(row.runs.begin(), row.runs.end(),
                     [](const auto& run) { return !run.glyphs.empty(); });
}

}  // namespace

std::size_t rollUpDepth(CaptionMode mode) {
  switch (mode) {
    case CaptionMode::RollUp2:
      return 2;
    case CaptionMode::RollUp3:
      return 3;
    case CaptionMode::RollUp4:
      return 4;
    default:
      return 0;
  }
}

CaptionText::TextRow& rowAt(CaptionMemory& memory, std::int32_t number, CaptionMode mode) {
  const auto place = std::find_if(memory.begin(), memory.end(),
                                  [number](const auto& row) { return row.number >= number; });
  if (place != memory.end() && place->number == number) return *place;
  return *memory.insert(place, {.runs = {}, .mode = mode, .number = number});
}

void rollUp(CaptionMemory& memory, CaptionMode mode) {
  if (!isRollUp(mode)) return;
  std::erase_if(memory, [](const auto& row) { return !holdsText(row); });
  const auto excess = std::max(memory.size(), rollUpDepth(mode)) - rollUpDepth(mode);
  memory.erase(memory.begin(), memory.begin() + static_cast<std::ptrdiff_t>(excess));
  for (auto& row : memory) --row.number;
}

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
