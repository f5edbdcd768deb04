// SPDX-License-Identifier: MIT

// Reads back what a movie fragment holds, for tests; knows nothing of the writer.
#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace korr::txsub {

struct Mp4FragmentSample {
  std::uint32_t duration = 0;
  std::string data;
  std::vector<std::uint32_t> subsamples;
};

struct Mp4Fragment {
  std::uint32_t sequence = 0;
  std::uint64_t decodeTime = 0;
  std::vector<Mp4FragmentSample> samples;
};

using Mp4Bytes = std::span<const std::uint8_t>;

inline std::uint64_t bigEndian(Mp4Bytes bytes, std::size_t at, std::size_t size) {
  if (at + size > bytes.size()) throw std::runtime_error("a box ends early");
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < size; ++i) value = value << 8 | bytes[at + i];
  return value;
}

inline std::uint32_t u32At(Mp4Bytes bytes, std::size_t at) {
  return static_cast<std::uint32_t>(bigEndian(bytes, at, 4));
}

/// The body of the first box at a path such as "moof/traf/tfdt". The boxes of each container must
/// fill it to its end.
inline Mp4Bytes boxAt(Mp4Bytes bytes, std::string_view path) {
  const auto name = path.substr(0, path.find('/'));
  Mp4Bytes found;
  for (std::size_t at = 0; at < bytes.size();) {
    const auto size = u32At(bytes, at);
    if (size < 8 || at + size > bytes.size()) throw std::runtime_error("a box has a wrong size");
    const std::string_view type(reinterpret_cast<const char*>(bytes.data() + at + 4), 4);
    if (type == name && found.empty()) found = bytes.subspan(at + 8, size - 8);
    at += size;
  }
  return name.size() == path.size() || found.empty() ? found
                                                     : boxAt(found, path.substr(name.size() + 1));
}

/// Of a fragment whose trun has durations and sizes, and whose moof is the base of its data.
inline Mp4Fragment readFragment(Mp4Bytes bytes) {
  Mp4Fragment fragment;
  fragment.sequence = u32At(boxAt(bytes, "moof/mfhd"), 4);
  fragment.decodeTime = bigEndian(boxAt(bytes, "moof/traf/tfdt"), 4, 8);
  const Mp4Bytes run = boxAt(bytes, "moof/traf/trun");
  if (u32At(run, 0) != 0x000301) throw std::runtime_error("another kind of trun");
  const std::size_t moof = static_cast<std::size_t>(boxAt(bytes, "moof").data() - bytes.data()) - 8;
  std::size_t at = moof + u32At(run, 8);
  if (bytes.data() + at != boxAt(bytes, "mdat").data()) throw std::runtime_error("data_offset");
  for (std::uint32_t i = 0; i < u32At(run, 4); ++i) {
    const std::size_t size = u32At(run, 16 + 8 * i);
    fragment.samples.push_back(
        {.duration = u32At(run, 12 + 8 * i),
         .data = std::string(reinterpret_cast<const char*>(bytes.data()) + at, size),
         .subsamples = {}});
    at += size;
  }
  if (at != bytes.size()) throw std::runtime_error("samples do not fill mdat");
  if (const Mp4Bytes subs = boxAt(bytes, "moof/traf/subs"); !subs.empty()) {
    for (std::size_t i = 0; i < bigEndian(subs, 12, 2); ++i) {
      fragment.samples.at(0).subsamples.push_back(u32At(subs, 14 + 10 * i));
    }
  }
  return fragment;
}

}  // namespace korr::txsub
