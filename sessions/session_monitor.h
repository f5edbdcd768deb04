// SPDX-License-Identifier: MIT

// What sessions tell whoever watches them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "log/logger.h"
#include "readers/media_reader.h"

namespace korr::txsub {

/// Where in the input something came up.
struct Place {
  std::uint32_t pid = 0;               ///< 0: unknown
  std::optional<MediaTime> time = {};  ///< of the stream
};

/// Is told of damage and progress, and may end a pass. Not thread-safe.
class ISessionMonitor : public log::ILogger {
 public:
  /// A message of a chain, after its place.
  virtual void report(log::Level level, const Place& place, const std::string& message) = 0;

  /// An exception that a chain let pass: the sample at this place has been lost.
  virtual void chainError(const Place& place, const char* message) = 0;

  /// What a pass decided; for those who want to know how it works.
  virtual void detail(const std::string& message) = 0;

  virtual void showProgress(const ReadProgress& progress) = 0;

  /// No progress is shown any more.
  virtual void endProgress() = 0;

  /// Whether the pass is to end here, as if the input did.
  virtual bool isStopWanted() const = 0;

 protected:
  ~ISessionMonitor() = default;
};

}  // namespace korr::txsub
