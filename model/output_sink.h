// SPDX-License-Identifier: MIT

// Output buffers and their delivery, as the chain sees them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "model/media_time.h"

namespace korr::encoding::subtitling::inline v2_1 {

/// One output buffer; new ones have no times and no flags.
class IOutputBuffer {
 public:
  virtual ~IOutputBuffer() = default;

  virtual std::uint8_t* data() = 0;
  virtual std::size_t capacity() const = 0;  ///< bytes
  virtual void setUsedLength(std::size_t bytes) = 0;
  virtual void setSyncPoint(bool isSyncPoint) = 0;
  virtual void setDiscontinuity(bool isDiscontinuity) = 0;
  virtual void setTime(MediaTime start, MediaTime stop) = 0;
};

/// Where documents go. Used by one thread at a time.
class IOutputSink {
 public:
  virtual ~IOutputSink() = default;

  /// An empty buffer, or null when the sink cannot give one (it is stopping, say). May wait.
  virtual std::unique_ptr<IOutputBuffer> getBuffer() = 0;

  /// Takes a filled buffer that `getBuffer` gave. May wait.
  virtual void deliver(std::unique_ptr<IOutputBuffer> buffer) = 0;

  /// No buffer follows.
  virtual void endOfStream() = 0;
};

}  // namespace korr::encoding::subtitling::inline v2_1
