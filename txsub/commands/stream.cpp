// SPDX-License-Identifier: MIT

#include <nlohmann/json.hpp>

#include <filesystem>
#include <system_error>

#include "platform/directory_lock.h"
#include "readers/byte_source.h"
#include "readers/open_input.h"
#include "sessions/stream_pass.h"
#include "txsub/commands/commands.h"
#include "txsub/commands/explain.h"
#include "txsub/commands/video_playlist.h"

namespace korr::txsub {

namespace {

using encoding::subtitling::kMillisecond;

// The listener of a reader that is opened before the stream is known to be one.
class LateClock final : public IClockListener {
 public:
  void onPicture(std::uint32_t program, const ClockStamp& stamp, bool isRandomAccess) override {
    if (listener) listener->onPicture(program, stamp, isRandomAccess);
  }
  void onClock(std::uint32_t program, const ClockStamp& stamp) override {
    if (listener) listener->onClock(program, stamp);
  }
  void onTimeOfDay(std::int64_t utc) override {
    if (listener) listener->onTimeOfDay(utc);
  }

  IClockListener* listener = nullptr;
};

WallTime now() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

// Two runs would tear each other's playlists.
std::unique_ptr<platform::IDirectoryLock> lockOutput(const std::string& output) {
  namespace fs = std::filesystem;
  try {
    fs::create_directories(pathFromUtf8(output));
    if (auto lock = platform::lockDirectory(pathFromUtf8(output))) return lock;
  } catch (const std::system_error& error) {
    throw OutputError("cannot write into the directory '" + output +
                      "': " + error.code().message());
  }
  throw OutputError("another run writes into the directory '" + output + "'");
}

void printStatistics(const StreamPass& pass, StatisticsFormat format, Console& console) {
  if (format == StatisticsFormat::None) return;
  for (const auto& service : pass.services()) {
    if (format == StatisticsFormat::Text) {
      console.print(service.folder + ", " + service.name + ": " +
                    std::to_string(pass.segmentCount()) + " segments, " +
                    std::to_string(service.cues) + " cues");
    } else {
      console.print(nlohmann::ordered_json{{"folder", service.folder},
                                           {"service", service.name},
                                           {"segments", pass.segmentCount()},
                                           {"cues", service.cues}}
                        .dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
    }
  }
}

ExitCode report(const StreamPass& pass, const StreamOptions& options, const IMediaReader& reader,
                Console& console) {
  printStatistics(pass, options.statistics, console);
  const std::string input = inputName(options.input.path);
  if (const auto why = explainInput(reader, options.input); !why.empty()) {
    console.error(why);
  } else if (pass.streamCount() == 0) {
    console.error("there is no stream in " + input + " that could carry subtitles");
  } else if (pass.segmentCount() == 0) {
    console.error("there is no clock in " + input +
                  ": neither PCR nor video with PTS; nothing was written");
    return kFailed;
  } else if (pass.services().empty()) {
    console.error("no subtitles are shown in " + input + "; nothing was written but empty lists");
  } else {
    return kDone;
  }
  return kNoSubtitles;
}

}  // namespace

ExitCode run(const StreamOptions& options, Console& console) {
  LateClock clock;
  const auto follow = std::chrono::milliseconds(options.follow.value_or(0) / kMillisecond);
  ReaderOptions reading = readerOptions(options.input, console);
  reading.clock = &clock;
  reading.growthDue = follow;
  const auto input = openInput(options.input.path, reading);
  if (input.format != InputFormat::TransportStream) {
    throw UsageError(inputName(options.input.path) +
                     " is no transport stream, which is what streams are made of");
  }
  const auto lock = lockOutput(options.output);
  DirectoryStore store(options.output);
  const StreamPass* running = nullptr;
  PublisherSettings publishing{.target = options.segment, .window = options.window, .now = now};
  if (!options.master.empty()) {
    publishing.video = [&, bandwidth = std::optional<std::uint64_t>()]() mutable {
      if (!bandwidth && running) bandwidth = running->bitsPerSecond();
      return readVideoPlaylist(options.master, options.output, bandwidth);
    };
  }
  StreamPublisher publisher(store, publishing);
  const bool isPipe = !input.reader->progress().bytesTotal;
  StreamPass pass(
      {.program = options.program,
       .segmenter = {.target = options.segment,
                     .align = options.align,
                     .firstNumber = publisher.history().nextNumber(),
                     .isFirstDiscontinuous = publisher.history().nextNumber() != 1},
       .isPaced = options.isPaced,
       .isLive = options.isPaced || isPipe,
       .isLeftOpen = options.isLeftOpen},
      publisher,
      [&](const StreamInfo& stream) {
        return createServiceFinder(stream, options.query, &console);
      },
      console);
  clock.listener = &pass;
  running = &pass;
  try {
    pass.run(*input.reader);
  } catch (const ProgrammeError& error) {
    throw UsageError("in " + inputName(options.input.path) + ' ' + error.what());
  }
  return report(pass, options, *input.reader, console);
}

}  // namespace korr::txsub
