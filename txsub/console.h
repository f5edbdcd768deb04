// SPDX-License-Identifier: MIT

// What the program says to whoever runs it: messages and the progress line.
#pragma once

#include <chrono>
#include <cstdarg>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "log/sink_logger.h"
#include "sessions/session_monitor.h"

namespace korr::txsub {

enum class Verbosity { Quiet, Normal, Verbose };

/// Messages on standard error, one line each, and, when that is a terminal, a line of progress
/// under them; also in the logs that the user names. As a logger it takes the messages of
/// everything below. Not thread-safe.
class Console final : public ISessionMonitor {
 public:
  Console();
  ~Console();
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  void setVerbosity(Verbosity verbosity) { verbosity_ = verbosity; }

  /// Sends messages up to a level to these sinks too, as log::SinkLogger::addSink names them;
  /// "console" and "stderr" take the place of the plain lines on standard error. Logs get what
  /// --quiet or the lack of --verbose keeps from the screen. Throws util::TessaryException for a
  /// sink that cannot be had.
  void openLogs(const std::vector<std::string>& sinks, log::Level mostDetailed);

  void error(const std::string& message);    ///< why the program ends without a result
  void warning(const std::string& message);  ///< what is wrong, and what is done about it
  void note(const std::string& message);     ///< good to know; not with --quiet

  /// A line that was asked for, as it stands.
  void print(const std::string& line);

  /// Only with --verbose.
  void detail(const std::string& message) override;

  /// Equal messages of one PID are counted, whatever is said about others in between.
  void report(log::Level level, const Place& place, const std::string& message) override;

  /// "Error: <message>", after its place.
  void chainError(const Place& place, const char* message) override;

  /// Rewrites the progress line, a few times a second at most.
  void showProgress(const ReadProgress& progress) override;
  void endProgress() override { clearProgress(); }

  /// Whether the user has interrupted the program.
  bool isStopWanted() const override;

  void logV(log::Level level, const char* format, std::va_list arguments) override;
  void nameBufferCounters(const char*) override {}

 private:
  using Clock = std::chrono::steady_clock;

  /// One message: how a log ranks it, what stands before it on the screen, and whether it gets
  /// there.
  struct Message {
    log::Level level = log::Level::Error;
    std::string_view prefix = "txsub: ";
    bool isShown = true;
    std::string text;

    friend bool operator==(const Message&, const Message&) = default;
  };

  /// The last message, and how often it has come again since it was written.
  struct Last {
    Message message;
    unsigned repeats = 0;
  };

  void say(Message message, const Place& place = {});
  void write(const Message& message, const Place& place);
  void clearProgress();
  void flushRepeats();
  void flushRepeats(std::uint32_t pid);
  void forget(std::uint32_t pid);  // the next message is written whatever it is

  Verbosity verbosity_ = Verbosity::Normal;
  std::unique_ptr<log::SinkLogger> logs_;  // null when there are none
  bool areLinesPlain_ = true;              // on standard error; else a log writes there
  std::map<std::uint32_t, Last> last_;     // by PID; 0: of all that has none
  bool isTerminal_;
  bool hasProgressLine_ = false;
  Clock::time_point started_;
  std::optional<Clock::time_point> lastShown_;
};

/// "43 %  212 of 500 MB  1.9 GB/s  0:03 left", without what is not known. Elapsed time in seconds.
std::string describeProgress(const ReadProgress& progress, double elapsed);

}  // namespace korr::txsub
