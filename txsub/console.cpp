// SPDX-License-Identifier: MIT
#include "txsub/console.h"

#include <algorithm>
#include <cstdio>
#include <utility>

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

// "PID 0x0029, 31.650 s: "
std::string placeText(const Place& place) {
  std::string text = place.pid == 0 ? "" : format("PID 0x%04X", static_cast<unsigned>(place.pid));
  if (place.time) {
    if (!text.empty()) text += ", ";
    text += format("%.3f s", static_cast<double>(*place.time) / encoding::subtitling::kSecond);
  }
  return text.empty() ? text : text + ": ";
}

}  // namespace

Console::Console() : isTerminal_(platform::isErrorTerminal()), started_(Clock::now()) {
}

Console::~Console() {
  clearProgress();
  flushRepeats();
}

void Console::openLogs(const std::vector<std::string>& sinks, log::Level mostDetailed) {
  if (sinks.empty()) return;
  logs_ = std::make_unique<log::SinkLogger>(mostDetailed);
  for (const auto& sink : sinks) {
    logs_->addSink(sink);
    if (sink == "console" || sink == "stderr") areLinesPlain_ = false;
  }
}

void Console::error(const std::string& message) {
  say({.level = log::Level::Error, .text = message});
}

void Console::warning(const std::string& message) {
  report(log::Level::Warning, {}, message);
}

void Console::note(const std::string& message) {
  say({.level = log::Level::Information,
       .isShown = verbosity_ != Verbosity::Quiet,
       .text = message});
}

void Console::detail(const std::string& message) {
  report(log::Level::Information, {}, message);
}

void Console::chainError(const Place& place, const char* message) {
  say({.level = log::Level::Error, .text = std::string("Error: ") + message}, place);
}

void Console::print(const std::string& line) {
  clearProgress();
  flushRepeats();
  std::fprintf(stderr, "%s\n", line.c_str());
}

void Console::logV(log::Level level, const char* text, std::va_list arguments) {
  report(level, {}, util::vformat(text, arguments));
}

void Console::report(log::Level level, const Place& place, const std::string& message) {
  if (level == log::Level::Information) {
    say({.level = level, .isShown = verbosity_ == Verbosity::Verbose, .text = message}, place);
  } else {
    say({.level = log::Level::Warning, .prefix = "txsub: warning: ", .text = message}, place);
  }
}

// A damaged hour of input must not scroll everything else away: equal messages in a row are
// counted.
void Console::say(Message message, const Place& place) {
  if (!message.isShown && !logs_) return;
  Last& last = last_[place.pid];
  if (message == last.message) {
    ++last.repeats;
    return;
  }
  flushRepeats(place.pid);
  if (place.pid != 0) {
    // A count without a PID stands right under what it counts.
    forget(0);
  }
  write(message, place);
  last.message = std::move(message);
}

void Console::write(const Message& message, const Place& place) {
  const std::string line = placeText(place) + message.text;
  if (logs_) log::write(logs_.get(), message.level, "%s", line.c_str());
  if (!message.isShown || !areLinesPlain_) return;
  clearProgress();
  std::fprintf(stderr, "%s%s\n", std::string(message.prefix).c_str(), line.c_str());
}

void Console::flushRepeats() {
  for (const auto& [pid, last] : last_) flushRepeats(pid);
}

void Console::forget(std::uint32_t pid) {
  flushRepeats(pid);
  last_.erase(pid);
}

void Console::flushRepeats(std::uint32_t pid) {
  const auto found = last_.find(pid);
  if (found == last_.end() || found->second.repeats == 0) return;
  auto& [last, repeats] = found->second;
  Message message = last;
  message.prefix = "txsub: ";
  const std::string count =
      "the same " + std::to_string(repeats) + (repeats == 1 ? " more time" : " more times");
  repeats = 0;
  message.text = pid == 0 ? '(' + count + ')' : count + ": " + last.text;
  write(message, {.pid = pid});
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

bool Console::isStopWanted() const {
  return platform::isInterrupted();
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
