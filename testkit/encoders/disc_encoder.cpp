// SPDX-License-Identifier: MIT
#include "testkit/encoders/disc_encoder.h"

#include <algorithm>
#include <cstdio>

namespace korr::encoders {

namespace {

void put(Bytes& out, std::uint32_t value, unsigned bytes) {
  while (bytes-- > 0) out.push_back(static_cast<std::uint8_t>(value >> (8 * bytes)));
}

std::size_t runAt(const IndexedPicture& picture, std::uint32_t x, std::uint32_t y) {
  std::size_t length = 1;
  while (x + length < picture.width &&
         picture.at(x + static_cast<std::uint32_t>(length), y) == picture.at(x, y))
    ++length;
  return length;
}

Bytes pgsCodes(const IndexedPicture& picture) {
  Bytes out;
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    for (std::uint32_t x = 0; x < picture.width;) {
      const auto length = static_cast<std::uint32_t>(runAt(picture, x, y));
      const std::uint8_t code = picture.at(x, y);
      x += length;
      if (length < 3 && code != 0) {
        out.insert(out.end(), length, code);
        continue;
      }
      out.push_back(0);
      const unsigned colour = code != 0 ? 0x80 : 0;
      if (length < 64)
        put(out, colour | length, 1);
      else
        put(out, (colour | 0x40) << 8 | length, 2);
      if (code != 0) out.push_back(code);
    }
    put(out, 0, 2);
  }
  return out;
}

// Every other row from `first` on; each begins with a whole byte.
Bytes subPictureField(const IndexedPicture& picture, std::uint32_t first) {
  Bytes out;
  for (std::uint32_t y = first; y < picture.height; y += 2) {
    std::vector<std::uint8_t> nibbles;
    for (std::uint32_t x = 0; x < picture.width;) {
      const auto length =
          std::min<std::uint32_t>(static_cast<std::uint32_t>(runAt(picture, x, y)), 255);
      const std::uint32_t value = length << 2 | picture.at(x, y);
      const unsigned count = length < 4 ? 1 : length < 16 ? 2 : length < 64 ? 3 : 4;
      for (unsigned i = count; i-- > 0;) nibbles.push_back(value >> (4 * i) & 0xF);
      x += length;
    }
    if (nibbles.size() % 2 != 0) nibbles.push_back(0);
    for (std::size_t i = 0; i < nibbles.size(); i += 2) {
      out.push_back(static_cast<std::uint8_t>(nibbles[i] << 4 | nibbles[i + 1]));
    }
  }
  return out;
}

}  // namespace

PgsEncoder& PgsEncoder::composition(std::uint16_t width, std::uint16_t height, std::uint8_t state,
                                    const std::vector<Place>& places, std::uint8_t palette) {
  Bytes body;
  put(body, width, 2);
  put(body, height, 2);
  put(body, 0x10, 1);  // frame_rate
  put(body, 0, 2);     // composition_number
  put(body, state, 1);
  put(body, 0, 1);  // palette_update_flag
  put(body, palette, 1);
  put(body, static_cast<std::uint32_t>(places.size()), 1);
  for (const auto& place : places) {
    put(body, place.object, 2);
    put(body, 0, 1);  // window_id
    put(body, place.crop ? 0x80 : 0, 1);
    put(body, place.x, 2);
    put(body, place.y, 2);
    if (!place.crop) continue;
    for (const auto number : *place.crop) put(body, number, 2);
  }
  return segment(0x16, body);
}

PgsEncoder& PgsEncoder::palette(std::uint8_t id, const std::vector<Colour>& colours) {
  Bytes body{id, 0};
  for (const auto& colour : colours) {
    body.insert(body.end(), {colour.entry, colour.y, colour.cr, colour.cb, colour.alpha});
  }
  return segment(0x14, body);
}

PgsEncoder& PgsEncoder::object(std::uint16_t id, const IndexedPicture& picture,
                               std::size_t pieces) {
  const Bytes codes = pgsCodes(picture);
  for (std::size_t piece = 0; piece < pieces; ++piece) {
    const std::size_t from = codes.size() * piece / pieces;
    const std::size_t to = codes.size() * (piece + 1) / pieces;
    Bytes body;
    put(body, id, 2);
    put(body, 0, 1);  // object_version
    put(body, (piece == 0 ? 0x80U : 0U) | (piece + 1 == pieces ? 0x40U : 0U), 1);
    if (piece == 0) {
      put(body, static_cast<std::uint32_t>(codes.size()) + 4, 3);
      put(body, picture.width, 2);
      put(body, picture.height, 2);
    }
    body.insert(body.end(), codes.begin() + static_cast<std::ptrdiff_t>(from),
                codes.begin() + static_cast<std::ptrdiff_t>(to));
    segment(0x15, body);
  }
  return *this;
}

PgsEncoder& PgsEncoder::segment(std::uint8_t type, const Bytes& body) {
  Bytes& out = segments_.emplace_back();
  put(out, type, 1);
  put(out, static_cast<std::uint32_t>(body.size()), 2);
  out.insert(out.end(), body.begin(), body.end());
  return *this;
}

Bytes PgsEncoder::bytes() const {
  Bytes out;
  for (const auto& segment : segments_) out.insert(out.end(), segment.begin(), segment.end());
  return out;
}

Bytes PgsEncoder::sup(std::uint32_t pts) const {
  Bytes out;
  for (const auto& segment : segments_) {
    out.insert(out.end(), {'P', 'G'});
    put(out, pts, 4);
    put(out, 0, 4);
    out.insert(out.end(), segment.begin(), segment.end());
  }
  return out;
}

Bytes SubPictureUnit::bytes() const {
  constexpr std::size_t kHeaderBytes = 4;
  const Bytes even = subPictureField(picture, 0), odd = subPictureField(picture, 1);
  Bytes control;
  const std::size_t start = kHeaderBytes + even.size() + odd.size();
  for (std::size_t i = 0; i < steps.size(); ++i) {
    Bytes commands = steps[i].commands;
    if (i == 0) {
      const std::uint32_t right = x + picture.width - 1, bottom = y + picture.height - 1;
      commands.push_back(0x05);
      put(commands, std::uint32_t{x} << 12 | right, 3);
      put(commands, std::uint32_t{y} << 12 | bottom, 3);
      commands.push_back(0x06);
      put(commands, kHeaderBytes, 2);
      put(commands, static_cast<std::uint32_t>(kHeaderBytes + even.size()), 2);
    }
    commands.push_back(0xFF);
    const std::size_t here = start + control.size();
    const bool isLast = i + 1 == steps.size();
    put(control, steps[i].delay, 2);
    put(control, static_cast<std::uint32_t>(isLast ? here : here + 4 + commands.size()), 2);
    control.insert(control.end(), commands.begin(), commands.end());
  }
  Bytes out;
  put(out, static_cast<std::uint32_t>(start + control.size()), 2);
  put(out, static_cast<std::uint32_t>(start), 2);
  for (const Bytes* part : {&even, &odd, static_cast<const Bytes*>(&control)})
    out.insert(out.end(), part->begin(), part->end());
  return out;
}

VobSubFile& VobSubFile::unit(std::uint32_t milliseconds, const Bytes& unit) {
  char entry[80];
  std::snprintf(entry, sizeof entry, "timestamp: 00:%02u:%02u:%03u, filepos: %09zx\n",
                milliseconds / 60'000, milliseconds / 1000 % 60, milliseconds % 1000, sub_.size());
  entries_ += entry;
  // A pack header (ISO/IEC 13818-1, 2.5.3.3), then private_stream_1 with the stream's number.
  sub_.insert(sub_.end(), {0, 0, 1, 0xBA, 0x44, 0, 4, 0, 4, 1, 0, 0, 3, 0xF8});
  Bytes payload{0x20};
  payload.insert(payload.end(), unit.begin(), unit.end());
  const auto packet =
      pesPacket({.streamId = 0xBD, .pts = std::uint64_t{milliseconds} * 90}, payload);
  sub_.insert(sub_.end(), packet.begin(), packet.end());
  return *this;
}

std::string VobSubFile::index(std::string_view language, std::string_view palette) const {
  return "# VobSub index file, v7 (do not modify this line!)\nsize: 720x576\npalette: " +
         std::string(palette) + "\nlangidx: 0\nid: " + std::string(language) + ", index: 0\n" +
         entries_;
}

}  // namespace korr::encoders
