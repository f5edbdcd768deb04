// SPDX-License-Identifier: MIT
#include "model/subtitle.h"

#include <algorithm>

namespace korr::encoding::subtitling::inline v2_1 {

namespace {

template <class Text>
bool hasGlyphs(const Text& text) {
  return std::any_of(text.rows.begin(), text.rows.end(), [](const auto& row) {
    return std::any_of(row.runs.begin(), row.runs.end(),
                       [](const auto& run) { return !run.glyphs.empty(); });
  });
}

template <class Payload>
bool equalPayloads(const Payload* left, const Payload* right) {
  return left == right || (left && right && *left == *right);
}

}  // namespace

Subtitle::Subtitle(TeletextText text)
    : kind_(SubtitleKind::TeletextText),
      teletextText_(std::make_unique<const TeletextText>(std::move(text))) {
}

Subtitle::Subtitle(CaptionText text)
    : kind_(SubtitleKind::CaptionText),
      captionText_(std::make_unique<const CaptionText>(std::move(text))) {
}

Subtitle::Subtitle(SubtitleBitmap bitmap)
    : kind_(SubtitleKind::Bitmap),
      bitmap_(std::make_unique<const SubtitleBitmap>(std::move(bitmap))) {
}

Subtitle::Subtitle(WindowText text)
    : kind_(SubtitleKind::WindowText),
      windowText_(std::make_unique<const WindowText>(std::move(text))) {
}

Subtitle::Subtitle(PlacedText text)
    : kind_(SubtitleKind::PlacedText),
      placedText_(std::make_unique<const PlacedText>(std::move(text))) {
}

Subtitle::Subtitle(SubtitleKind kind) : kind_(kind) {
  switch (kind) {
    case SubtitleKind::TeletextText:
      teletextText_ = std::make_unique<const TeletextText>();
      break;
    case SubtitleKind::CaptionText:
      captionText_ = std::make_unique<const CaptionText>();
      break;
    case SubtitleKind::Bitmap:
      bitmap_ = std::make_unique<const SubtitleBitmap>();
      break;
    case SubtitleKind::WindowText:
      windowText_ = std::make_unique<const WindowText>();
      break;
    case SubtitleKind::PlacedText:
      placedText_ = std::make_unique<const PlacedText>();
      break;
  }
}

bool operator==(const Subtitle& left, const Subtitle& right) {
  if (left.kind() != right.kind()) return false;
  if (left.bitmap() && right.bitmap()) {
    return left.bitmap()->visible == right.bitmap()->visible &&
           left.bitmap()->pageState == right.bitmap()->pageState;
  }
  return equalPayloads(left.teletextText(), right.teletextText()) &&
         equalPayloads(left.captionText(), right.captionText()) &&
         equalPayloads(left.windowText(), right.windowText()) &&
         equalPayloads(left.placedText(), right.placedText());
}

bool isEmpty(const Subtitle& subtitle) {
  if (const auto* text = subtitle.teletextText()) return !hasGlyphs(*text);
  if (const auto* text = subtitle.captionText()) return !hasGlyphs(*text);
  if (const auto* text = subtitle.windowText()) {
    return std::ranges::none_of(text->windows, hasGlyphs<WindowText::Window>);
  }
  if (const auto* text = subtitle.placedText()) return text->lines.empty();
  return !subtitle.bitmap() || subtitle.bitmap()->visible == 0;
}

}  // namespace korr::encoding::subtitling::inline v2_1
