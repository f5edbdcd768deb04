// SPDX-License-Identifier: MIT

// What commands say of an input in which they find nothing.
#pragma once

#include <string>

#include "readers/media_reader.h"
#include "txsub/options/options.h"

namespace korr::txsub {

/// "track 3 (SubRip subtitle, eng), track 4 (...)"; empty when there are none.
std::string otherSubtitles(const IMediaReader& reader);

/// Why nothing was found, where the reader knows: a PID that does not exist, subtitles in other
/// forms. Empty when it does not.
std::string explainInput(const IMediaReader& reader, const InputOptions& options);

}  // namespace korr::txsub
