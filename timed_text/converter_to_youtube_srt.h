// SPDX-License-Identifier: MIT

// SRT entry text.
#pragma once

#include "model/interfaces.h"

namespace korr::encoding::subtitling::ttml::inline v2_1 {

/// Writes the text of one SRT entry: caption rows without any styling, each followed by "<br>".
/// Numbers and times are the consumer's. Refuses teletext with "Unexpected input subtitle type" and
/// bitmaps with "Unexpected subtitle type".
class ConverterToYoutubeSrt final : public ISubtitleConverter {
 public:
  /// `container` is not owned.
  explicit ConverterToYoutubeSrt(ISubtitleContainer& container) : container_(container) {}

  void convert(ByteBuffer& out, MediaTime time) override;

  /// Always empty.
  void initialDocument(ByteBuffer& out) override { out.clear(); }

 private:
  ISubtitleContainer& container_;
};

}  // namespace korr::encoding::subtitling::ttml::inline v2_1
