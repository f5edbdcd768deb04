// SPDX-License-Identifier: MIT

// The logger that operators read: messages to any number of sinks.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "log/logger.h"

namespace korr::log::inline v2_1 {

/// Longer messages are cut at a character and end in "...": so a syslog datagram stays below the
/// 2,048 bytes that every receiver should take (RFC 5426, 3.2).
inline constexpr std::size_t kMaximumMessageBytes = 1536;

/// Sends messages up to a level to its sinks; those above cost one comparison. A sink that fails
/// (a full disk, say) says so once on standard error and loses messages; nothing is thrown into
/// the caller. Thread-safe, but for `addSink`.
class SinkLogger final : public ILogger {
 public:
  /// Passes on levels up to and including `mostDetailed`.
  explicit SinkLogger(Level mostDetailed);
  ~SinkLogger();
  SinkLogger(const SinkLogger&) = delete;
  SinkLogger& operator=(const SinkLogger&) = delete;

  /// Adds the sink that `description` names:
  ///   console               lines on standard error, coloured on a terminal
  ///   stdout, stderr        plain lines with time and level
  ///   file:PATH             the same; a file of 10 MB is renamed to PATH.1 and so on, five are
  ///   kept syslog:HOST[:PORT]    RFC 5424 over UDP, port 514; an IPv6 address stands in brackets
  /// Throws util::TessaryException for another description or a sink that cannot be opened.
  void addSink(std::string_view description);

  void logV(Level level, const char* format, std::va_list arguments) noexcept override;
  void nameBufferCounters(const char* name) noexcept override;

 private:
  struct Sinks;

  Level mostDetailed_;
  std::unique_ptr<Sinks> sinks_;
};

}  // namespace korr::log::inline v2_1
