// SPDX-License-Identifier: MIT

// Captions as video streams carry them: ATSC user data, bare or in SEI messages.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace korr::txsub {

/// Bytes of one cc_data triplet.
inline constexpr std::size_t kTripletBytes = 3;

/// What `cc_data()` of one picture holds (ATSC A/53 Part 4, 6.2.3.1; CEA-708, 4.4).
struct CcData {
  std::span<const std::uint8_t> triplets;  ///< whole triplets only
  std::size_t announced = 0;               ///< triplets that cc_count promises
};

/// The captions in ATSC user data, from its `ATSC_identifier` "GA94" on. Nothing when it is another
/// kind of user data, or when process_cc_data_flag tells receivers to pass over it.
std::optional<CcData> captionsOfUserData(std::span<const std::uint8_t> userData);

/// The captions in the payload of an SEI message of type `user_data_registered_itu_t_t35`.
std::optional<CcData> captionsOfRegisteredUserData(std::span<const std::uint8_t> payload);

/// One SEI message (H.264, 7.3.2.3.1; H.265, 7.3.5).
struct SeiMessage {
  static constexpr std::size_t kUserDataRegistered = 4;  ///< user_data_registered_itu_t_t35

  std::size_t type = 0;
  std::size_t announced = 0;              ///< payloadSize
  std::span<const std::uint8_t> payload;  ///< shorter when the unit ends before
};

/// Takes the next message off `rest`, the remainder of an SEI unit without emulation prevention
/// bytes. Nothing when only trailing bits are left.
[[nodiscard]] std::optional<SeiMessage> takeSeiMessage(std::span<const std::uint8_t>& rest);

/// Removes the emulation prevention bytes of a NAL unit (H.264, 7.4.1.1), in place.
void removeEmulationPrevention(std::vector<std::uint8_t>& unit);

}  // namespace korr::txsub
