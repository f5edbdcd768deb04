// SPDX-License-Identifier: MIT
#include "services/caption_service_descriptor.h"

#include "model/descriptors.h"
#include "util/bit_reader.h"

namespace korr::txsub {
namespace {

constexpr std::size_t kServiceBits = 48;

// One round of the loop (6.9.2); the reader has as many bits.
AnnouncedCaptions readService(util::BitReader& bits) {
  AnnouncedCaptions captions;
  for (int i = 0; i < 3; ++i) captions.language += static_cast<char>(bits.read(8));
  captions.isDigital = bits.readFlag();
  bits.skip(1);  // reserved
  if (captions.isDigital) {
    captions.service = bits.read(6);
  } else {
    bits.skip(5);  // reserved
    captions.field = bits.read(1) + 1;
  }
  captions.isEasyReader = bits.readFlag();
  captions.isWideAspect = bits.readFlag();
  bits.skip(14);  // reserved
  return captions;
}

}  // namespace

std::vector<AnnouncedCaptions> readCaptionServices(std::span<const std::uint8_t> descriptors) {
  using encoding::subtitling::DescriptorTag;
  std::vector<AnnouncedCaptions> services;
  const auto read = [&](DescriptorTag tag, std::span<const std::uint8_t> body) {
    if (tag != DescriptorTag::CaptionService) return;
    util::BitReader bits(body);
    bits.skip(3);  // reserved
    std::uint32_t left = bits.read(5);
    if (bits.failed()) return;  // it is empty
    for (; left > 0 && bits.bitsLeft() >= kServiceBits; --left) {
      services.push_back(readService(bits));
    }
  };
  encoding::subtitling::forEachDescriptor(descriptors, read);
  return services;
}

}  // namespace korr::txsub
