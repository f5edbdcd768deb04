// The queue that the builders of PES payloads share.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>

#include "framing/nal.h"

namespace korr::encoding::packaging::lib_parse_es::inline v2_1 {

/// Joins the samples of one PES payload into one unit. A sample's start flag begins the next
/// payload, so a unit is made only when the following start, or the end of stream, shows that it
/// is complete.
class NALBuilderQueued : public NALBuilder {
 public:
  /// When delivering the previous unit throws, `item` is kept all the same and the exception passes
  /// on.
  Result push(std::shared_ptr<const IMediaItem> item) final;
  void endOfStream() final;

 protected:
  /// `type`: the type of the units made.
  explicit NALBuilderQueued(std::int32_t type) : type_(type) {}

 private:
  UniqueNAL assemble();

  std::int32_t type_;
  std::deque<std::shared_ptr<const IMediaItem>> pending_;  // in arrival order
};

}  // namespace korr::encoding::packaging::lib_parse_es::inline v2_1
