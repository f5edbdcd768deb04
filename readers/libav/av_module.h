// SPDX-License-Identifier: MIT

// The reader on libavformat as a module of its own. libavformat brings over a hundred libraries
// with it; loading them takes longer than reading a hundred megabytes of a transport stream.
#pragma once

#include <memory>
#include <string>

#include "readers/media_reader.h"

namespace korr::txsub {

inline constexpr const char* kAvModule = "txsub-avformat.so";
inline constexpr const char* kAvModuleFunction = "txsubOpenWithAvformat";

/// What the module exports: an AvReader on `source`, or on the file at `path` when that is null.
/// The caller owns it.
using OpenWithAvformat = IMediaReader*(const std::string& path, std::unique_ptr<IByteSource> source,
                                       const ReaderOptions& options);

}  // namespace korr::txsub
