// SPDX-License-Identifier: MIT
#include "log/sink_logger.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/sinks/stdout_sinks.h>

#include <array>
#include <atomic>
#include <charconv>
#include <cstring>

#include "log/syslog_sink.h"

namespace korr::log::inline v2_1 {
namespace {

using SinkLoggerError = util::ExceptionTemplate<SinkLogger>;

constexpr std::size_t kFileBytes = 10'000'000;
constexpr std::size_t kFiles = 5;
constexpr std::uint16_t kSyslogPort = 514;

spdlog::level::level_enum toSpdlog(Level level) {
  switch (level) {
    case Level::Error:
      return spdlog::level::err;
    case Level::Warning:
      return spdlog::level::warn;
    default:
      return spdlog::level::info;
  }
}

// HOST, HOST:PORT, [HOST] or [HOST]:PORT
spdlog::sink_ptr openSyslog(std::string_view address) {
  std::string_view host = address;
  std::string_view port;
  if (address.starts_with('[')) {
    const auto end = address.find(']');
    if (end == std::string_view::npos) throw SinkLoggerError("no ] after the address");
    host = address.substr(1, end - 1);
    port = address.substr(end + 1);
  } else if (const auto colon = address.find(':'); colon != std::string_view::npos) {
    host = address.substr(0, colon);
    port = address.substr(colon);
  }

  std::uint16_t number = kSyslogPort;
  if (!port.empty()) {
    const char* end = port.data() + port.size();
    const auto parsed = std::from_chars(port.data() + 1, end, number);
    if (port.front() != ':' || parsed.ec != std::errc{} || parsed.ptr != end || number == 0)
      throw SinkLoggerError("the port is not a number from 1 to 65535");
  }
  if (host.empty()) throw SinkLoggerError("no host");
  return std::make_shared<SyslogSink>(platform::openUdpSender(std::string(host), number));
}

spdlog::sink_ptr open(std::string_view description) {
  constexpr std::string_view kFile = "file:";
  constexpr std::string_view kSyslog = "syslog:";
  if (description == "console") {
    auto sink = std::make_shared<spdlog::sinks::stderr_color_sink_mt>();
    sink->set_pattern("%^%l%$: %v");
    return sink;
  }
  if (description == "stdout") return std::make_shared<spdlog::sinks::stdout_sink_mt>();
  if (description == "stderr") return std::make_shared<spdlog::sinks::stderr_sink_mt>();
  if (description.starts_with(kFile)) {
    return std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
        std::string(description.substr(kFile.size())), kFileBytes, kFiles - 1);
  }
  if (description.starts_with(kSyslog)) return openSyslog(description.substr(kSyslog.size()));
  throw SinkLoggerError("the sinks are console, stdout, stderr, file:PATH and syslog:HOST[:PORT]");
}

// Formats into `buffer` and returns the text in it: one line, cut at a character when too long.
std::string_view formatLine(std::array<char, kMaximumMessageBytes + 1>& buffer, const char* format,
                            std::va_list arguments) {
  const int wanted = std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
  if (wanted < 0)
    return format;  // arguments that cannot be printed: better the format than nothing

  std::size_t length = static_cast<std::size_t>(wanted);
  if (length > kMaximumMessageBytes) {
    constexpr std::string_view kCut = "...";
    length = kMaximumMessageBytes - kCut.size();
    while (length > 0 && (buffer[length] & 0xC0) == 0x80) --length;
    std::memcpy(buffer.data() + length, kCut.data(), kCut.size());
    length += kCut.size();
  }
  for (std::size_t i = 0; i < length; ++i) {
    if (static_cast<unsigned char>(buffer[i]) < 0x20) buffer[i] = ' ';
  }
  return {buffer.data(), length};
}

}  // namespace

struct SinkLogger::Sinks {
  spdlog::logger logger{"txsub"};
  std::atomic<bool> failed = false;
};

SinkLogger::SinkLogger(Level mostDetailed)
    : mostDetailed_(mostDetailed), sinks_(std::make_unique<Sinks>()) {
  sinks_->logger.flush_on(spdlog::level::info);
  sinks_->logger.set_error_handler([sinks = sinks_.get()](const std::string& reason) {
    if (!sinks->failed.exchange(true))
      std::fprintf(stderr, "log: %s; messages are being lost\n", reason.c_str());
  });
}

SinkLogger::~SinkLogger() = default;

void SinkLogger::addSink(std::string_view description) {
  try {
    sinks_->logger.sinks().push_back(open(description));
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    throw SinkLoggerError("no log to '%.*s': %s", static_cast<int>(description.size()),
                          description.data(), error.what());
  }
}

void SinkLogger::logV(Level level, const char* format, std::va_list arguments) noexcept {
  if (level > mostDetailed_) return;
  std::array<char, kMaximumMessageBytes + 1> buffer;
  const auto line = formatLine(buffer, format, arguments);
  try {
    sinks_->logger.log(toSpdlog(level), spdlog::string_view_t(line.data(), line.size()));
  } catch (...) {
    // The error handler has spoken; conversion goes on.
  }
}

void SinkLogger::nameBufferCounters(const char* name) noexcept {
  write(this, Level::Information, "buffer counters: %s", name);
}

}  // namespace korr::log::inline v2_1
