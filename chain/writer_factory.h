// SPDX-License-Identifier: MIT

// Which writer makes which documents.
#pragma once

#include <memory>

#include "model/interfaces.h"
#include "model/modes.h"

namespace korr::encoding::subtitling::inline v2_1 {

/// What the writer factory is given.
struct WriterRequest {
  ISubtitleContainer& container;  ///< the parser's; must outlive the writer
  ConversionMode mode = ConversionMode::Ttml;
  bool ttmlOption = false;  ///< TTML only: write EBU-TT
};

/// Makes the writer for a mode. Throws "Unexpected subtitle conversion mode" for every mode that
/// makes no text.
std::unique_ptr<ISubtitleConverter> createWriter(const WriterRequest& request);

}  // namespace korr::encoding::subtitling::inline v2_1
