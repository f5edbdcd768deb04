// SPDX-License-Identifier: MIT

// The input buffer of one service.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "dtvcc/service_decoder.h"
#include "model/media_time.h"

namespace korr::encoding::subtitling::dtvcc {

/// Cuts a service's bytes into codes, wherever its blocks divide them, and holds codes back while a
/// delay runs (CEA-708-E, 8.9). A full buffer ends the delay, and so do DLC and RST from behind the
/// codes that wait.
class ServiceInput {
 public:
  static constexpr std::size_t kCapacity = 128;  ///< bytes that wait, at most (8.9)

  /// Executes one whole code and says what became of it.
  using Execute = std::function<CodeResult(std::span<const std::uint8_t>)>;

  explicit ServiceInput(Execute execute) : execute_(std::move(execute)) {}

  /// Bytes that come at `time`.
  void add(std::span<const std::uint8_t> bytes, MediaTime time);

  /// When the delay ends; nothing while none runs.
  std::optional<MediaTime> delayEnd() const { return delayEnd_; }

  /// Ends the delay at its time: what waited is executed, up to the next delay.
  void resume();

  /// Bytes were lost: a code that has begun never ends.
  void dropPart();

 private:
  void run(MediaTime time);
  void scan(MediaTime time);
  std::size_t executeCodes(std::span<const std::uint8_t> bytes, MediaTime time);

  Execute execute_;
  std::vector<std::uint8_t> bytes_;  // that wait, whole codes but for the last
  std::size_t scanned_ = 0;          // of them: whole codes that end no delay
  std::optional<MediaTime> delayEnd_;
};

}  // namespace korr::encoding::subtitling::dtvcc
