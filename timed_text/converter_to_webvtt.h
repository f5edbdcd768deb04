// SPDX-License-Identifier: MIT

// WebVTT cue bodies.
#pragma once

#include "model/interfaces.h"

namespace korr::encoding::subtitling::ttml::inline v2_1 {

/// Writes the body of one cue: a line of settings, then the text. Timing and framing are the
/// consumer's. Refuses bitmaps with "Unexpected subtitle type".
class ConverterToWebVtt final : public ISubtitleConverter {
 public:
  /// `container` is not owned.
  explicit ConverterToWebVtt(ISubtitleContainer& container) : container_(container) {}

  /// Empty when there is nothing to show.
  void convert(ByteBuffer& out, MediaTime time) override;

  /// Always empty.
  void initialDocument(ByteBuffer& out) override { out.clear(); }

 private:
  ISubtitleContainer& container_;
};

}  // namespace korr::encoding::subtitling::ttml::inline v2_1
