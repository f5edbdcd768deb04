// SPDX-License-Identifier: MIT
#include "dvb_subtitle/dvb_display_decoder.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "dvb_subtitle/errors.h"
#include "dvb_subtitle/received_field.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {
namespace {

using util::BitReader;

bool isSamePicture(const SubtitleBitmap& left, const SubtitleBitmap& right) {
  const auto rows = left.pixels->paintedRows();
  if (left.width != right.width || left.height != right.height ||
      rows != right.pixels->paintedRows()) {
    return false;
  }
  const std::size_t stride = left.pixels->size() / left.height;
  return std::memcmp(left.pixels->data() + rows.first * stride,
                     right.pixels->data() + rows.first * stride,
                     (rows.end - rows.first) * stride) == 0;
}

bool showsNothing(const SubtitleBitmap& picture) {
  const auto rows = picture.pixels->paintedRows();
  return rows.first == rows.end;
}

}  // namespace

DvbDisplayDecoder::DvbDisplayDecoder(std::optional<DvbPages> pages, IDisplayListener& listener,
                                     log::ILogger* logger)
    : pages_(pages), listener_(listener), logger_(logger), memory_(logger) {
}

void DvbDisplayDecoder::decode(std::span<const std::uint8_t> unit, MediaTime time) {
  time = std::max(time, time_);
  if (time != time_) endDisplaySet(true);
  timeOutBefore(time);
  time_ = time;
  memory_.beginUnit();
  const ReceivedField field = readField(unit);
  if (!field.damage.empty()) log::write(logger_, log::Level::Warning, "%s", field.damage.c_str());
  for (const auto segment : field.segments) {
    try {
      takeSegment(segment);
    } catch (const SegmentError& error) {
      log::write(logger_, log::Level::Warning, "%s", error.what());
    }
  }
  endDisplaySet(false);
}

void DvbDisplayDecoder::finish(MediaTime end) {
  endDisplaySet(true);
  timeOutBefore(std::max(end, shown_ ? shown_->end : end));
}

void DvbDisplayDecoder::takeSegment(std::span<const std::uint8_t> segment) {
  BitReader reader(segment);
  const SegmentHeader header = readSegmentHeader(reader);
  if (reader.failed()) throw SegmentError("Segment header cut off");
  if (isFollowed(header)) execute(header.type, reader);
}

// Of pages other than the service's own, CLUTs and objects only (EN 300 743, 7.2).
bool DvbDisplayDecoder::isFollowed(const SegmentHeader& header) {
  const bool isShared =
      header.type == SegmentType::ClutDefinition || header.type == SegmentType::ObjectData;
  if (pages_) {
    return header.pageId == pages_->composition || (isShared && header.pageId == pages_->ancillary);
  }
  const bool isComposition = header.type == SegmentType::PageComposition;
  if (isComposition && !firstPage_) firstPage_ = header.pageId;
  if (!firstPage_ || header.pageId == *firstPage_) return true;
  if (isComposition) otherPages_.insert(header.pageId);
  return isShared && !otherPages_.contains(header.pageId);
}

// Segments of other types are for other receivers (EN 300 743, table 7).
void DvbDisplayDecoder::execute(SegmentType type, BitReader& reader) {
  switch (type) {
    case SegmentType::PageComposition:
      return takePage(reader);
    case SegmentType::EndOfDisplaySet:
      return endDisplaySet(true);
    case SegmentType::RegionComposition:
      isChanged_ = true;
      return memory_.takeRegion(reader);
    case SegmentType::ClutDefinition:
      isChanged_ = true;
      return memory_.takeClut(reader);
    case SegmentType::ObjectData:
      isChanged_ = true;
      return memory_.takeObject(reader);
    case SegmentType::DisplayDefinition:
      // The page that comes with it is not there yet.
      endDisplaySet(true);
      return memory_.takeDisplay(reader);
  }
}

void DvbDisplayDecoder::takePage(BitReader& reader) {
  PageComposition composition = readPageComposition(reader);
  if (reader.failed()) throw SegmentError("Page composition segment cut off");
  endDisplaySet(true);
  if (composition.startsAfresh) {
    acquired_ = true;
    memory_.clear(composition.beginsEpoch);
  }
  page_ =
      Page{.end = time_ + composition.timeOut * kSecond, .regions = std::move(composition.regions)};
  isChanged_ = true;
}

// Before the first acquisition point what a page builds on may never have come (EN 300 743, 7.2.2):
// it is shown when nothing that it names is missing. Where the end `isMarked` by nothing, a page
// that misses something waits for more.
void DvbDisplayDecoder::endDisplaySet(bool isMarked) {
  if (!isChanged_ || !page_) return;
  try {
    const auto missing = memory_.missingItem(page_->regions);
    if (missing && !isMarked) return;
    isChanged_ = false;
    if (missing && !acquired_) return;
    if (missing) {
      log::write(logger_, log::Level::Warning, "page shown without %s, which is missing",
                 missing->c_str());
    }
    show(memory_.compose(page_->regions));
  } catch (const SegmentError& error) {
    isChanged_ = false;
    log::write(logger_, log::Level::Warning, "%s", error.what());
  }
}

void DvbDisplayDecoder::show(SubtitleBitmap picture) {
  if (showsNothing(picture)) {
    if (shown_) listener_.onDisplay(time_, Subtitle(SubtitleBitmap{}));
    shown_.reset();
    return;
  }
  const bool isShown = shown_ && isSamePicture(picture, *shown_);
  if (isShown && shown_->end == page_->end) return;
  if (isShown) {
    shown_->end = page_->end;
  } else {
    picture.pageState = pictures_++;
    picture.start = time_;
    picture.end = page_->end;
    shown_ = std::move(picture);
  }
  listener_.onDisplay(time_, Subtitle(*shown_));
}

// A page that has timed out is valid no longer (EN 300 743, 7.2.2): only a new one shows something.
void DvbDisplayDecoder::timeOutBefore(MediaTime time) {
  if (page_ && page_->end <= time) page_.reset();
  if (!shown_ || shown_->end > time) return;
  listener_.onDisplay(shown_->end, Subtitle(SubtitleBitmap{}));
  shown_.reset();
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
