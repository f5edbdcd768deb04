// SPDX-License-Identifier: MIT
#include "log/syslog_sink.h"

#include <chrono>

#include "platform/process.h"

namespace korr::log::inline v2_1 {
namespace {

constexpr int kFacilityLocal0 = 16;
constexpr const char* kByteOrderMark = "\xEF\xBB\xBF";

// RFC 5424, table 2.
int severityOf(spdlog::level::level_enum level) {
  switch (level) {
    case spdlog::level::err:
      return 3;
    case spdlog::level::warn:
      return 4;
    default:
      return 6;
  }
}

// RFC 5424, 6.2.3: UTC with six digits of the second.
std::string timestampOf(spdlog::log_clock::time_point time) {
  using namespace std::chrono;
  const auto seconds = floor<std::chrono::seconds>(time);
  const auto day = floor<days>(time);
  const year_month_day date{day};
  const hh_mm_ss clock{seconds - day};
  return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:06}Z", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                     clock.hours().count(), clock.minutes().count(), clock.seconds().count(),
                     duration_cast<microseconds>(time - seconds).count());
}

}  // namespace

SyslogSink::SyslogSink(std::unique_ptr<platform::IUdpSender> sender)
    : sender_(std::move(sender)),
      origin_(fmt::format("{} txsub {} - - {}", platform::hostName(), platform::processId(),
                          kByteOrderMark)) {
}

void SyslogSink::sink_it_(const spdlog::details::log_msg& message) {
  sender_->send(fmt::format("<{}>1 {} {}{}", kFacilityLocal0 * 8 + severityOf(message.level),
                            timestampOf(message.time), origin_,
                            std::string_view(message.payload.data(), message.payload.size())));
}

}  // namespace korr::log::inline v2_1
