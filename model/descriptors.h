// SPDX-License-Identifier: MIT

// The descriptors of elementary streams, as program maps carry them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace korr::encoding::subtitling::inline v2_1 {

/// descriptor_tag (ISO/IEC 13818-1, 2.6; EN 300 468, 6.1; ATSC A/65, 6.9).
enum class DescriptorTag : std::uint8_t {
  Language = 0x0A,        ///< ISO_639_language_descriptor
  VbiTeletext = 0x46,     ///< VBI_teletext_descriptor: as the teletext_descriptor, in other lines
  Service = 0x48,         ///< service_descriptor
  Teletext = 0x56,        ///< teletext_descriptor
  Subtitling = 0x59,      ///< subtitling_descriptor
  Extension = 0x7F,       ///< extension_descriptor
  CaptionService = 0x86,  ///< caption_service_descriptor
  DataComponent = 0xFD,   ///< data_component_descriptor (ARIB STD-B10, 6.2.20)
};

/// Calls `onDescriptor(DescriptorTag tag, std::span<const std::uint8_t> body)` for each descriptor
/// of a loop: tag, length, body, one after the other. The body of one that is cut at the end of the
/// loop is as long as it goes.
template <class OnDescriptor>
void forEachDescriptor(std::span<const std::uint8_t> loop, OnDescriptor&& onDescriptor) {
  constexpr std::size_t kHeader = 2;
  while (loop.size() >= kHeader) {
    const auto tag = static_cast<DescriptorTag>(loop[0]);
    const std::size_t length = loop[1];
    loop = loop.subspan(kHeader);
    const auto body = loop.first(length < loop.size() ? length : loop.size());
    loop = loop.subspan(body.size());
    onDescriptor(tag, body);
  }
}

}  // namespace korr::encoding::subtitling::inline v2_1
