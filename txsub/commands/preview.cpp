// SPDX-License-Identifier: MIT
#include <algorithm>
#include <map>

#include "files/preview/preview_document.h"
#include "readers/byte_source.h"
#include "readers/open_input.h"
#include "sessions/cue_sessions.h"
#include "sessions/service_pass.h"
#include "sessions/service_session.h"
#include "transcription/transcriber.h"
#include "txsub/commands/commands.h"
#include "txsub/commands/explain.h"

namespace korr::txsub {

namespace {

using Tracks = std::map<const ServiceSession*, PreviewTrack*>;

/// Puts text beside the pictures of a track, which it does not own.
class TextBesidePictures final : public ICueOutput {
 public:
  explicit TextBesidePictures(PreviewTrack& track) : track_(track) {}

  void onCue(const Cue& cue) override {
    const auto* text = cue.subtitle->placedText();
    track_.addText(cue.start, cue.stop, *cue.subtitle, text ? text->confidence : 1);
  }
  void open() override {}
  void flush() override {}
  void commit() override {}

 private:
  PreviewTrack& track_;
};

/// Shows pictures and reads them.
class ReadTrack final : public ICueOutput {
 public:
  ReadTrack(std::unique_ptr<PreviewTrack> track, Transcriber& transcriber, const Service& service,
            std::function<MediaTime()> origin)
      : track_(std::move(track)),
        transcript_(transcriber.transcribe(service, std::make_unique<TextBesidePictures>(*track_),
                                           std::move(origin), std::nullopt)) {}

  void onCue(const Cue& cue) override {
    track_->onCue(cue);
    transcript_->onCue(cue);
  }
  void open() override {}
  void flush() override {}
  void commit() override { transcript_->commit(); }

 private:
  std::unique_ptr<PreviewTrack> track_;
  std::unique_ptr<Transcript> transcript_;
};

bool isToBeRead(const Service& service, const PreviewOptions& options, Transcriber& transcriber,
                Console& console) {
  if (!options.ocr.isAskedFor || service.type != SubtitleInputType::DvbSubtitle) return false;
  const auto problem = transcriber.problemOf(service);
  if (!problem.empty()) console.warning(describe(service) + " stay pictures: " + problem);
  return problem.empty();
}

}  // namespace

ExitCode run(const PreviewOptions& options, Console& console) {
  const auto input = openInput(options.input.path, readerOptions(options.input, console));
  PreviewDocument document;
  Transcriber transcriber({.languages = options.ocr.languages,
                           .shapesPath = options.ocr.shapes,
                           .hasFilePerLanguage = true,
                           .reportPath = options.ocr.report,
                           .title = pageTitle(options.input.path)},
                          console);
  Tracks tracks;  // owned by the sessions, which the pass owns
  ServicePass pass(
      *input.reader, ServicePass::Wanted::All,
      [&](const StreamInfo& stream) {
        return createServiceFinder(stream, {.scan = options.scan}, &console);
      },
      [&](const Service& service, const StreamInfo&) {
        auto track = document.makeTrack();
        PreviewTrack& kept = *track;
        const auto origin = [&reader = *input.reader, program = service.program] {
          return reader.startTime(program).value_or(0);
        };
        std::unique_ptr<ICueOutput> output;
        if (isToBeRead(service, options, transcriber, console)) {
          output = std::make_unique<ReadTrack>(std::move(track), transcriber, service, origin);
        } else {
          output = std::move(track);
        }
        auto session = createCueSession(service, cueSettings(service, options.rules, input.format),
                                        std::move(output), console);
        tracks[session.get()] = &kept;
        return session;
      },
      console);
  pass.run();
  transcriber.finish();

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
