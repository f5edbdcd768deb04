// What the program says to whoever runs it: messages and the progress line.
#pragma once

#include <chrono>
#include <cstdarg>
#include <optional>
#include <string>

#include "log/logger.h"
#include "txsub/input/media_reader.h"

namespace korr::txsub {

enum class Verbosity { Quiet, Normal, Verbose };

/// Messages on standard error, one line each, and, when that is a terminal, a line of progress
/// under them. As a logger it takes the messages of everything below. Not thread-safe.
class Console final : public log::ILogger {
 public:
  Console();
  ~Console();
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  void setVerbosity(Verbosity verbosity) { verbosity_ = verbosity; }

  /// Named at the front of warnings about the input.
  void setInput(const std::string& name) { input_ = name; }

  void error(const std::string& message);    ///< why the program ends without a result
  void warning(const std::string& message);  ///< what is wrong, and what is done about it
  void note(const std::string& message);     ///< good to know; not with --quiet
  void detail(const std::string& message);   ///< only with --verbose

  /// An exception that the chain let pass: "Error: <message>".
  void chainError(const char* message);

  /// Rewrites the progress line, a few times a second at most.
  void showProgress(const ReadProgress& progress);
  void clearProgress();

  void logV(log::Level level, const char* format, std::va_list arguments) override;
  void nameBufferCounters(const char*) override {}

 private:
  using Clock = std::chrono::steady_clock;

  void printLine(const std::string& line);
  void flushRepeats();

  Verbosity verbosity_ = Verbosity::Normal;
  std::string input_;
  std::string lastLine_;
  unsigned repeats_ = 0;  // of lastLine_, not printed yet
  bool isTerminal_;
  bool hasProgressLine_ = false;
  Clock::time_point started_;
  std::optional<Clock::time_point> lastShown_;
};

/// "43 %  212 of 500 MB  1.9 GB/s  0:03 left", without what is not known. Elapsed time in seconds.
std::string describeProgress(const ReadProgress& progress, double elapsed);

}  // namespace korr::txsub
