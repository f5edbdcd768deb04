// SPDX-License-Identifier: MIT

// Input samples in memory.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "framing/media_item.h"

namespace korr::test_support {

/// One input sample, able to lie about its length and to refuse its payload.
struct MemoryItem final : encoding::packaging::lib_parse_es::IMediaItem {
  std::vector<std::uint8_t> bytes;
  std::optional<Times> time;
  bool sync = false;
  bool discontinuity = false;
  std::optional<std::int32_t> statedLength;
  bool refusesPayload = false;

  std::int32_t length() const override {
    return statedLength.value_or(static_cast<std::int32_t>(bytes.size()));
  }
  encoding::packaging::lib_parse_es::Result payload(const std::uint8_t*& data) const override {
    if (refusesPayload) return -1;
    data = bytes.data();
    return encoding::packaging::lib_parse_es::kOk;
  }
  std::optional<Times> times() const override { return time; }
  bool startFlag() const override { return sync; }
  bool secondFlag() const override { return discontinuity; }
};

/// A sample that begins a unit; without `start` it has no time.
inline std::shared_ptr<MemoryItem> startItem(std::string_view bytes,
                                             std::optional<std::uint64_t> start = {}) {
  auto item = std::make_shared<MemoryItem>();
  item->bytes.assign(bytes.begin(), bytes.end());
  if (start) item->time = {*start, *start + 1};
  item->sync = true;
  return item;
}

/// A sample that goes on with the unit begun.
inline std::shared_ptr<MemoryItem> continuingItem(std::string_view bytes) {
  auto item = startItem(bytes);
  item->sync = false;
  return item;
}

}  // namespace korr::test_support
