// SPDX-License-Identifier: MIT

#include <charconv>
#include <cmath>

#include "txsub/options/subcommand.h"

namespace korr::txsub {

namespace {

using encoding::subtitling::kSecond;

constexpr const char* kStreamExamples =
    "Segments are cut where the video's can be, at its random access points, and while nothing is\n"
    "said they are empty and complete. A run that was stopped or killed, started again with the\n"
    "same directory, goes on with its numbers.\n\n"
    "Examples:\n"
    "  txsub stream news.ts -o subs                     all services of a recording\n"
    "  cat live.ts | txsub stream - -o subs --window 60 a programme on the air, its last minute\n"
    "  txsub stream live.ts -o subs --follow            a recording that is still being written\n"
    "  txsub stream mux.ts -o subs --program 3          one programme of a multiplex\n"
    "  txsub stream news.ts -o subs --master video/master.m3u8\n"
    "                                                   with a master playlist for both";

const std::vector<std::pair<std::string, SegmentAlign>> kAligns = {{"video", SegmentAlign::Video},
                                                                   {"grid", SegmentAlign::Grid}};

// An option that takes seconds with or without decimals.
CLI::Option* addSeconds(CLI::App& command, const std::string& name,
                        std::function<void(MediaTime)> take, double least, double most,
                        const std::string& description) {
  return command
      .add_option_function<std::string>(
          name,
          [=](const std::string& text) {
            double seconds = 0;
            const auto [end, error] =
                std::from_chars(text.data(), text.data() + text.size(), seconds);
            const bool isNumber = error == std::errc() && end == text.data() + text.size();
            if (!isNumber || !(seconds >= least && seconds <= most)) {
              throw usageError(name, "'" + text + "' is not from " +
                                         std::to_string(std::lround(least)) + " to " +
                                         std::to_string(std::lround(most)) + " seconds");
            }
            take(static_cast<MediaTime>(std::llround(seconds * kSecond)));
          },
          description)
      ->type_name("SECONDS");
}

class StreamSubcommand final : public ISubcommand {
 public:
  explicit StreamSubcommand(CLI::App& program);

  bool isCalled() const override { return command_->parsed(); }
  Command settle() override;

 private:
  CLI::App* command_;
  InputArguments input_;
  ServiceArguments service_;
  StreamOptions options_;
  std::uint32_t program_ = 0;
  std::string statistics_;
};

StreamSubcommand::StreamSubcommand(CLI::App& program)
    : command_(program.add_subcommand(
          "stream", "Make HLS and DASH segments of the subtitles while a programme runs")) {
  input_.addTo(*command_);
  command_->add_option("-o,--output", options_.output, "The directory for segments and playlists")
      ->type_name("DIR")
      ->required();
  addSeconds(
      *command_, "--segment", [this](MediaTime time) { options_.segment = time; }, 1, 60,
      "How long segments are at least (default: 6); give what the video's packager was given")
      ->default_str("6");
  addChoice(*command_, "--align", options_.align, kAligns,
            "video: segments begin at the first random access point of the video after that time "
            "(default); grid: at whole multiples of it")
      ->type_name("WHERE");
  addSeconds(
      *command_, "--window", [this](MediaTime time) { options_.window = time; }, 1, 604'800,
      "Keep that much, and remove older segments a window later; otherwise everything is kept");
  command_
      ->add_option("--master", options_.master,
                   "The video's playlist, master or media: DIR/master.m3u8 names it together with "
                   "the subtitles, as soon as it is there")
      ->type_name("VIDEO.m3u8");
  command_->add_flag("--realtime", options_.isPaced, "Read no faster than the programme runs");
  addSeconds(
      *command_, "--follow", [this](MediaTime time) { options_.follow = time; }, 1, 604'800,
      "The file is still being written: end when it has not grown for so long (default: 60)")
      ->expected(0, 1)
      ->default_str("60");
  addNumber(*command_, "--program", program_, 1, 65'535,
            "The programme of a multiplex, by its number")
      ->type_name("NUMBER");
  service_.addTo(*command_);
  command_->add_flag("--leave-open", options_.isLeftOpen,
                     "Do not say that the stream has ended when the input does: a run that goes on "
                     "will follow");
  command_->add_flag("--stats{text}", statistics_,
                     "At the end print what each service came to, to standard error; "
                     "--stats=json for programs");
  command_->footer(footer(kStreamExamples));
}

Command StreamSubcommand::settle() {
  options_.input = input_.settle();
  options_.query = service_.settle();
  if (command_->count("--program") != 0) options_.program = program_;
  if (options_.output.empty() || options_.output == "-") {
    throw usageError("--output", "name the directory for segments and playlists");
  }
  if (command_->count("--follow") != 0) {
    if (options_.input.path == "-") throw usageError("--follow", "goes with a file");
    if (!options_.follow) options_.follow = 60 * kSecond;
  }
  options_.statistics = parseStatistics(statistics_);
  return options_;
}

}  // namespace

std::unique_ptr<ISubcommand> addStream(CLI::App& program) {
  return std::make_unique<StreamSubcommand>(program);
}

}  // namespace korr::txsub
