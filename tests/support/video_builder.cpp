#include "tests/support/video_builder.h"

#include <algorithm>
#include <bit>
#include <iterator>

namespace korr::test_support {
namespace {

using txsub::VideoCodec;

constexpr std::uint8_t withParity(std::uint8_t byte) {
  return std::popcount(byte) % 2 == 1 ? byte : static_cast<std::uint8_t>(byte | 0x80);
}

void add(Bytes& bytes, std::span<const std::uint8_t> more) {
  std::ranges::copy(more, std::back_inserter(bytes));
}

/// A start code, the header of a unit, and its body.
Bytes unit(std::initializer_list<std::uint8_t> header, std::span<const std::uint8_t> body) {
  Bytes bytes{0, 0, 1};
  add(bytes, header);
  add(bytes, body);
  return bytes;
}

/// Inserts the emulation prevention bytes (H.264, 7.4.1.1).
Bytes escaped(std::span<const std::uint8_t> payload) {
  Bytes bytes;
  unsigned zeros = 0;
  for (const std::uint8_t byte : payload) {
    if (zeros >= 2 && byte <= 3) {
      bytes.push_back(3);
      zeros = 0;
    }
    bytes.push_back(byte);
    zeros = byte == 0 ? zeros + 1 : 0;
  }
  return bytes;
}

/// Slice data that no start code can be mistaken in. `first`: the first bit of the slice header.
Bytes sliceBody(std::size_t size, bool first) {
  Bytes body(size, 0x55);
  if (!body.empty()) body[0] = first ? 0x95 : 0x55;
  return body;
}

Bytes mpeg2Headers(const Picture& picture) {
  Bytes bytes;
  if (picture.beginsGroup) {
    add(bytes, unit({0xB3}, Bytes{0x04, 0x00, 0x30, 0x14, 0xFF, 0xFF, 0xE0, 0x00}));
    add(bytes, unit({0xB8}, Bytes{0x00, 0x08, 0x00, 0x40}));
  }
  const auto reference = static_cast<unsigned>(picture.temporalReference);
  add(bytes, unit({0x00}, Bytes{static_cast<std::uint8_t>(reference >> 2),
                                static_cast<std::uint8_t>(reference << 6 | 0x0F), 0xFF, 0xF8}));
  return bytes;
}

Bytes headers(const Picture& picture) {
  switch (picture.codec) {
    case VideoCodec::Mpeg2:
      return mpeg2Headers(picture);
    case VideoCodec::H264:
      return unit({0x09}, Bytes{0xF0});
    case VideoCodec::Hevc:
      return unit({35 << 1, 0x01}, Bytes{0x50});
  }
  return {};
}

Bytes captionUnit(const Picture& picture) {
  if (picture.triplets.empty()) return {};
  if (picture.codec == VideoCodec::Mpeg2) return unit({0xB2}, atscUserData(picture.triplets));
  return seiUnit(picture.codec, captionSeiMessage(picture.triplets));
}

Bytes slice(const Picture& picture, std::size_t index) {
  const Bytes body = sliceBody(picture.sliceBytes, index == 0);
  switch (picture.codec) {
    case VideoCodec::Mpeg2:
      return unit({static_cast<std::uint8_t>(1 + index)}, body);
    case VideoCodec::H264:
      return unit({0x41}, body);
    case VideoCodec::Hevc:
      return unit({0x02, 0x01}, body);
  }
  return {};
}

}  // namespace

Bytes join(std::initializer_list<std::span<const std::uint8_t>> parts) {
  Bytes bytes;
  for (const auto& part : parts) add(bytes, part);
  return bytes;
}

Bytes textTriplets(std::string_view text) {
  constexpr std::uint8_t kField1 = 0xFC;  // marker bits, cc_valid, cc_type 0
  Bytes triplets;
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const char second = i + 1 < text.size() ? text[i + 1] : '\0';
    add(triplets, Bytes{kField1, withParity(static_cast<std::uint8_t>(text[i])),
                        withParity(static_cast<std::uint8_t>(second))});
  }
  return triplets;
}

Bytes atscUserData(std::span<const std::uint8_t> triplets, int count) {
  const auto ccCount = count < 0 ? triplets.size() / 3 : static_cast<std::size_t>(count);
  Bytes bytes{'G', 'A', '9', '4', 0x03, static_cast<std::uint8_t>(0xC0 | ccCount), 0xFF};
  add(bytes, triplets);
  bytes.push_back(0xFF);
  return bytes;
}

Bytes seiMessage(std::size_t type, std::span<const std::uint8_t> payload, int size) {
  Bytes bytes;
  for (std::size_t number : {type, size < 0 ? payload.size() : static_cast<std::size_t>(size)}) {
    for (; number >= 0xFF; number -= 0xFF) bytes.push_back(0xFF);
    bytes.push_back(static_cast<std::uint8_t>(number));
  }
  add(bytes, payload);
  return bytes;
}

Bytes captionSeiMessage(std::span<const std::uint8_t> triplets) {
  return seiMessage(4, join({Bytes{0xB5, 0x00, 0x31}, atscUserData(triplets)}));
}

Bytes seiUnit(VideoCodec codec, std::span<const std::uint8_t> messages) {
  const Bytes body = escaped(join({messages, Bytes{0x80}}));
  return codec == VideoCodec::Hevc ? unit({39 << 1, 0x01}, body) : unit({0x06}, body);
}

Bytes encode(const Picture& picture) {
  Bytes bytes = join({headers(picture), captionUnit(picture)});
  for (std::size_t i = 0; i < picture.slices; ++i) add(bytes, slice(picture, i));
  return bytes;
}

}  // namespace korr::test_support
