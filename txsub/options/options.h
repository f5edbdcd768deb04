// SPDX-License-Identifier: MIT

// The command line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "chain/chain_configuration.h"
#include "chain/display_chain.h"
#include "files/playable_file.h"
#include "model/modes.h"
#include "services/service.h"
#include "streaming/segmenter.h"
#include "txsub/console.h"
#include "util/exception.h"

namespace korr::txsub {

/// How the program ends.
enum ExitCode : int {
  kDone = 0,
  kFailed = 1,  ///< the input could not be read, or the output not be made of it or not be written
  kUsage = 2,
  kNoSubtitles = 3,  ///< the input was read, and nothing that was asked for is shown in it
};

struct InputOptions {
  std::string path;  ///< UTF-8; "-" for standard input
  std::optional<std::uint32_t> pid;
  bool reconnects = false;
  Verbosity verbosity = Verbosity::Normal;
  std::vector<std::string> logs;  ///< where messages go too, as Console::openLogs takes them
  log::Level logLevel = log::Level::Information;
};

/// By whose rules subtitles are shown; nothing: by a receiver's in recordings, by the filter's in
/// recorded samples.
using RulesOption = std::optional<encoding::subtitling::DisplayRules>;

/// What `--mode` names.
enum class TextMode { WebVtt, Srt, Ttml };

/// What `--as` names.
enum class OutputKind { Playable, Samples, Pictures, Captions };

/// What `--stats` names.
enum class StatisticsFormat { None, Text, Json };

/// How pictures become text.
struct OcrOptions {
  bool isAskedFor = false;     ///< --ocr is given
  std::string languages = {};  ///< as the engine names them; empty: those of the services
  std::string shapes = {};     ///< UTF-8, a file; empty for none
  std::string report = {};     ///< UTF-8, an .html file; empty for none
};

struct ConvertOptions {
  InputOptions input;
  RulesOption rules;
  std::string output = "-";  ///< UTF-8; a directory or a template with `all`
  std::string customName;    ///< UTF-8; for the template
  TextMode mode = TextMode::WebVtt;
  bool isModeGiven = false;  ///< by `--mode` or the output's extension
  OutputKind kind = OutputKind::Playable;
  ServiceQuery query;
  std::uint32_t durationMs = 2000;
  bool ebuTt = false;
  bool plain = false;  ///< SRT: the text alone
  PictureStorage pictures = PictureStorage::Embedded;
  OcrOptions ocr;
  bool absolute = false;
  bool nonDrop = false;  ///< time codes of caption files count every frame
  bool all = false;
  StatisticsFormat statistics = StatisticsFormat::None;
  bool completeOnly = false;  ///< an interrupted run leaves no output
};

struct ProbeOptions {
  InputOptions input;
  RulesOption rules;
  bool json = false;
  bool scan = false;
};

struct ExtractOptions {
  InputOptions input;
  std::string output;  ///< UTF-8
};

/// Pixels.
struct FrameSize {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

/// One still, or raw frames when there is a rate.
struct RenderOptions {
  InputOptions input;
  RulesOption rules;
  std::string output = "-";  ///< UTF-8
  ServiceQuery query;
  MediaTime at = 0;  ///< 100 ns from the recording's start
  std::optional<double> framesPerSecond;
  std::optional<FrameSize> size;
  std::string over;  ///< UTF-8; a PNG file under the subtitle, empty for none
};

struct PreviewOptions {
  InputOptions input;
  RulesOption rules;
  OcrOptions ocr;
  std::string output;  ///< UTF-8
  bool scan = false;
};

/// Every `count`-th of the jobs, from `index` on, which counts from 1.
struct Shard {
  std::uint32_t index = 1;
  std::uint32_t count = 1;
};

struct BatchOptions {
  InputOptions input;   ///< the manifest
  std::string output;   ///< UTF-8; for the lines without one
  std::string results;  ///< UTF-8; one line of JSON for each recording
  std::uint32_t processes = 1;
  Shard shard;
  std::uint32_t timeLimit = 0;       ///< seconds a recording; 0: none
  std::uint32_t memoryLimit = 0;     ///< MiB a recording; 0: none
  std::vector<std::string> options;  ///< of `convert`, for the lines without any
};

struct StreamOptions {
  InputOptions input;
  std::string output;  ///< UTF-8; a directory
  ServiceQuery query;
  std::optional<std::uint32_t> program;
  MediaTime segment = 6 * encoding::subtitling::kSecond;
  SegmentAlign align = SegmentAlign::Video;
  std::optional<MediaTime> window;  ///< nothing: everything is kept
  std::string master;               ///< UTF-8; the video's playlist, empty for none
  bool isPaced = false;
  std::optional<MediaTime> follow;  ///< how long a file need not have grown to be at its end
  bool isLeftOpen = false;
  StatisticsFormat statistics = StatisticsFormat::None;
};

using Command = std::variant<ConvertOptions, ProbeOptions, ExtractOptions, RenderOptions,
                             PreviewOptions, BatchOptions, StreamOptions>;

/// The options do not fit together or do not fit the input: ends the program with kUsage.
class UsageError final : public util::TessaryException {
 public:
  using TessaryException::TessaryException;
};

/// The command line did not name a command to run: what to print, and how to end.
struct NoCommand {
  std::string text;
  ExitCode exitCode = kUsage;  ///< kDone for --help and --version, whose text is the result
};

/// Reads the arguments, the program's name first, in UTF-8.
std::variant<Command, NoCommand> parseCommandLine(const std::vector<std::string>& arguments);

/// The conversion mode of the chain that makes documents of a mode.
encoding::subtitling::ConversionMode chainMode(TextMode mode);

/// What the configuration interface would be set to.
encoding::subtitling::ChainConfiguration configurationOf(const ConvertOptions& options);

PlayableFormat playableFormat(TextMode mode);

}  // namespace korr::txsub
