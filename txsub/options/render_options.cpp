// SPDX-License-Identifier: MIT
#include <algorithm>
#include <charconv>

#include "txsub/options/subcommand.h"

namespace korr::txsub {

namespace {

constexpr const char* kRenderExamples =
    "Any service can be drawn: captions, teletext and DVB pictures, as a receiver would. Raw "
    "frames "
    "are bytes\nR, G, B, A, transparent where nothing is shown, so that a video tool can lay them "
    "over the picture.\n\n"
    "Examples:\n"
    "  txsub render news.ts --at 1:02.5 -o frame.png             the subtitles at that moment\n"
    "  txsub render news.ts --at 62.5 --over still.png -o frame.png\n"
    "  txsub render news.ts --frames 25 --size 1920x1080 -       raw frames to standard output";

// "62.5", "1:02.5", "0:01:02.5"
MediaTime parseTime(const std::string& text) {
  double seconds = 0;
  std::size_t begin = 0;
  for (int part = 0; part < 3; ++part) {
    const std::size_t end = std::min(text.find(':', begin), text.size());
    double value = 0;
    const auto [stop, error] = std::from_chars(text.data() + begin, text.data() + end, value);
    if (error != std::errc() || stop != text.data() + end || !(value >= 0) || value > 1e6) break;
    seconds = seconds * 60 + value;
    if (end == text.size())
      return static_cast<MediaTime>(seconds * static_cast<double>(encoding::subtitling::kSecond));
    begin = end + 1;
  }
  throw usageError("--at", "'" + text + "' is no time such as 62.5 or 1:02.5");
}

FrameSize parseSize(const std::string& text) {
  constexpr std::uint64_t kMaximumPixels = 64'000'000;
  const auto cross = text.find('x');
  if (cross != std::string::npos) {
    const auto width = parseNumber(std::string_view(text).substr(0, cross), 10);
    const auto height = parseNumber(std::string_view(text).substr(cross + 1), 10);
    if (width && height && *width > 0 && *height > 0 &&
        std::uint64_t{*width} * *height <= kMaximumPixels)
      return {*width, *height};
  }
  throw usageError("--size", "'" + text + "' is no frame size such as 1920x1080");
}

double parseRate(const std::string& text) {
  double rate = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), rate);
  if (error == std::errc() && end == text.data() + text.size() && rate >= 0.1 && rate <= 240) {
    return rate;
  }
  throw usageError("--frames", "'" + text + "' is no rate from 0.1 to 240 frames a second");
}

class RenderSubcommand final : public ISubcommand {
 public:
  explicit RenderSubcommand(CLI::App& program)
      : command_(program.add_subcommand("render", "Draw the subtitles of a recording")) {
    input_.addTo(*command_);
    command_
        ->add_option("-o,--output,OUTPUT", options_.output,
                     "The PNG file or the raw frames; '-' for standard output")
        ->type_name("FILE");
    auto* at = command_
                   ->add_option("--at", at_,
                                "Draw what is shown at this time, from the recording's start: "
                                "seconds or [H:]M:S, with a fraction")
                   ->type_name("TIME");
    auto* frames = command_
                       ->add_option("--frames", rate_,
                                    "Draw raw frames of the whole recording, so many a second")
                       ->type_name("RATE")
                       ->excludes(at);
    auto* size = command_->add_option("--size", size_, "Pixels of a frame (default 1920x1080)")
                     ->type_name("WxH");
    command_
        ->add_option("--over", options_.over,
                     "Draw over this picture, a PNG file, in its size instead of --size")
        ->type_name("PICTURE")
        ->excludes(frames)
        ->excludes(size);
    service_.addTo(*command_);
    addRules(*command_, options_.rules);
    command_->footer(footer(kRenderExamples));
  }

  bool isCalled() const override { return command_->parsed(); }

  Command settle() override {
    options_.input = input_.settle();
    options_.query = service_.settle();
    if (!size_.empty()) options_.size = parseSize(size_);
    if (!rate_.empty()) options_.framesPerSecond = parseRate(rate_);
    if (!at_.empty()) {
      options_.at = parseTime(at_);
    } else if (rate_.empty()) {
      throw usageError("--at", "name the moment with --at TIME, or a rate with --frames RATE");
    }
    return options_;
  }

 private:
  CLI::App* command_;
  InputArguments input_;
  ServiceArguments service_;
  RenderOptions options_;
  // As typed.
  std::string at_;
  std::string size_;
  std::string rate_;
};

}  // namespace

std::unique_ptr<ISubcommand> addRender(CLI::App& program) {
  return std::make_unique<RenderSubcommand>(program);
}

}  // namespace korr::txsub
