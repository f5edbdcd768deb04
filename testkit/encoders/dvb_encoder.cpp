// SPDX-License-Identifier: MIT
#include "testkit/encoders/dvb_encoder.h"

#include <algorithm>

#include "testkit/encoders/bit_writer.h"

namespace korr::encoders {
namespace {

constexpr std::size_t kLongestRun = 280;  // that decoders paint

// Each puts the longest run that the table has for up to `left` pixels of `code` and returns its
// length.

// EN 300 743, table 22.
std::size_t put2BitRun(BitWriter& bits, std::uint8_t code, std::size_t left) {
  if (left >= 29) {
    const std::size_t length = std::min(left, kLongestRun);
    bits.put(0b00'0'0'11, 6).put(length - 29, 8).put(code, 2);
    return length;
  }
  if (left >= 12) {
    const std::size_t length = std::min<std::size_t>(left, 27);
    bits.put(0b00'0'0'10, 6).put(length - 12, 4).put(code, 2);
    return length;
  }
  if (left >= 3) {
    const std::size_t length = std::min<std::size_t>(left, 10);
    bits.put(0b00'1, 3).put(length - 3, 3).put(code, 2);
    return length;
  }
  if (code != 0) {
    bits.put(code, 2);
    return 1;
  }
  if (left == 2) {
    bits.put(0b00'0'0'01, 6);
  } else {
    bits.put(0b00'0'1, 4);
  }
  return left;
}

// EN 300 743, table 24.
std::size_t put4BitRun(BitWriter& bits, std::uint8_t code, std::size_t left) {
  if (left >= 25) {
    const std::size_t length = std::min(left, kLongestRun);
    bits.put(0b0000'1'1'11, 8).put(length - 25, 8).put(code, 4);
    return length;
  }
  if (left >= 10 || (left == 9 && code != 0)) {
    bits.put(0b0000'1'1'10, 8).put(left - 9, 4).put(code, 4);
    return left;
  }
  if (code == 0) {
    if (left >= 3) {
      bits.put(0b0000'0, 5).put(left - 2, 3);
    } else {
      bits.put(left == 2 ? 0b0000'1'1'01 : 0b0000'1'1'00, 8);
    }
    return left;
  }
  if (left < 4) {
    bits.put(code, 4);
    return 1;
  }
  const std::size_t length = std::min<std::size_t>(left, 7);
  bits.put(0b0000'1'0, 6).put(length - 4, 2).put(code, 4);
  return length;
}

// EN 300 743, table 26.
std::size_t put8BitRun(BitWriter& bits, std::uint8_t code, std::size_t left) {
  if (code != 0 && left < 3) {
    bits.put(code, 8);
    return 1;
  }
  const std::size_t length = std::min<std::size_t>(left, 127);
  bits.put(0, 8).put(code != 0, 1).put(length, 7);
  if (code != 0) bits.put(code, 8);
  return length;
}

std::size_t putRun(unsigned depth, BitWriter& bits, std::uint8_t code, std::size_t left) {
  if (depth == 2) return put2BitRun(bits, code, left);
  return depth == 4 ? put4BitRun(bits, code, left) : put8BitRun(bits, code, left);
}

void append(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

}  // namespace

Bytes codeString(unsigned bits, const std::uint8_t* codes, std::size_t count) {
  BitWriter writer;
  writer.put(bits == 2 ? 0x10 : bits == 4 ? 0x11 : 0x12, 8);
  for (std::size_t at = 0; at < count;) {
    const auto* other = std::find_if(codes + at, codes + count,
                                     [&](std::uint8_t code) { return code != codes[at]; });
    at += putRun(bits, writer, codes[at], static_cast<std::size_t>(other - (codes + at)));
  }
  writer.put(0, bits == 2 ? 6 : bits == 4 ? 8 : 16);  // end of string
  return writer.alignWithZeros().bytes();
}

Bytes fieldData(unsigned bits, const IndexedPicture& picture, std::uint32_t firstRow) {
  constexpr std::uint8_t kEndOfObjectLine = 0xF0;
  Bytes field;
  for (std::size_t row = firstRow; row < picture.height; row += 2) {
    append(field, codeString(bits, picture.codes.data() + row * picture.width, picture.width));
    field.push_back(kEndOfObjectLine);
  }
  return field;
}

// EN 300 743, 7.2.7.
DvbEncoder& DvbEncoder::display(std::uint32_t width, std::uint32_t height,
                                const std::optional<Window>& window) {
  BitWriter bits;
  bits.put(version_, 4).put(window.has_value(), 1).put(0, 3);
  bits.put(width - 1, 16).put(height - 1, 16);
  if (window) {
    bits.put(window->left, 16).put(window->right, 16);
    bits.put(window->top, 16).put(window->bottom, 16);
  }
  return segment(0x14, bits.bytes());
}

// EN 300 743, 7.2.2.
DvbEncoder& DvbEncoder::page(std::uint8_t state, std::uint8_t timeOut,
                             const std::vector<Place>& regions) {
  BitWriter bits;
  bits.put(timeOut, 8).put(version_, 4).put(state, 2).put(0, 2);
  for (const Place& place : regions)
    bits.put(place.id, 8).put(0xFF, 8).put(place.x, 16).put(place.y, 16);
  return segment(0x10, bits.bytes());
}

// EN 300 743, 7.2.3.
DvbEncoder& DvbEncoder::region(const Region& region) {
  BitWriter bits;
  bits.put(region.id, 8).put(version_, 4).put(region.fill, 1).put(0, 3);
  bits.put(region.width, 16).put(region.height, 16);
  bits.put(region.depth, 3).put(region.depth, 3).put(0, 2).put(region.clut, 8);
  bits.put(region.fillCode, 8).put(region.fillCode, 4).put(region.fillCode, 2).put(0, 2);
  for (const Place& place : region.objects)
    bits.put(place.id, 16).put(0, 4).put(place.x, 12).put(0, 4).put(place.y, 12);
  return segment(0x11, bits.bytes());
}

// EN 300 743, 7.2.4.
DvbEncoder& DvbEncoder::clut(std::uint8_t id, const std::vector<ClutEntry>& entries) {
  BitWriter bits;
  bits.put(id, 8).put(version_, 4).put(0xF, 4);
  for (const ClutEntry& entry : entries) {
    bits.put(entry.id, 8).put(entry.tables, 3).put(0xF, 4).put(entry.fullRange, 1);
    if (entry.fullRange) {
      bits.put(entry.y, 8).put(entry.cr, 8).put(entry.cb, 8).put(entry.t, 8);
    } else {
      bits.put(entry.y, 6).put(entry.cr, 4).put(entry.cb, 4).put(entry.t, 2);
    }
  }
  return segment(0x12, bits.bytes());
}

// EN 300 743, 7.2.5.
DvbEncoder& DvbEncoder::object(std::uint16_t id, const Bytes& topField, const Bytes& bottomField,
                               bool nonModifyingColour) {
  BitWriter bits;
  bits.put(id, 16).put(version_, 4).put(0, 2).put(nonModifyingColour, 1).put(0, 1);
  bits.put(topField.size(), 16).put(bottomField.size(), 16);
  Bytes body = bits.bytes();
  append(body, topField);
  append(body, bottomField);
  if (body.size() % 2 != 0) body.push_back(0);  // 8_stuff_bits
  return segment(0x13, body);
}

DvbEncoder& DvbEncoder::pictureObject(std::uint16_t id, unsigned bits,
                                      const IndexedPicture& picture) {
  return object(id, fieldData(bits, picture, 0), fieldData(bits, picture, 1));
}

DvbEncoder& DvbEncoder::characters(std::uint16_t id, std::u16string_view codes) {
  BitWriter bits;
  bits.put(id, 16).put(version_, 4).put(1, 2).put(0, 2).put(codes.size(), 8);
  for (const char16_t code : codes) bits.put(code, 16);
  return segment(0x13, bits.bytes());
}

DvbEncoder& DvbEncoder::segment(std::uint8_t type, const Bytes& body) {
  BitWriter header;
  header.put(0x0F, 8).put(type, 8).put(pageId_, 16).put(body.size(), 16);
  append(segments_, header.bytes());
  append(segments_, body);
  return *this;
}

Bytes DvbEncoder::bytes() const {
  constexpr std::uint8_t kDataIdentifier = 0x20;
  constexpr std::uint8_t kSubtitleStreamId = 0x00;
  constexpr std::uint8_t kEndOfPesDataFieldMarker = 0xFF;
  Bytes field;
  field.reserve(segments_.size() + 3);
  field.push_back(kDataIdentifier);
  field.push_back(kSubtitleStreamId);
  append(field, segments_);
  field.push_back(kEndOfPesDataFieldMarker);
  return field;
}

}  // namespace korr::encoders
