// SPDX-License-Identifier: MIT

// DVB subtitles as a receiver shows them.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <span>

#include "dvb_subtitle/page_memory.h"
#include "dvb_subtitle/segments.h"
#include "log/logger.h"
#include "model/display.h"
#include "model/dvb_pages.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// Follows one service of a stream (EN 300 743). A page is shown from the time of its display set
/// on: when that set ends, or, where its end is not marked, when a unit ends that leaves nothing
/// out or when a unit of another time comes. It goes when its time-out has passed or a page without
/// regions follows. Pictures are those of the whole display; a page that shows what is shown
/// already is told with the old `pageState` and its new end.
class DvbDisplayDecoder final : public IDisplayDecoder {
 public:
  /// Without `pages`, what is on the first page that comes is shown, with the CLUTs and objects of
  /// pages that show nothing by themselves. `listener` and `logger` (which takes a line for each
  /// damage, and may be null) are not owned.
  DvbDisplayDecoder(std::optional<DvbPages> pages, IDisplayListener& listener,
                    log::ILogger* logger);

  void decode(std::span<const std::uint8_t> unit, MediaTime time) override;

  /// The page that is shown stays until its time-out, wherever the stream ends.
  void finish(MediaTime end) override;

 private:
  struct Page {
    MediaTime end = 0;
    Placements regions;
  };

  void takeSegment(std::span<const std::uint8_t> segment);
  bool isFollowed(const SegmentHeader& header);
  void execute(SegmentType type, util::BitReader& reader);
  void takePage(util::BitReader& reader);
  void endDisplaySet(bool isMarked);
  void show(SubtitleBitmap picture);
  void timeOutBefore(MediaTime time);

  std::optional<DvbPages> pages_;
  IDisplayListener& listener_;
  log::ILogger* logger_;
  std::optional<std::uint16_t> firstPage_;  // where no pages are given
  std::set<std::uint16_t> otherPages_;      // that have compositions of their own
  PageMemory memory_;
  MediaTime time_ = 0;  // of the unit
  bool acquired_ = false;
  bool isChanged_ = false;  // since the display was composed
  std::optional<Page> page_;
  std::optional<SubtitleBitmap> shown_;  // none: the screen is empty
  std::int32_t pictures_ = 0;
};

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
