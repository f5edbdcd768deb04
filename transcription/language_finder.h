// SPDX-License-Identifier: MIT

// Which language pictures are in, where nothing says it.
#pragma once

#include <string>
#include <vector>

#include "model/subtitle.h"

namespace korr::txsub {

/// The one of `languages`, as the engine names them, in which the first lines of the pictures are
/// read with most certainty and most words of its dictionary; empty when none of them reads any.
/// Opens the data of each language once, of the most likely twice.
std::string findLanguage(const std::vector<encoding::subtitling::SubtitleBitmap>& pictures,
                         const std::vector<std::string>& languages);

}  // namespace korr::txsub
