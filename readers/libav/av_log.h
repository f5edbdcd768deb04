// SPDX-License-Identifier: MIT

// Messages of the libav libraries on their way to our log.
#pragma once

#include "log/logger.h"

namespace korr::txsub {

/// While it lives, what demuxers say about a damaged file goes to a logger as warnings; the rest of
/// what the libraries say goes nowhere. Their messages are routed per process: one at a time.
class AvLogRoute {
 public:
  explicit AvLogRoute(log::ILogger* logger);
  ~AvLogRoute();
  AvLogRoute(const AvLogRoute&) = delete;
  AvLogRoute& operator=(const AvLogRoute&) = delete;
};

}  // namespace korr::txsub
