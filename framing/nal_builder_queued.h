// SPDX-License-Identifier: MIT

// The queue that the builders of PES payloads share.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>

#include "framing/nal.h"

namespace korr::encoding::packaging::lib_parse_es::inline v2_1 {

/// Joins the samples of one PES payload into one unit. A sample's start flag begins the next
/// payload, so a unit is made only when the following start, or the end of stream, shows that it
/// is complete. A unit that no start ever ends does not grow for ever: what passes `kMostBytes` or
/// `kMostSamples` is dropped whole, up to the next start.
class NALBuilderQueued : public NALBuilder {
 public:
  /// A PES packet that says its length holds 64 kB at most.
  static constexpr std::size_t kMostBytes = 4 * 1024 * 1024;
  static constexpr std::size_t kMostSamples = 64 * 1024;

  /// Throws std::length_error once for each unit that is dropped. When delivering the previous unit
  /// throws, `item` is kept all the same and the exception passes on.
  Result push(std::shared_ptr<const IMediaItem> item) final;
  void endOfStream() final;

 protected:
  /// `type`: the type of the units made.
  explicit NALBuilderQueued(std::int32_t type) : type_(type) {}

 private:
  UniqueNAL assemble();
  void drop();

  std::int32_t type_;
  bool isDropping_ = false;  // up to the next start
  std::size_t pendingBytes_ = 0;
  std::deque<std::shared_ptr<const IMediaItem>> pending_;  // in arrival order
};

}  // namespace korr::encoding::packaging::lib_parse_es::inline v2_1
