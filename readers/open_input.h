// SPDX-License-Identifier: MIT

// From a name to a reader.
#pragma once

#include <memory>
#include <string>

#include "readers/media_reader.h"

namespace korr::txsub {

enum class InputFormat { RecordedSamples, TransportStream, Scc, Mcc, Other };

struct OpenedInput {
  InputFormat format = InputFormat::Other;
  std::unique_ptr<IMediaReader> reader;
};

/// Opens a recording and tells by its content what it is; its name does not matter. `path` in
/// UTF-8,
/// "-" for standard input. Throws util::TessaryException that says why it cannot be read.
OpenedInput openInput(const std::string& path, const ReaderOptions& options);

}  // namespace korr::txsub
