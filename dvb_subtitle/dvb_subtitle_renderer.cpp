// SPDX-License-Identifier: MIT
#include "dvb_subtitle/dvb_subtitle_renderer.h"

#include <numeric>
#include <utility>

#include "dvb_subtitle/errors.h"
#include "dvb_subtitle/limits.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {
namespace {

using util::BitReader;

// A product of 32-bit signed numbers, wrapping round.
std::uint32_t product(std::uint32_t a, std::uint32_t b) {
  return a * b;
}

}  // namespace

std::optional<SubtitleBitmap> DVBSubtitleRenderer::decode(std::span<const std::uint8_t> segment,
                                                          MediaTime time) {
  try {
    return tryDecode(segment, time);
  } catch (const SegmentError& error) {
    log::write(logger_, log::Level::Warning, "%s", error.what());
    return {};
  }
}

std::optional<SubtitleBitmap> DVBSubtitleRenderer::tryDecode(std::span<const std::uint8_t> segment,
                                                             MediaTime time) {
  BitReader reader(segment);
  reader.allowZeros();  // deliberately: what a segment lacks has always been 0 here
  const SegmentHeader header = readSegmentHeader(reader);
  if (!isFollowed(header)) return {};
  execute(header.type, reader, time);

  if (!pagePending_) return {};
  budget_.spendOnObjects(countObjectsOnPage());
  if (missingItem()) return {};
  SubtitleBitmap page = composePage(static_cast<std::int32_t>(pagesComposed_++));
  pagePending_ = false;
  return page;
}

// Whether the segment belongs to the pages that are followed; of the ancillary page, CLUTs and
// objects only.
bool DVBSubtitleRenderer::isFollowed(const SegmentHeader& header) {
  if (!compositionPage_) compositionPage_ = header.pageId;
  if (header.pageId == ancillaryPage_)
    return header.type == SegmentType::ClutDefinition || header.type == SegmentType::ObjectData;
  return header.pageId == compositionPage_;
}

void DVBSubtitleRenderer::execute(SegmentType type, BitReader& reader, MediaTime time) {
  switch (type) {
    case SegmentType::PageComposition:
      return takePageComposition(reader, time);
    case SegmentType::RegionComposition:
      return takeRegionComposition(reader);
    case SegmentType::ClutDefinition:
      return takeClutDefinition(reader);
    case SegmentType::ObjectData:
      return takeObjectData(reader);
    case SegmentType::DisplayDefinition:
      display_ = readDisplayDefinition(reader);
      return;
    case SegmentType::EndOfDisplaySet:
      return;
  }
  throw SegmentError("Unsupported DVB subtitle segment (segment type = %d)",
                     static_cast<int>(type));
}

void DVBSubtitleRenderer::takePageComposition(BitReader& reader, MediaTime time) {
  PageComposition page = readPageComposition(reader);
  pageStart_ = time;
  pageEnd_ = time + page.timeOut * kSecond;
  if (pagePending_) {
    log::write(logger_, log::Level::Warning, "subtitle page dropped because %s",
               missingItem().value_or("").c_str());
    if (droppedPages_) ++*droppedPages_;
  }
  if (page.startsAfresh) {
    acquired_ = true;
    regions_.clear();
    objects_.clear();
    objectBytes_ = 0;
  }
  pagePending_ = acquired_;
  pageRegions_ = std::move(page.regions);
  if (page.bitsLeft != 0) {
    // The count is of bits, deliberately: the text is an established one.
    log::write(logger_, log::Level::Warning,
               "%lld dropped bytes at the end of page composition segment",
               static_cast<long long>(page.bitsLeft));
  }
}

// Without a fill the region keeps the objects that it has.
void DVBSubtitleRenderer::takeRegionComposition(BitReader& reader) {
  RegionComposition composition = readRegionComposition(reader);
  DVBRegion& region = regions_[composition.id];
  if (!composition.region.fillFlag) composition.region.objects = std::move(region.objects);
  region = std::move(composition.region);
  while (!reader.exhausted()) {
    const auto object = readRegionObject(reader, kFilter);
    if (object) region.objects[object->objectId] = object->position;
  }
  if (region.objects.size() > kMostObjectsInRegion) {
    region.objects.clear();
    throw SegmentError("Region %d emptied: more than %d objects", composition.id,
                       static_cast<int>(kMostObjectsInRegion));
  }
}

void DVBSubtitleRenderer::takeClutDefinition(BitReader& reader) {
  const ClutDefinition definition = readClutDefinition(reader, kFilter);
  applyClutDefinition(definition, kFilter, cluts_[definition.id]);
}

void DVBSubtitleRenderer::takeObjectData(BitReader& reader) {
  DVBObject object = readObjectData(reader);
  const auto id = static_cast<int>(object.id);
  const auto known = objects_.find(id);
  const std::size_t others = objectBytes_ - (known == objects_.end() ? 0 : known->second.bytes());
  if (others + object.bytes() > kMostObjectBytes) {
    throw SegmentError("Object %d refused: all objects together exceed %d bytes", id,
                       static_cast<int>(kMostObjectBytes));
  }
  objectBytes_ = others + object.bytes();
  objects_.insert_or_assign(id, std::move(object));
}

std::size_t DVBSubtitleRenderer::countObjectsOnPage() const {
  std::size_t count = 0;
  for (const auto& [regionId, address] : pageRegions_) {
    const auto region = regions_.find(regionId);
    if (region != regions_.end()) count += region->second.objects.size();
  }
  return count;
}

// The first region or object that the page refers to and that is not known; none when it is whole.
std::optional<std::string> DVBSubtitleRenderer::missingItem() const {
  for (const auto& [regionId, address] : pageRegions_) {
    const auto region = regions_.find(regionId);
    if (region == regions_.end())
      return "region " + std::to_string(regionId) + " was expected but missing";
    for (const auto& [objectId, position] : region->second.objects) {
      if (!objects_.contains(objectId)) {
        return "object " + std::to_string(objectId) + " was expected in region " +
               std::to_string(regionId) + " but missing";
      }
    }
  }
  return {};
}

// Only for a page that misses nothing.
SubtitleBitmap DVBSubtitleRenderer::composePage(std::int32_t sequenceNumber) {
  if (std::uint64_t{display_.width} * display_.height > kMostDisplayPixels) {
    throw SegmentError("Display of %u by %u pixels refused: more than %u pixels", display_.width,
                       display_.height, static_cast<unsigned>(kMostDisplayPixels));
  }
  auto pixels = pixelBuffers_.take(display_.width, display_.height);
  Canvas canvas(display_.width, display_.height, *pixels);
  const Position window{static_cast<std::uint32_t>(display_.window.horizontalMinimum),
                        static_cast<std::uint32_t>(display_.window.verticalMinimum)};
  PagePainter painter(canvas, window, budget_);
  for (const auto& [regionId, address] : pageRegions_) {
    const DVBRegion& region = regions_.at(regionId);
    const DVBClutSet& cluts = clutsOf(region.clutId);
    if (region.fillFlag) painter.fillRegion(region, address, cluts);
    for (const auto& [objectId, position] : region.objects)
      painter.paintObject(objects_.at(objectId), position, region, address, cluts);
  }
  const Fraction aspect = pageAspectRatio();
  return {.visible = 1,
          .width = display_.width,
          .height = display_.height,
          .aspectNumerator = aspect.numerator,
          .aspectDenominator = aspect.denominator,
          .pixels = std::move(pixels),
          .start = pageStart_,
          .end = pageEnd_,
          .pageState = sequenceNumber};
}

DVBSubtitleRenderer::Fraction DVBSubtitleRenderer::pageAspectRatio() const {
  const auto reduced = [](std::uint32_t numerator, std::uint32_t denominator) {
    const std::uint32_t divisor = std::gcd(numerator, denominator);
    return divisor == 0 ? Fraction{numerator, denominator}
                        : Fraction{numerator / divisor, denominator / divisor};
  };
  const Fraction display = reduced(display_.width, display_.height);
  if (!pictureAspectRatio_) return display;
  // What stretches the display's pixels so that the whole has the picture's shape.
  const Fraction picture =
      reduced(pictureAspectRatio_->numerator, pictureAspectRatio_->denominator);
  const Fraction pixel = reduced(product(display.denominator, picture.numerator),
                                 product(display.numerator, picture.denominator));
  return reduced(product(display.numerator, pixel.numerator),
                 product(display.denominator, pixel.denominator));
}

const DVBClutSet& DVBSubtitleRenderer::clutsOf(std::uint32_t clutId) const {
  const auto cluts = cluts_.find(static_cast<int>(clutId));
  return cluts == cluts_.end() ? kDefaultClutSet : cluts->second;
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
