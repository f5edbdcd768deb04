// SPDX-License-Identifier: MIT
#include <algorithm>
#include <map>

#include "files/preview/preview_document.h"
#include "readers/byte_source.h"
#include "readers/open_input.h"
#include "sessions/cue_sessions.h"
#include "sessions/service_pass.h"
#include "sessions/service_session.h"
#include "txsub/commands/commands.h"
#include "txsub/commands/explain.h"

namespace korr::txsub {

namespace {

using Tracks = std::map<const ServiceSession*, PreviewTrack*>;

}  // namespace

ExitCode run(const PreviewOptions& options, Console& console) {
  const auto input = openInput(options.input.path, {.pid = options.input.pid, .logger = &console});
  PreviewDocument document;
  Tracks tracks;  // owned by the sessions, which the pass owns
  ServicePass pass(
      *input.reader, ServicePass::Wanted::All,
      [&](const StreamInfo& stream) {
        return createServiceFinder(stream, {.scan = options.scan}, &console);
      },
      [&](const Service& service, const StreamInfo&) {
        auto track = document.makeTrack();
        PreviewTrack& kept = *track;
        auto session = createCueSession(service, cueSettings(service, options.rules, input.format),
                                        std::move(track), console);
        tracks[session.get()] = &kept;
        return session;
      },
      console);
  pass.run();

  MediaTime duration = 0;
  bool isAnyShown = false;
  for (const auto* session : pass.sessions()) {
    PreviewTrack& track = *tracks.at(session);
    if (track.isEmpty()) continue;
    const Service& service = session->service();
    const MediaTime start = input.reader->startTime(service.program).value_or(0);
    const MediaTime end = input.reader->endTime(service.program).value_or(start);
    if (end > start) duration = std::max(duration, end - start);
    document.add(service, track, start);
    isAnyShown = true;
  }
  if (!isAnyShown) {
    const auto why = explainInput(*input.reader, options.input);
    console.error(!why.empty() ? why
                               : "no subtitles are shown in " + inputName(options.input.path));
    return kFailed;
  }
  OutputFile file(options.output);
  document.write(file, pageTitle(options.input.path), duration);
  file.commit();
  return kDone;
}

}  // namespace korr::txsub
