// SPDX-License-Identifier: MIT

// The decoder of segments: what a page is made of, and when it is whole.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>

#include "dvb_subtitle/page_painter.h"
#include "dvb_subtitle/pixel_buffer_pool.h"
#include "dvb_subtitle/region.h"
#include "dvb_subtitle/segments.h"
#include "log/logger.h"
#include "model/dvb_pages.h"
#include "model/media_time.h"
#include "model/subtitle.h"
#include "util/bit_reader.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// Decodes the segments of one stream and paints its pages (EN 300 743, clause 7.2). A page is
/// painted as soon as all regions and objects that it refers to are known. Not thread-safe.
class DVBSubtitleRenderer {
 public:
  /// `logger` takes warnings, `droppedPages` counts the pages that never became whole; both may be
  /// null and are not owned.
  explicit DVBSubtitleRenderer(log::ILogger* logger, std::uint64_t* droppedPages = nullptr)
      : logger_(logger), droppedPages_(droppedPages) {}

  /// Follows another page for CLUTs and objects as well (EN 300 743, 7.2.1: ancillary page).
  void setAncillaryPage(std::uint16_t pageId) { ancillaryPage_ = pageId; }

  /// Follows a service's pages, not the first page that comes.
  void setPages(const DvbPages& pages) {
    compositionPage_ = pages.composition;
    if (pages.ancillary != pages.composition) setAncillaryPage(pages.ancillary);
  }

  /// The aspect ratio of the picture that the pages lie over; without one that of the display
  /// stands. Both above 0.
  void setPictureAspectRatio(std::uint32_t numerator, std::uint32_t denominator) {
    pictureAspectRatio_ = {numerator, denominator};
  }

  /// Call before the segments of each payload: gives it its share of painting.
  void beginPayload() { budget_ = {}; }

  /// Decodes one segment of a payload with presentation time `time`. The page, if the segment
  /// completes one. A segment that cannot be decoded, or a page that cannot be painted, is logged;
  /// the page then stays pending. Throws nothing but std::bad_alloc.
  std::optional<SubtitleBitmap> decode(std::span<const std::uint8_t> segment, MediaTime time);

 private:
  struct Fraction {
    std::uint32_t numerator = 1;
    std::uint32_t denominator = 1;
  };

  std::optional<SubtitleBitmap> tryDecode(std::span<const std::uint8_t> segment, MediaTime time);
  bool isFollowed(const SegmentHeader& header);
  void execute(SegmentType type, util::BitReader& reader, MediaTime time);
  void takePageComposition(util::BitReader& reader, MediaTime time);
  void takeRegionComposition(util::BitReader& reader);
  void takeClutDefinition(util::BitReader& reader);
  void takeObjectData(util::BitReader& reader);

  std::size_t countObjectsOnPage() const;
  std::optional<std::string> missingItem() const;
  SubtitleBitmap composePage(std::int32_t sequenceNumber);
  Fraction pageAspectRatio() const;
  const DVBClutSet& clutsOf(std::uint32_t clutId) const;

  log::ILogger* logger_;
  std::uint64_t* droppedPages_;
  DisplayDefinition display_;
  std::uint32_t pagesComposed_ = 0;
  std::optional<std::uint16_t> ancillaryPage_;
  std::optional<std::uint16_t> compositionPage_;  // the first page_id seen
  std::optional<Fraction> pictureAspectRatio_;
  bool acquired_ = false;  // by an acquisition point or a mode change
  bool pagePending_ = false;
  MediaTime pageStart_ = 0;
  MediaTime pageEnd_ = 0;
  Placements pageRegions_;
  std::map<int, DVBRegion> regions_;
  std::map<int, DVBObject> objects_;
  std::size_t objectBytes_ = 0;  // of all objects
  std::map<int, DVBClutSet> cluts_;
  PaintingBudget budget_;
  PixelBufferPool pixelBuffers_;
};

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
