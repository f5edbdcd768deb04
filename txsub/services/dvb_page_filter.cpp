#include "txsub/services/dvb_page_filter.h"

namespace korr::txsub {

namespace {

// EN 300 743, 7.1 and 7.2.
constexpr std::uint8_t kDataIdentifier = 0x20;
constexpr std::uint8_t kSyncByte = 0x0F;
constexpr std::uint8_t kEndMarker = 0xFF;
constexpr std::size_t kFieldHeader = 2;
constexpr std::size_t kSegmentHeader = 6;
constexpr std::uint8_t kClutDefinition = 0x12;
constexpr std::uint8_t kObjectData = 0x13;

std::uint16_t read16(const std::uint8_t* bytes) {
  return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

}  // namespace

std::vector<std::uint8_t> keepPages(std::span<const std::uint8_t> dataField,
                                    const DvbPages& pages) {
  const std::vector<std::uint8_t> unchanged(dataField.begin(), dataField.end());
  if (dataField.size() <= kFieldHeader || dataField[0] != kDataIdentifier) return unchanged;
  std::vector<std::uint8_t> kept(dataField.begin(), dataField.begin() + kFieldHeader);
  auto rest = dataField.subspan(kFieldHeader);
  while (rest.size() >= kSegmentHeader && rest[0] == kSyncByte) {
    const std::size_t size = kSegmentHeader + read16(&rest[4]);
    if (size > rest.size()) return unchanged;
    const std::uint8_t type = rest[1];
    const std::uint16_t page = read16(&rest[2]);
    const bool isShared =
        page == pages.ancillary && (type == kClutDefinition || type == kObjectData);
    if (page == pages.composition || isShared) {
      const std::size_t at = kept.size();
      kept.insert(kept.end(), rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(size));
      kept[at + 2] = static_cast<std::uint8_t>(pages.composition >> 8);
      kept[at + 3] = static_cast<std::uint8_t>(pages.composition);
    }
    rest = rest.subspan(size);
  }
  if (rest.empty() || rest[0] != kEndMarker) return unchanged;
  kept.insert(kept.end(), rest.begin(), rest.end());
  return kept;
}

}  // namespace korr::txsub
