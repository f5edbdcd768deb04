// SPDX-License-Identifier: MIT
#include "testkit/encoders/av1_builder.h"

#include "testkit/encoders/bit_writer.h"
#include "testkit/encoders/video_builder.h"

namespace korr::encoders {
namespace {

Bytes leb128(std::size_t value) {
  Bytes bytes;
  for (; value >= 0x80; value >>= 7) bytes.push_back(static_cast<std::uint8_t>(value | 0x80));
  bytes.push_back(static_cast<std::uint8_t>(value));
  return bytes;
}

}  // namespace

Bytes obu(ObuType type, std::span<const std::uint8_t> payload, bool hasSize, int size) {
  const Bytes header = BitWriter{}
                           .put(0, 1)
                           .put(static_cast<unsigned>(type), 4)
                           .put(0, 1)  // obu_extension_flag
                           .put(hasSize, 1)
                           .put(0, 1)
                           .bytes();
  if (!hasSize) return join({header, payload});
  return join(
      {header, leb128(size < 0 ? payload.size() : static_cast<std::size_t>(size)), payload});
}

// sequence_header_obu() (5.5.1)
Bytes av1SequenceHeader() {
  BitWriter bits;
  bits.put(0, 3).put(1, 1).put(1, 1);  // seq_profile, still_picture, reduced_still_picture_header
  bits.put(0, 5);                      // seq_level_idx
  bits.put(5, 4).put(5, 4);            // bits of the sizes, less 1
  bits.put(63, 6).put(47, 6);          // max_frame_width_minus_1, max_frame_height_minus_1
  bits.put(0, 6);                      // tools: none
  bits.put(0, 1).put(1, 1).put(0, 2);  // color_config(): 8 bits, mono_chrome, no description
  bits.put(0, 1);                      // film_grain_params_present
  return obu(ObuType::SequenceHeader, bits.putTrailingBits().bytes());
}

Bytes av1CaptionUnit(std::span<const std::uint8_t> triplets, int count) {
  const Bytes head{0x04, 0xB5, 0x00, 0x31};  // metadata_type, country, provider
  const Bytes trailingBits{0x80};
  return obu(ObuType::Metadata, join({head, atscUserData(triplets, count), trailingBits}));
}

Bytes av1TemporalUnit(std::span<const std::uint8_t> triplets) {
  return join({obu(ObuType::TemporalDelimiter, {}), av1SequenceHeader(),
               triplets.empty() ? Bytes() : av1CaptionUnit(triplets),
               obu(ObuType::Frame, Bytes(40, 0x55))});
}

}  // namespace korr::encoders
