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

CaptionMemory rollUpSnapshot(const CaptionMemory& memory, CaptionMode mode) {
  if (!isRollUp(mode)) return memory;
  CaptionMemory snapshot;
  for (auto row = memory.rbegin(); row != memory.rend() && snapshot.size() < rollUpDepth(mode);
       ++row) {
    if (holdsText(row->second))
      snapshot.emplace_hint(snapshot.begin(), row->first - 1, row->second);
  }
  return snapshot;
}

CaptionText toScreen(const CaptionMemory& memory) {
  CaptionText screen;
  screen.rows.reserve(memory.size());
  for (const auto& [number, row] : memory) {
    screen.rows.push_back(row);
    screen.rows.back().number = number;
  }
  return screen;
}

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
