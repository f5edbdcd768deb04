// SPDX-License-Identifier: MIT
#include "closed_caption/caption_display_decoder.h"

#include <algorithm>
#include <utility>

namespace korr::encoding::subtitling::closed_caption::inline v2 {
namespace {

constexpr std::size_t kTripletBytes = 3;
constexpr MediaTime kReportInterval = 10 * kSecond;

// However it was written: a caption that is painted on may be sent as pop-on for latecomers.
bool lookAlike(const CaptionText& left, const CaptionText& right) {
  return std::equal(left.rows.begin(), left.rows.end(), right.rows.begin(), right.rows.end(),
                    [](const auto& row, const auto& other) {
                      return row.number == other.number && row.runs == other.runs;
                    });
}

}  // namespace

CaptionDisplayDecoder::CaptionDisplayDecoder(std::uint32_t service, IDisplayListener& listener,
                                             log::ILogger* logger)
    : number_(service),
      service_(CaptionService::fromNumber(service)),
      listener_(listener),
      logger_(logger),
      intake_(service_) {
}

bool CaptionDisplayDecoder::execute(const FieldIntake::Taken& taken) {
  if (taken.content == FieldIntake::Content::Text) return receiver_.executeText(taken.pair);
  return taken.content == FieldIntake::Content::Control && receiver_.executeControl(taken.pair);
}

void CaptionDisplayDecoder::decode(std::span<const std::uint8_t> unit, MediaTime time) {
  time_ = std::max(time_, time);
  eraseIfIdle(time_);
  for (; unit.size() >= kTripletBytes; unit = unit.subspan(kTripletBytes)) {
    const auto sent = line21Pair(unit.first<kTripletBytes>(), service_.field);
    if (!sent) continue;
    const auto taken = intake_.take(*sent, time_);
    if (taken.wasDamaged) reportDamage(time_);
    if (execute(taken)) lastData_ = time_;
  }
  tell(time_);
}

// A caption of the very last unit is not cleared, or it would be gone at once: how long to show it
// is the listener's to say.
void CaptionDisplayDecoder::finish(MediaTime end) {
  eraseIfIdle(std::max(time_, end));
  if (end <= time_) return;
  receiver_.eraseDisplayed();
  tell(end);
}

// The displayed memory only: what waits for its end of caption stays (CEA-608, C.9).
void CaptionDisplayDecoder::eraseIfIdle(MediaTime time) {
  if (shown_.rows.empty() || time - lastData_ < kErasureTime) return;
  receiver_.eraseDisplayed();
  tell(lastData_ + kErasureTime);
}

void CaptionDisplayDecoder::tell(MediaTime time) {
  if (!receiver_.hasChanged()) return;
  receiver_.clearChanged();
  CaptionText text = receiver_.displayed().toText();
  if (lookAlike(text, shown_)) return;
  shown_ = text;
  listener_.onDisplay(time, Subtitle(std::move(text)));
}

void CaptionDisplayDecoder::reportDamage(MediaTime time) {
  if (time < nextReport_) return;
  nextReport_ = time + kReportInterval;
  log::write(
      logger_, log::Level::Warning,
      "captions CC%u: wrong parity; such characters are shown as solid blocks, such codes are "
      "left out",
      number_);
}

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
