// SPDX-License-Identifier: MIT
#include "dvb_subtitle/page_history.h"

#include <iterator>
#include <utility>

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

void PageHistory::store(SubtitleBitmap page) {
  SubtitleBitmap& place = pages_[page.start];
  pixelBytes_ += page.pixels->size() - place.pixels->size();
  place = std::move(page);
  while (pixelBytes_ > kMostPixelBytes && pages_.size() > 1) eraseFirst();
}

void PageHistory::eraseBefore(MediaTime time) {
  while (!pages_.empty() && pages_.begin()->first < time) eraseFirst();
}

SubtitleBitmap PageHistory::at(MediaTime time) const {
  const auto later = pages_.upper_bound(time);
  if (later == pages_.begin()) return {};
  const SubtitleBitmap& page = std::prev(later)->second;
  return page.end >= time ? page : SubtitleBitmap{};
}

void PageHistory::eraseFirst() {
  pixelBytes_ -= pages_.begin()->second.pixels->size();
  pages_.erase(pages_.begin());
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
