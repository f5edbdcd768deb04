#include "sessions/dvb_page_filter.h"

#include "readers/dvb_data_field.h"

namespace korr::txsub {

namespace {

// EN 300 743, table 7.
constexpr std::uint8_t kDataIdentifier = 0x20;
constexpr std::uint8_t kClutDefinition = 0x12;
constexpr std::uint8_t kObjectData = 0x13;

bool isOf(const DvbPages& pages, const DvbSegment& segment) {
  if (segment.page == pages.composition) return true;
  return segment.page == pages.ancillary &&
         (segment.type == kClutDefinition || segment.type == kObjectData);
}

}  // namespace

std::vector<std::uint8_t> keepPages(std::vector<std::uint8_t> dataField, const DvbPages& pages) {
  if (dataField.size() < kDvbFieldHeader || dataField[0] != kDataIdentifier) return dataField;
  std::vector<std::uint8_t> kept(dataField.begin(), dataField.begin() + kDvbFieldHeader);
  std::span<const std::uint8_t> rest(dataField.begin() + kDvbFieldHeader, dataField.end());
  while (const auto segment = takeDvbSegment(rest)) {
    if (!isOf(pages, *segment)) continue;
    const std::size_t pageId = kept.size() + 2;  // behind the sync byte and the type
    kept.insert(kept.end(), segment->bytes.begin(), segment->bytes.end());
    kept[pageId] = static_cast<std::uint8_t>(pages.composition >> 8);
    kept[pageId + 1] = static_cast<std::uint8_t>(pages.composition);
  }
  if (!isAtEndMarker(rest)) return dataField;
  kept.insert(kept.end(), rest.begin(), rest.end());
  return kept;
}

}  // namespace korr::txsub
