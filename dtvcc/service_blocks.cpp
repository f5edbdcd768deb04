// SPDX-License-Identifier: MIT
#include "dtvcc/service_blocks.h"

#include <cstddef>

namespace korr::encoding::subtitling::dtvcc {

std::optional<ServiceBlock> ServiceBlocks::next() {
  constexpr std::uint32_t kExtendedServices = 7;
  while (!rest_.empty()) {
    // CEA-708-E, 6.2.1: service_number and block_size.
    std::uint32_t service = rest_[0] >> 5;
    std::size_t size = rest_[0] & 0x1F;
    rest_ = rest_.subspan(1);
    if (service == 0) return {};
    if (service == kExtendedServices && size != 0) {
      // 6.2.2: null_fill and extended_service_number.
      if (rest_.empty()) {
        isCut_ = true;
        return {};
      }
      service = rest_[0] & 0x3F;
      rest_ = rest_.subspan(1);
    }
    if (size > rest_.size()) {
      isCut_ = true;
      size = rest_.size();
    }
    const auto data = rest_.first(size);
    rest_ = rest_.subspan(size);
    if (!data.empty() && service != 0) return ServiceBlock{service, data};
  }
  return {};
}

}  // namespace korr::encoding::subtitling::dtvcc
