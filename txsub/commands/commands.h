// SPDX-License-Identifier: MIT

// The program's commands.
#pragma once

#include "readers/open_input.h"
#include "sessions/service_session.h"
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
ExitCode run(const BatchOptions& options, Console& console);
ExitCode run(const StreamOptions& options, Console& console);

/// What a reader of the input is told.
inline ReaderOptions readerOptions(const InputOptions& options, Console& console) {
  return {.pid = options.pid, .logger = &console, .reconnects = options.reconnects};
}

/// How the cues of a service of an input of this format are made. Where `rules` says nothing,
/// recorded samples are shown as the filter would show them. `isAskedFor`: --page names the
/// service.
CueSession::Settings cueSettings(const Service& service, const RulesOption& rules,
                                 InputFormat format, bool isAskedFor = false);

/// The captions of the first stream that has any, as an SCC or MCC file.
ExitCode copyCaptions(const ConvertOptions& options, IMediaReader& reader, Console& console);

}  // namespace korr::txsub
