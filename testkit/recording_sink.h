// SPDX-License-Identifier: MIT

// A sink that keeps what is delivered.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "model/output_sink.h"

namespace korr::test_support {

/// One delivered buffer.
struct Delivered {
  std::string data{};
  encoding::subtitling::MediaTime start = 0;
  encoding::subtitling::MediaTime stop = 0;
  bool syncPoint = false;
  bool discontinuity = false;

  friend bool operator==(const Delivered&, const Delivered&) = default;
};

/// Gives buffers of `capacity` bytes and, once `buffersLeft` are used up, none.
class RecordingSink final : public encoding::subtitling::IOutputSink {
 public:
  explicit RecordingSink(std::size_t capacity = 1024) : capacity_(capacity) {}

  std::unique_ptr<encoding::subtitling::IOutputBuffer> getBuffer() override {
    if (buffersLeft == 0) return nullptr;
    --buffersLeft;
    return std::make_unique<Buffer>(capacity_);
  }

  void deliver(std::unique_ptr<encoding::subtitling::IOutputBuffer> buffer) override {
    delivered.push_back(static_cast<Buffer&>(*buffer).contents());
  }

  void endOfStream() override {}

  std::vector<Delivered> delivered;
  std::size_t buffersLeft = SIZE_MAX;

 private:
  class Buffer final : public encoding::subtitling::IOutputBuffer {
   public:
    explicit Buffer(std::size_t capacity) : bytes_(capacity, '\xEE') {}

    std::uint8_t* data() override { return reinterpret_cast<std::uint8_t*>(bytes_.data()); }
    std::size_t capacity() const override { return bytes_.size(); }
    void setUsedLength(std::size_t bytes) override { used_ = bytes; }
    void setSyncPoint(bool isSyncPoint) override { contents_.syncPoint = isSyncPoint; }
    void setDiscontinuity(bool isDiscontinuity) override {
      contents_.discontinuity = isDiscontinuity;
    }
    void setTime(encoding::subtitling::MediaTime start,
                 encoding::subtitling::MediaTime stop) override {
      contents_.start = start;
      contents_.stop = stop;
    }

    Delivered contents() {
      contents_.data = bytes_.substr(0, used_);
      return contents_;
    }

   private:
    std::string bytes_;
    std::size_t used_ = 0;
    Delivered contents_;
  };

  std::size_t capacity_;
};

}  // namespace korr::test_support
