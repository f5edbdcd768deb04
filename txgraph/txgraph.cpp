// SPDX-License-Identifier: MIT

// txgraph: replays recorded samples through the filter in a DirectShow graph, and writes what it
// delivers.
#include <objbase.h>

#include <cstdio>
#include <map>

#include "files/output_file.h"
#include "platform/terminal.h"
#include "readers/record_format.h"
#include "txgraph/graph_replay.h"
#include "txsub/options/subcommand.h"

namespace {

using namespace korr;  // NOLINT(google-build-using-namespace)
namespace host = streaming::direct_show::host;
namespace converter = streaming::direct_show::filters::mqs_subtitle_converter;

constexpr const char* kFooter =
    "All other options are those of 'txsub convert': --mode, --page, --duration, --language,\n"
    "--hearing-impaired, --page-option, --ebu-tt, -o, --quiet and --verbose.\n\n"
    "Examples:\n"
    "  txgraph report.jsonl --mode webvtt --page 888 -o out.jsonl\n"
    "  txgraph report.jsonl --module TXSubtitleConverter.ax --stats -o out.jsonl\n\n"
    "Exit codes:\n"
    "  0  done\n"
    "  1  the recording could not be read, the graph not be run, or the output not be written\n"
    "  2  wrong usage";

struct Arguments {
  std::string module;
  host::SinkKind sink = host::SinkKind::Collecting;
  bool useClock = false;
  bool stats = false;
  txsub::ConvertOptions convert;
};

const std::map<std::string, host::SinkKind> kSinks = {{"collect", host::SinkKind::Collecting},
                                                      {"grabber", host::SinkKind::Grabber}};

/// The options of the graph; the rest is read as txsub reads it. An exit code when there is nothing
/// to run.
std::variant<Arguments, int> parse(const std::vector<std::string>& line) {
  Arguments arguments;
  CLI::App program{
      "Replays recorded samples through the filter in a DirectShow graph:\n"
      "txgraph IN.jsonl [OPTIONS] -o OUT.jsonl",
      "txgraph"};
  txsub::introduce(program);
  program.allow_extras();
  program.add_option("--module", arguments.module,
                     "The module's file (default: the registered module)");
  program
      .add_option("--sink", arguments.sink,
                  "collect: our own; grabber: the platform's SampleGrabber and NullRenderer")
      ->transform(CLI::CheckedTransformer(kSinks).description(""))
      ->type_name("SINK");
  program.add_flag("--clock", arguments.useClock,
                   "Deliver when samples are due instead of as fast as possible");
  program.add_flag("--stats", arguments.stats, "Say how fast it went");
  program.footer(kFooter);

  CLI::App rest;
  rest.allow_windows_style_options(false);  // a path may begin with a slash
  const auto convert = txsub::addConvert(rest);
  try {
    // CLI11 takes the arguments last first, without the program's name.
    program.parse(std::vector<std::string>(line.rbegin(), line.rend() - 1));
    auto convertLine = program.remaining_for_passthrough();
    convertLine.insert(convertLine.end(), {"samples", "--as", "convert"});
    rest.parse(std::move(convertLine));
    arguments.convert = std::get<txsub::ConvertOptions>(convert->settle());
  } catch (const CLI::ParseError& error) {
    return program.exit(error) == 0 ? txsub::kDone : txsub::kUsage;
  }
  return arguments;
}

/// Messages of the filter on standard error, as it words them.
class ErrorLogger final : public converter::ILogger, public log::ILogger {
 public:
  explicit ErrorLogger(txsub::Verbosity verbosity) : verbosity_(verbosity) {}

  void STDMETHODCALLTYPE Log(std::uint32_t level, const char* format,
                             std::va_list arguments) override {
    logV(static_cast<log::Level>(level), format, arguments);
  }
  void STDMETHODCALLTYPE NameBufferCounters(const char*) override {}

  void logV(log::Level level, const char* format, std::va_list arguments) override {
    if (level == log::Level::Information && verbosity_ != txsub::Verbosity::Verbose) return;
    std::fprintf(stderr, "%s\n", util::vformat(format, arguments).c_str());
  }
  void nameBufferCounters(const char*) override {}

 private:
  txsub::Verbosity verbosity_;
};

void run(const Arguments& arguments) {
  ErrorLogger logger(arguments.convert.input.verbosity);
  const auto recording = host::readRecording(arguments.convert.input.path, &logger);
  host::ReplayStatistics statistics(recording);
  const host::ReplaySettings settings = {.module = arguments.module,
                                         .sink = arguments.sink,
                                         .useClock = arguments.useClock,
                                         .configuration = txsub::configurationOf(arguments.convert),
                                         .logger = &logger,
                                         .statistics = arguments.stats ? &statistics : nullptr};

  // Opened first, so that nobody waits for what cannot be written; written afterwards: a full disk
  // is no reason to throw into the graph. What is not complete gets no name.
  txsub::OutputFile output(arguments.convert.output);
  std::string lines;
  host::replay(recording, settings, [&lines](const host::ReceivedSample& sample) {
    lines += txsub::formatDelivered({.start = sample.start,
                                     .stop = sample.stop,
                                     .sync = sample.sync,
                                     .discontinuity = sample.discontinuity,
                                     .data = sample.data});
  });
  lines += txsub::formatEndOfStream();
  if (arguments.stats) std::fprintf(stderr, "txgraph: %s\n", statistics.summary().c_str());
  output.write(lines);
  output.commit();
}

}  // namespace

int main(int argc, char** argv) {
  platform::prepareStandardStreams();
  const auto parsed = parse(platform::utf8Arguments(argc, argv));
  if (const int* exitCode = std::get_if<int>(&parsed)) return *exitCode;
  CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  int exitCode = txsub::kDone;
  try {
    run(std::get<Arguments>(parsed));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "txgraph: %s\n", error.what());
    exitCode = txsub::kFailed;
  }
  CoUninitialize();
  return exitCode;
}
