// SPDX-License-Identifier: MIT
#include "files/sample_recorder.h"

#include <array>
#include <utility>

#include "readers/record_format.h"

namespace korr::txsub {

namespace {

using encoding::subtitling::IOutputBuffer;

class RecordedBuffer final : public IOutputBuffer {
 public:
  std::uint8_t* data() override { return bytes_.data(); }
  std::size_t capacity() const override { return bytes_.size(); }
  void setUsedLength(std::size_t bytes) override { used_ = bytes; }
  void setSyncPoint(bool isSyncPoint) override { record_.sync = isSyncPoint; }
  void setDiscontinuity(bool isDiscontinuity) override { record_.discontinuity = isDiscontinuity; }
  void setTime(MediaTime start, MediaTime stop) override {
    record_.start = start;
    record_.stop = stop;
  }

  DeliveredBuffer record() const {
    DeliveredBuffer record = record_;
    record.data = std::span(bytes_).first(used_);
    return record;
  }

 private:
  std::array<std::uint8_t, SampleRecorder::kBufferSize> bytes_{};
  std::size_t used_ = 0;
  DeliveredBuffer record_;
};

}  // namespace

void SampleRecorder::open(const std::string& path) {
  file_ = std::make_unique<OutputFile>(path);
  file_->write(std::exchange(held_, {}));
}

void SampleRecorder::flush() {
  if (file_) file_->flush();
}

void SampleRecorder::commit() {
  if (file_) file_->commit();
}

std::unique_ptr<IOutputBuffer> SampleRecorder::getBuffer() {
  return std::make_unique<RecordedBuffer>();
}

void SampleRecorder::deliver(std::unique_ptr<IOutputBuffer> buffer) {
  write(formatDelivered(static_cast<const RecordedBuffer&>(*buffer).record()));
}

void SampleRecorder::endOfStream() {
  write(formatEndOfStream());
}

void SampleRecorder::write(const std::string& line) {
  if (file_) {
    file_->write(line);
  } else {
    held_ += line;
  }
}

}  // namespace korr::txsub
