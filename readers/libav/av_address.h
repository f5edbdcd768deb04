// SPDX-License-Identifier: MIT

// Bytes from an address, by the protocols of libavformat.
#pragma once

#include <chrono>
#include <memory>

#include "readers/network_address.h"

struct AVIOContext;

namespace korr::txsub {

/// Reads messages as they come: a datagram, or what a connection has brought. Opens nothing but by
/// the protocols that the request names.
class AvAddress final : public IByteSource {
 public:
  /// Throws util::TessaryException.
  explicit AvAddress(const AddressRequest& request);
  ~AvAddress() override;
  AvAddress(const AvAddress&) = delete;
  AvAddress& operator=(const AvAddress&) = delete;

  std::size_t read(std::uint8_t* buffer, std::size_t size) override;
  std::optional<std::uint64_t> size() const override { return {}; }

 private:
  using Clock = std::chrono::steady_clock;

  static int shouldStop(void* self) noexcept;
  bool isStalled() const { return Clock::now() - lastMessage_ > request_.stall; }
  [[noreturn]] void fail(int error) const;

  AddressRequest request_;
  Clock::time_point lastMessage_ = Clock::now();
  AVIOContext* io_ = nullptr;
};

}  // namespace korr::txsub
