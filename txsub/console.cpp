#include "txsub/console.h"

#include <algorithm>
#include <cstdio>

#include "platform/terminal.h"
#include "util/exception.h"

namespace korr::txsub {

namespace {

constexpr std::chrono::milliseconds kProgressDelay{500};  // short jobs show none
constexpr std::chrono::milliseconds kProgressPeriod{200};

TESSARY_PRINTF(1, 2) std::string format(const char* text, ...) {
  std::va_list arguments;
  va_start(arguments, text);
  std::string result = util::vformat(text, arguments);
  va_end(arguments);
  return result;
}

// "1.9 GB", "212 MB", "64 kB"
std::string bytesText(double bytes) {
  if (bytes >= 1e9) return format("%.1f GB", bytes / 1e9);
  if (bytes >= 1e6) return format("%.0f MB", bytes / 1e6);
  return format("%.0f kB", bytes / 1e3);
}

// "0:03", "1:02:03"
std::string durationText(double seconds) {
  const auto total = static_cast<unsigned long long>(seconds + 0.5);
  const auto hours = total / 3600;
  const auto minutes = total / 60 % 60;
  if (hours == 0) return format("%llu:%02llu", minutes, total % 60);
  return format("%llu:%02llu:%02llu", hours, minutes, total % 60);
}

}  // namespace

Console::Console() : isTerminal_(platform::isErrorTerminal()), started_(Clock::now()) {
}

Console::~Console() {
  clearProgress();
  flushRepeats();
}

void Console::error(const std::string& message) {
  printLine("txsub: " + message);
}

void Console::warning(const std::string& message) {
  const std::string where = input_.empty() ? "" : input_ + ": ";
  printLine("txsub: warning: " + where + message);
}

void Console::note(const std::string& message) {
  if (verbosity_ != Verbosity::Quiet) printLine("txsub: " + message);
}

void Console::detail(const std::string& message) {
  if (verbosity_ == Verbosity::Verbose) printLine("txsub: " + message);
}

// Never folded into a count: each stands for one sample.
void Console::chainError(const char* message) {
  clearProgress();
  flushRepeats();
  std::fprintf(stderr, "Error: %s\n", message);
  lastLine_.clear();
}

void Console::logV(log::Level level, const char* text, std::va_list arguments) {
  const std::string message = util::vformat(text, arguments);
  if (level == log::Level::Information) {
    detail(message);
  } else {
    warning(message);
  }
}

// A damaged hour of input must not scroll everything else away: equal lines in a row are counted.
void Console::printLine(const std::string& line) {
  if (line == lastLine_) {
    ++repeats_;
    return;
  }
  clearProgress();
  flushRepeats();
  std::fprintf(stderr, "%s\n", line.c_str());
  lastLine_ = line;
}

void Console::flushRepeats() {
  if (repeats_ != 0) std::fprintf(stderr, "txsub: (the same %u more times)\n", repeats_);
  repeats_ = 0;
}

void Console::showProgress(const ReadProgress& progress) {
  if (!isTerminal_ || verbosity_ == Verbosity::Quiet) return;
  const auto now = Clock::now();
  if (now - started_ < kProgressDelay) return;
  if (lastShown_ && now - *lastShown_ < kProgressPeriod) return;
  lastShown_ = now;
  const double elapsed = std::chrono::duration<double>(now - started_).count();
  std::string line = describeProgress(progress, elapsed);
  line.resize(std::min<std::size_t>(line.size(), platform::errorTerminalWidth() - 1));
  std::fprintf(stderr, "\r%s\x1b[K", line.c_str());
  std::fflush(stderr);
  hasProgressLine_ = true;
}

void Console::clearProgress() {
  if (!hasProgressLine_) return;
  std::fputs("\r\x1b[K", stderr);
  std::fflush(stderr);
  hasProgressLine_ = false;
}

std::string describeProgress(const ReadProgress& progress, double elapsed) {
  const auto done = static_cast<double>(progress.bytesRead);
  const double rate = elapsed > 0 ? done / elapsed : 0;
  const std::string rateText = bytesText(rate) + "/s";
  const auto total = static_cast<double>(progress.bytesTotal.value_or(0));
  if (total <= 0) return bytesText(done) + "  " + rateText;
  // A file that grows while it is read may pass the size it had.
  const double left = std::max(total - done, 0.0);
  std::string text = format("%3.0f %%  ", std::min(100 * done / total, 100.0)) + bytesText(done) +
                     " of " + bytesText(total) + "  " + rateText;
  if (rate > 0) text += "  " + durationText(left / rate) + " left";
  return text;
}

}  // namespace korr::txsub
