// SPDX-License-Identifier: MIT

// How far apart data must lie for threads not to disturb each other.
#pragma once

#include <cstddef>

namespace korr::concurrency::inline v2_1 {

/// In bytes. Data that one thread writes and others do not read is kept off lines that they use: a
/// line that changes hands costs tens of nanoseconds, or hundreds where no cache is shared.
inline constexpr std::size_t kCacheLine = 64;

}  // namespace korr::concurrency::inline v2_1
