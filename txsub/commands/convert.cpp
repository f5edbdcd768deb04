// SPDX-License-Identifier: MIT
#include <algorithm>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <system_error>
#include <tuple>

#include "files/cue_track.h"
#include "files/output_template.h"
#include "files/preview/preview_document.h"
#include "readers/byte_source.h"
#include "readers/open_input.h"
#include "sessions/cue_sessions.h"
#include "sessions/decoder_session.h"
#include "sessions/service_pass.h"
#include "sessions/service_session.h"
#include "sessions/session_statistics.h"
#include "transcription/transcriber.h"
#include "txsub/commands/commands.h"
#include "txsub/commands/explain.h"
#include "txsub/commands/ocr_statistics.h"

namespace korr::txsub {

namespace {

namespace fs = std::filesystem;

bool isOneFile(const std::string& input, const std::string& output) {
  if (input == "-" || output == "-") return false;
  std::error_code none;
  return fs::equivalent(pathFromUtf8(input), pathFromUtf8(output), none);
}

// Pages that no stream can have; replayed samples take any number, as the filter does.
void checkPage(std::uint32_t page) {
  if (canHavePage(SubtitleInputType::ClosedCaption, page)) return;
  if (page >= 0x100 && page <= 0x8FF) return;
  throw UsageError(
      "--page: give a caption service (1 to 4, S1 to S63) or a teletext page (100 to 8ff)");
}

// The file itself is opened when there is something to write; that must not be the moment to learn
// of a mistyped directory.
void checkDirectoryOf(const std::string& output) {
  const fs::path directory = pathFromUtf8(output).parent_path();
  std::error_code error;
  if (directory.empty() || fs::is_directory(directory, error)) return;
  throw OutputError("cannot write '" + output + "': there is no directory '" +
                    utf8FromPath(directory) + "'");
}

/// The one service of a replay.
class ConfiguredService final : public IServiceFinder {
 public:
  ConfiguredService(std::uint32_t page, std::uint32_t pageOption)
      : page_(page), pageOption_(pageOption) {}

  std::vector<Service> describe(const StreamInfo& stream) override {
    Service service;
    service.streamId = stream.id;
    service.type = stream.type;
    service.page = page_;
    service.pageOption = pageOption_;
    return {service};
  }
  std::vector<Service> inspect(const InputSample&) override { return {}; }
  bool isSearching() const override { return false; }

 private:
  std::uint32_t page_;
  std::uint32_t pageOption_;
};

/// One run of the command.
class Conversion {
 public:
  Conversion(const ConvertOptions& options, Console& console)
      : options_(options),
        console_(console),
        input_(openInput(options.input.path, readerOptions(options.input, console))),
        transcriber_({.languages = options.ocr.languages,
                      .shapesPath = options.ocr.shapes,
                      .hasFilePerLanguage = options.all,
                      .reportPath = options.ocr.report,
                      .title = pageTitle(options.input.path)},
                     console) {}

  ExitCode run();

 private:
  bool isReplay() const { return input_.format == InputFormat::RecordedSamples; }
  FormatBlock formatBlockOf(const StreamInfo& stream) const {
    return isReplay() ? FormatBlock(stream.descriptors) : std::nullopt;
  }

  std::unique_ptr<IServiceFinder> makeFinder(const StreamInfo& stream);
  std::unique_ptr<ServiceSession> makeSession(const Service& service, const StreamInfo& stream);
  std::unique_ptr<ServiceSession> makeCueSession(const Service& service, const StreamInfo& stream,
                                                 const ChainConfiguration& configuration);
  PlayableFormat formatFor(const Service& service) const;
  bool isRead(const Service& service, PlayableFormat format) const;
  bool canConvert(const Service& service, PlayableFormat format);
  std::string pathFor(const Service& service, const StreamInfo& stream, std::string_view extension);
  std::string expandedPath(const Service& service, const StreamInfo& stream,
                           std::string_view extension) const;
  void reportStatistics(const ServicePass& pass);
  void reportDoubts(const ServicePass& pass);
  ExitCode report(const ServicePass& pass);
  ExitCode explainNothing(const ServicePass& pass);
  std::string explainRefusal(const std::string& input) const;

  const ConvertOptions& options_;
  Console& console_;
  OpenedInput input_;
  Transcriber transcriber_;
  std::map<const ServiceSession*, const Transcript*> transcripts_;
  std::optional<Service> refused_;  // the first that the format cannot hold
  std::string refusal_;             // why its pictures cannot be read
  using Feed = std::tuple<std::uint32_t, std::uint32_t, std::optional<DvbPages>>;
  static Feed feedOf(const Service& service) {
    return {service.streamId, service.page, service.dvbPages};
  }
  MediaTime originOf(const Service& service) const {
    return options_.absolute ? MediaTime{0} : input_.reader->startTime(service.program).value_or(0);
  }
  std::map<Feed, std::uint32_t> feedIndexes_;  // in the order in which they were found
  std::map<Feed, std::string> files_;          // of the services that have one
  std::set<std::string> paths_;                // of the files so far
  // Streams of DVB subtitles: all their pages give the same samples, as they would in the filter.
  std::set<std::uint32_t> sampled_;
};

ExitCode Conversion::run() {
  if (isOneFile(options_.input.path, options_.output)) {
    throw UsageError("the output would overwrite the input " + inputName(options_.input.path));
  }
  if (options_.query.page && !isReplay()) checkPage(*options_.query.page);
  if (!options_.all) checkDirectoryOf(options_.output);
  for (const auto& path : {options_.ocr.shapes, options_.ocr.report}) {
    checkDirectoryOf(path);
    if (isOneFile(options_.input.path, path)) {
      throw UsageError("'" + path + "' is the input and would be overwritten");
    }
  }
  if (options_.kind == OutputKind::Captions) {
    return copyCaptions(options_, *input_.reader, console_);
  }

  ServicePass pass(
      *input_.reader, options_.all ? ServicePass::Wanted::All : ServicePass::Wanted::Best,
      [this](const StreamInfo& stream) { return makeFinder(stream); },
      [this](const Service& service, const StreamInfo& stream) {
        return makeSession(service, stream);
      },
      console_);
  if (!pass.read() && options_.completeOnly) return kFailed;
  pass.complete();
  transcriber_.finish();
  return report(pass);
}

// Recorded samples are replayed as configured: nothing is guessed, and the page of a language is
// the one that their format block names, as in the filter.
std::unique_ptr<IServiceFinder> Conversion::makeFinder(const StreamInfo& stream) {
  if (isReplay()) {
    const auto settings = encoding::subtitling::chainSettings(
        configurationOf(options_), stream.type, stream.descriptors, nullptr);
    return std::make_unique<ConfiguredService>(settings.page, settings.pageOption);
  }
  return createServiceFinder(stream, options_.query, &console_);
}

std::unique_ptr<ServiceSession> Conversion::makeSession(const Service& service,
                                                        const StreamInfo& stream) {
  feedIndexes_.try_emplace(feedOf(service), static_cast<std::uint32_t>(feedIndexes_.size() + 1));
  ChainConfiguration configuration = configurationOf(options_);
  if (!isReplay()) {
    configuration.page = service.page;
    configuration.pageOption = service.pageOption;
  }
  if (options_.kind != OutputKind::Samples) {
    return makeCueSession(service, stream, configuration);
  }
  if (hasDecoderOfItsOwn(service)) return nullptr;  // the filter has none
  if (service.dvbPages && !sampled_.insert(service.streamId).second) return nullptr;
  const bool isCertain = isReplay() || options_.query.page.has_value();
  return std::make_unique<SampleSession>(service, configuration, formatBlockOf(stream),
                                         pathFor(service, stream, ".jsonl"), isCertain, console_);
}

std::unique_ptr<ServiceSession> Conversion::makeCueSession(
    const Service& service, const StreamInfo& stream, const ChainConfiguration& configuration) {
  const PlayableFormat format = formatFor(service);
  if (!canConvert(service, format)) return nullptr;
  auto origin = [this, service] { return originOf(service); };
  auto duration = [this, origin, program = service.program]() -> MediaTime {
    const MediaTime start = origin();
    return std::max(input_.reader->endTime(program).value_or(0), start) - start;
  };
  // The stream's description is the pass's own, and may learn the service's name meanwhile.
  auto openFile = [this, service, &stream, format, duration] {
    return createPlayableFile({.format = format,
                               .type = service.type,
                               .isRead = isRead(service, format),
                               .path = pathFor(service, stream, extensionOf(format)),
                               .language = service.language,
                               .ebuTt = options_.ebuTt,
                               .pictures = options_.pictures,
                               .plain = options_.plain,
                               .title = pageTitle(options_.input.path),
                               .service = service,
                               .duration = duration});
  };
  auto settings =
      cueSettings(service, options_.rules, input_.format, options_.query.page.has_value());
  settings.configuration = configuration;
  settings.format = formatBlockOf(stream);
  auto track = std::make_unique<CueTrack>(origin, openFile);
  if (!isRead(service, format)) {
    return createCueSession(service, settings, std::move(track), console_);
  }
  const auto delay = options_.output == "-" ? std::optional(Transcript::kPipeDelay) : std::nullopt;
  auto transcript = transcriber_.transcribe(service, std::move(track), origin, delay);
  const Transcript* const kept = transcript.get();
  auto session = createCueSession(service, settings, std::move(transcript), console_);
  transcripts_[session.get()] = kept;
  if (!options_.ocr.isAskedFor) session->setLastChoice();
  return session;
}

// Pictures become text for files of text, and for documents of either where --ocr asks for it.
bool Conversion::isRead(const Service& service, PlayableFormat format) const {
  if (service.type != SubtitleInputType::DvbSubtitle) return false;
  if (format == PlayableFormat::Ttml) return options_.ocr.isAskedFor;
  return format != PlayableFormat::Pictures;
}

// The first service that cannot be converted is remembered, and why.
bool Conversion::canConvert(const Service& service, PlayableFormat format) {
  const bool isText = isRead(service, format);
  const std::string problem = isText ? transcriber_.problemOf(service) : "";
  if (problem.empty() && (isText || canHold(format, service.type))) return true;
  if (!refused_) {
    refused_ = service;
    refusal_ = problem;
  }
  return false;
}

// With --all and no format named, pictures go where pictures can go.
PlayableFormat Conversion::formatFor(const Service& service) const {
  if (options_.kind == OutputKind::Pictures) return PlayableFormat::Pictures;
  const bool isFree = options_.all && !options_.isModeGiven && !options_.ocr.isAskedFor;
  if (isFree && service.type == SubtitleInputType::DvbSubtitle) return PlayableFormat::Ttml;
  return playableFormat(options_.mode);
}

std::string Conversion::pathFor(const Service& service, const StreamInfo& stream,
                                std::string_view extension) {
  std::string& path = files_[feedOf(service)];
  path = options_.all ? expandedPath(service, stream, extension) : options_.output;
  if (!options_.all) return path;
  const fs::path directory = pathFromUtf8(path).parent_path();
  std::error_code error;
  if (!directory.empty()) fs::create_directories(directory, error);
  if (error) {
    throw OutputError("cannot make the directory '" + utf8FromPath(directory) +
                      "': " + error.message());
  }
  if (isOneFile(options_.input.path, path)) {
    throw UsageError("the output would overwrite the input " + inputName(path));
  }
  if (!paths_.insert(path).second) {
    throw UsageError("the template gives two services the same file " + inputName(path) +
                     "; set ${feedIndex} apart from what stands beside it");
  }
  return path;
}

// "DIR/0x0100-cc1.vtt", "DIR/0x0034-page-888-swe.vtt", or what the template says.
std::string Conversion::expandedPath(const Service& service, const StreamInfo& stream,
                                     std::string_view extension) const {
  if (!isTemplate(options_.output)) {
    return utf8FromPath(pathFromUtf8(options_.output) /
                        pathFromUtf8(fileName(service) + std::string(extension)));
  }
  const std::string language = service.language.empty() ? "" : service.language + ' ';
  const auto expanded = expandTemplate(
      options_.output, {.feedIndex = feedIndexes_.at(feedOf(service)),
                        .serviceName = stream.serviceName.empty() ? language + displayName(service)
                                                                  : stream.serviceName,
                        .customName = options_.customName});
  if (const auto* error = std::get_if<util::ExpansionError>(&expanded)) {
    throw UsageError(explain(*error, options_.output));
  }
  std::string path = std::get<std::string>(expanded);
  if (!pathFromUtf8(path).has_extension()) path += extension;
  return path;
}

void Conversion::reportStatistics(const ServicePass& pass) {
  const auto mode = chainMode(options_.mode);
  for (const auto* session : pass.sessions()) {
    const auto found = transcripts_.find(session);
    const auto* transcript = found == transcripts_.end() ? nullptr : found->second;
    if (options_.statistics == StatisticsFormat::Text) {
      console_.print(statisticsText(*session, mode));
      if (transcript) console_.print(ocrStatisticsText(transcript->statistics()));
    } else if (options_.statistics == StatisticsFormat::Json) {
      auto json = statisticsJson(*session, mode, files_[feedOf(session->service())],
                                 originOf(session->service()));
      if (transcript)
        json["ocr"] = ocrStatisticsJson(transcript->statistics(), originOf(session->service()));
      console_.print(json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    }
  }
}

// What has been read is no better than it can be; whoever needs it exact knows where to look.
void Conversion::reportDoubts(const ServicePass& pass) {
  std::size_t doubtful = 0, all = 0;
  for (const auto* session : pass.sessions()) {
    const auto found = transcripts_.find(session);
    if (found == transcripts_.end()) continue;
    const auto statistics = found->second->statistics();
    doubtful += statistics.doubtful;
    all += statistics.cues.size();
  }
  if (doubtful == 0) return;
  const bool hasReport = !options_.ocr.report.empty();
  console_.note(std::to_string(doubtful) + " of " + std::to_string(all) + " cues are doubtful; " +
                (hasReport ? "see '" + options_.ocr.report + "'"
                           : std::string("--ocr-report FILE.html shows them")));
}

ExitCode Conversion::report(const ServicePass& pass) {
  reportStatistics(pass);
  reportDoubts(pass);
  bool isAnyOpen = false;
  for (const auto* session : pass.sessions()) isAnyOpen = isAnyOpen || session->isOpen();
  if (isAnyOpen) return kDone;
  return explainNothing(pass);
}

// Says why nothing came out. What another command line would bring out is a failure.
ExitCode Conversion::explainNothing(const ServicePass& pass) {
  const std::string input = inputName(options_.input.path);
  const auto sessions = pass.ranked();
  const auto timedOut = std::find_if(sessions.begin(), sessions.end(), [](const auto* session) {
    return session->hasTimedOutAtOnce();
  });
  if (const auto why = explainInput(*input_.reader, options_.input);
      !why.empty() && (sessions.empty() || !input_.reader->findings().hasAskedPid)) {
    console_.error(why);
    return kFailed;
  }
  if (refused_) {
    console_.error(explainRefusal(input));
    return kFailed;
  }
  if (isReplay() && !options_.query.page) {
    console_.error(
        "nothing was shown: without --page, recorded samples are replayed with page 0; "
        "name the page or caption service, as in --page 1");
    return kFailed;
  }
  if (timedOut != sessions.end()) {
    console_.error("no subtitles are shown in " + input + ": the pages of " +
                   describe((*timedOut)->service()) + " have a time-out of 0 seconds");
  } else if (pass.streamCount() == 0) {
    console_.error("there is no stream in " + input + " that could carry subtitles");
  } else if (options_.query.page || options_.input.pid || !options_.query.language.empty()) {
    console_.error("nothing of what was asked for is shown in " + input +
                   "; 'txsub probe' lists what there is");
  } else {
    console_.error("no subtitles are shown in " + input);
  }
  return kNoSubtitles;
}

std::string Conversion::explainRefusal(const std::string& input) const {
  if (refused_->type == SubtitleInputType::DvbSubtitle) {
    return describe(*refused_) + " in " + input + " are pictures: " + refusal_ +
           "; or keep pictures with --mode ttml, or -o DIR/ for PNG files";
  }
  return describe(*refused_) + " in " + input +
         " is text and cannot become pictures; name a file, as in -o FILE" +
         std::string(extensionOf(playableFormat(options_.mode)));
}

}  // namespace

ExitCode run(const ConvertOptions& options, Console& console) {
  return Conversion(options, console).run();
}

}  // namespace korr::txsub
