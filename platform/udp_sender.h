// SPDX-License-Identifier: MIT

// Datagrams to one receiver.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace korr::platform::inline v2_1 {

/// Sends datagrams without ever waiting for the receiver. Not thread-safe.
class IUdpSender {
 public:
  virtual ~IUdpSender() = default;

  /// Hands one datagram to the network. False when it was not taken, because of a full queue, say,
  /// or a receiver that refused an earlier one; the next may still pass.
  virtual bool send(std::string_view datagram) noexcept = 0;
};

/// `host` is a name or an IPv4 or IPv6 address without brackets; a name is looked up once, here.
/// Throws util::TessaryException when there is no such host or no socket.
std::unique_ptr<IUdpSender> openUdpSender(const std::string& host, std::uint16_t port);

}  // namespace korr::platform::inline v2_1
