// SPDX-License-Identifier: MIT

// Messages to a syslog server.
#pragma once

#include <spdlog/sinks/base_sink.h>

#include <memory>
#include <mutex>
#include <string>

#include "platform/udp_sender.h"

namespace korr::log::inline v2_1 {

/// Sends each message as one datagram: RFC 5424 over UDP (RFC 5426), facility local0, without
/// structured data. What the network does not take is lost, as the transport allows. Thread-safe.
class SyslogSink final : public spdlog::sinks::base_sink<std::mutex> {
 public:
  explicit SyslogSink(std::unique_ptr<platform::IUdpSender> sender);

 private:
  void sink_it_(const spdlog::details::log_msg& message) override;
  void flush_() override {}

  std::unique_ptr<platform::IUdpSender> sender_;
  std::string origin_;  // HOSTNAME SP APP-NAME SP PROCID SP MSGID SP STRUCTURED-DATA SP BOM
};

}  // namespace korr::log::inline v2_1
