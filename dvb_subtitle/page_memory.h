// SPDX-License-Identifier: MIT

// What a receiver keeps of a page.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "dvb_subtitle/clut.h"
#include "dvb_subtitle/painting_budget.h"
#include "dvb_subtitle/pixel_buffer_pool.h"
#include "dvb_subtitle/region.h"
#include "dvb_subtitle/region_memory.h"
#include "dvb_subtitle/segments.h"
#include "log/logger.h"
#include "model/subtitle.h"
#include "util/bit_reader.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// The regions, CLUTs and objects of one page over an epoch. A region keeps its pixels: what a
/// display set does not change stays as earlier ones painted it. Version numbers are not looked at:
/// what comes again unchanged changes nothing. Not thread-safe.
class PageMemory {
 public:
  /// `logger` takes warnings; it may be null and is not owned.
  explicit PageMemory(log::ILogger* logger) : logger_(logger) {}

  /// Gives each unit its share of work.
  void beginUnit() { budget_ = {}; }

  /// All regions and objects go; at the beginning of an epoch, CLUTs too.
  void clear(bool beginsEpoch);

  /// Each takes the rest of its segment, and throws SegmentError for what is lost of it.
  void takeRegion(util::BitReader& reader);
  void takeClut(util::BitReader& reader);
  void takeObject(util::BitReader& reader);
  void takeDisplay(util::BitReader& reader);

  /// The first region of a page, or object of such a region, that never came; none when it is
  /// whole. Throws SegmentError when the unit has had its share of work.
  std::optional<std::string> missingItem(const Placements& regions);

  /// Paints what has come since the last call into its regions and shows those of a page, without
  /// what is missing. Without times and number. Throws SegmentError when it cannot be shown.
  SubtitleBitmap compose(const Placements& regions);

 private:
  struct Object {
    DVBObject object;
    std::uint64_t revision = 0;  // counted over all objects
  };

  struct Placement {
    ObjectPlacement object;
    std::uint64_t paintedRevision = 0;  // of the object; 0: not painted yet
  };

  struct Region {
    DVBRegion description;
    RegionMemory memory;
    std::vector<Placement> placements;  // in the order of the list
  };

  void makeRoom(int id, const DVBRegion& description, Region& region);
  void readPlacements(int id, util::BitReader& reader, Region& region);
  void paintObjects(Region& region);
  void paintObject(const DVBObject& object, Position position, Region& region);
  void show(const Region& region, Position address, PixelBuffer& pixels) const;
  const DVBClutSet& clutsOf(std::uint32_t clutId) const;

  log::ILogger* logger_;
  DisplayDefinition display_;
  std::map<int, Region> regions_;
  std::uint64_t regionPixels_ = 0;  // of all regions
  std::size_t placements_ = 0;      // of all regions
  std::map<int, Object> objects_;
  std::size_t objectBytes_ = 0;  // of all objects
  std::uint64_t revisions_ = 0;
  std::map<int, DVBClutSet> cluts_;
  PaintingBudget budget_;
  PixelBufferPool pixelBuffers_;
};

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
