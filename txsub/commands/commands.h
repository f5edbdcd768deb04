// The program's commands.
#pragma once

#include "txsub/console.h"
#include "txsub/options/options.h"

namespace korr::txsub {

/// Each runs one command and answers how the program ends, having said why. Throws UsageError for
/// options that do not fit the input, and util::TessaryException for an input that cannot be read
/// or an output that cannot be written.
ExitCode run(const ConvertOptions& options, Console& console);
ExitCode run(const ProbeOptions& options, Console& console);
ExitCode run(const ExtractOptions& options, Console& console);
ExitCode run(const RenderOptions& options, Console& console);
ExitCode run(const PreviewOptions& options, Console& console);

}  // namespace korr::txsub
