// SPDX-License-Identifier: MIT
#include "testkit/encoders/video_builder.h"

#include <algorithm>
#include <iterator>

#include "testkit/encoders/caption_builder.h"
#include "testkit/encoders/still_video.h"

namespace korr::encoders {
namespace {

using txsub::VideoCodec;

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
    add(bytes, unit({0xB3}, still::mpeg2SequenceHeader()));
    add(bytes, unit({0xB5}, still::mpeg2SequenceExtension()));
    add(bytes, unit({0xB8}, still::mpeg2GroupHeader()));
  }
  add(bytes, unit({0x00}, still::mpeg2PictureHeader(picture.temporalReference)));
  add(bytes, unit({0xB5}, still::mpeg2PictureCodingExtension()));
  return bytes;
}

Bytes h264Headers(const Picture& picture) {
  Bytes bytes = unit({0x09}, Bytes{0xF0});
  if (picture.beginsGroup) add(bytes, h264ParameterSets());
  return bytes;
}

Bytes headers(const Picture& picture) {
  switch (picture.codec) {
    case VideoCodec::Mpeg2:
      return mpeg2Headers(picture);
    case VideoCodec::H264:
      return h264Headers(picture);
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

/// The slices of a picture that decoders accept.
Bytes stillSlices(const Picture& picture) {
  if (picture.codec == VideoCodec::H264) {
    const auto idrPicId = static_cast<unsigned>(picture.temporalReference) % 2;
    return unit({0x65}, escaped(still::h264IdrSlice(idrPicId)));
  }
  Bytes bytes;
  for (std::uint8_t row = 1; row <= still::kMpeg2Slices; ++row) {
    add(bytes, unit({row}, still::mpeg2Slice()));
  }
  return bytes;
}

}  // namespace

Bytes h264ParameterSets() {
  return join({unit({0x67}, escaped(still::h264SequenceParameterSet())),
               unit({0x68}, escaped(still::h264PictureParameterSet()))});
}

Bytes join(std::initializer_list<std::span<const std::uint8_t>> parts) {
  Bytes bytes;
  for (const auto& part : parts) add(bytes, part);
  return bytes;
}

Bytes textTriplets(std::string_view text) {
  return CaptionBuilder{}.text(text).take();
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
  if (picture.still) return join({bytes, stillSlices(picture)});
  for (std::size_t i = 0; i < picture.slices; ++i) add(bytes, slice(picture, i));
  return bytes;
}

}  // namespace korr::encoders
