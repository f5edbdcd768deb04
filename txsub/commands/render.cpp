// SPDX-License-Identifier: MIT
#include "cues/cue_time.h"
#include "files/cue_track.h"
#include "files/frames/frame_files.h"
#include "readers/byte_source.h"
#include "readers/open_input.h"
#include "sessions/cue_sessions.h"
#include "sessions/service_pass.h"
#include "sessions/service_session.h"
#include "txsub/commands/commands.h"
#include "txsub/commands/explain.h"

namespace korr::txsub {

namespace {

constexpr FrameSize kHighDefinition{1920, 1080};

/// One run of the command.
class Rendering {
 public:
  Rendering(const RenderOptions& options, Console& console)
      : options_(options),
        console_(console),
        input_(openInput(options.input.path, readerOptions(options.input, console))) {}

  ExitCode run();

 private:
  std::unique_ptr<ServiceSession> makeSession(const Service& service);
  std::unique_ptr<IPlayableFile> openFile(const Service& service) const;
  void warnPastTheEnd(std::uint32_t program);

  MediaTime start(std::uint32_t program) const {
    return input_.reader->startTime(program).value_or(0);
  }
  MediaTime duration(std::uint32_t program) const {
    const MediaTime end = input_.reader->endTime(program).value_or(0);
    return end > start(program) ? end - start(program) : 0;
  }

  const RenderOptions& options_;
  Console& console_;
  OpenedInput input_;
};

ExitCode Rendering::run() {
  ServicePass pass(
      *input_.reader, ServicePass::Wanted::Best,
      [this](const StreamInfo& stream) {
        return createServiceFinder(stream, options_.query, &console_);
      },
      [this](const Service& service, const StreamInfo&) { return makeSession(service); }, console_);
  pass.run();
  if (!pass.sessions().empty()) {
    warnPastTheEnd(pass.sessions().front()->service().program);
    return kDone;
  }
  const auto why = explainInput(*input_.reader, options_.input);
  console_.error(!why.empty()
                     ? why
                     : "no subtitles to draw are shown in " + inputName(options_.input.path) +
                           "; 'txsub probe' lists what there is");
  return kFailed;
}

// A picture may stay longer than the recording; a time far behind it is more likely a mistake.
void Rendering::warnPastTheEnd(std::uint32_t program) {
  const MediaTime end = duration(program);
  if (options_.framesPerSecond || options_.at <= end) return;
  const auto text = [](MediaTime time) { return cueTimeText(toMilliseconds(time), '.'); };
  console_.warning("the recording ends at " + text(end) + ", before the moment asked for, " +
                   text(options_.at));
}

std::unique_ptr<ServiceSession> Rendering::makeSession(const Service& service) {
  return createCueSession(
      service, cueSettings(service, options_.rules, input_.format, options_.query.page.has_value()),
      std::make_unique<CueTrack>([this, program = service.program] { return start(program); },
                                 [this, service] { return openFile(service); }),
      console_);
}

std::unique_ptr<IPlayableFile> Rendering::openFile(const Service& service) const {
  const FrameSize size = options_.size.value_or(kHighDefinition);
  if (options_.framesPerSecond) {
    return std::make_unique<RawFramesFile>(
        options_.output, service.type, size.width, size.height, *options_.framesPerSecond,
        [this, program = service.program] { return duration(program); });
  }
  Frame background =
      options_.over.empty() ? Frame(size.width, size.height) : readPicture(options_.over);
  return std::make_unique<StillFile>(options_.output, service.type, options_.at,
                                     std::move(background));
}

}  // namespace

ExitCode run(const RenderOptions& options, Console& console) {
  return Rendering(options, console).run();
}

}  // namespace korr::txsub
