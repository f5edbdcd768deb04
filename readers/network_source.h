// SPDX-License-Identifier: MIT

// The bytes that come from an address.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/byte_file.h"
#include "readers/media_reader.h"
#include "readers/network_address.h"
#include "readers/rtp_order.h"

namespace korr::txsub {

/// Reads from an address, and where that is asked for from a source that has gone and comes again:
/// it is tried at once, then after half a second, and each time after twice as long, up to half a
/// minute. What comes after a gap is a splice to the reader. Not thread-safe.
class NetworkSource final : public platform::IByteFile {
 public:
  struct Settings {
    bool reconnects = false;
    log::ILogger* logger = nullptr;  ///< may be null
    std::function<bool()> isStopped;
    std::function<void(std::chrono::milliseconds)> wait;
  };

  /// A connection, or an exception of util::TessaryException.
  using Connect = std::function<std::unique_ptr<IByteSource>()>;

  NetworkSource(const NetworkProtocol& protocol, Connect connect, Settings settings);

  std::size_t read(std::span<std::uint8_t> buffer) override;
  std::optional<std::uint64_t> size() const override { return {}; }

 private:
  std::size_t receive();
  std::size_t takeOut(std::span<std::uint8_t> buffer);
  bool connectAgain(const std::string& why);

  const NetworkProtocol& protocol_;
  Connect connect_;
  Settings settings_;
  std::unique_ptr<IByteSource> source_;  // null: there is no connection
  RtpOrder order_;
  std::vector<std::uint8_t> message_;
  std::vector<std::uint8_t> bytes_;  // that have come
  std::size_t used_ = 0;             // of them
  std::chrono::milliseconds pause_{0};
};

/// The source at an address, on the module of libavformat. Throws util::TessaryException.
std::unique_ptr<platform::IByteFile> openAddress(const std::string& url,
                                                 const NetworkProtocol& protocol,
                                                 const ReaderOptions& options);

}  // namespace korr::txsub
