// SPDX-License-Identifier: MIT
#include "filter/up_stream_pin.h"

#include <wrl/client.h>

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

namespace {

using Microsoft::WRL::ComPtr;

/// One sample of the output's allocator.
class SampleBuffer final : public encoding::subtitling::IOutputBuffer {
 public:
  SampleBuffer(ComPtr<IMediaSample> sample, BYTE* bytes)
      : sample_(std::move(sample)), bytes_(bytes) {
    // Allocators recycle samples, and some forget to clear them.
    sample_->SetTime(nullptr, nullptr);
    sample_->SetMediaTime(nullptr, nullptr);
    sample_->SetPreroll(FALSE);
    setSyncPoint(false);
    setDiscontinuity(false);
  }

  std::uint8_t* data() override { return bytes_; }
  std::size_t capacity() const override { return static_cast<std::size_t>(sample_->GetSize()); }
  void setUsedLength(std::size_t bytes) override {
    sample_->SetActualDataLength(static_cast<long>(bytes));
  }
  void setSyncPoint(bool isSyncPoint) override { sample_->SetSyncPoint(isSyncPoint); }
  void setDiscontinuity(bool isDiscontinuity) override {
    sample_->SetDiscontinuity(isDiscontinuity);
  }
  void setTime(encoding::subtitling::MediaTime start,
               encoding::subtitling::MediaTime stop) override {
    auto first = static_cast<REFERENCE_TIME>(start);
    auto last = static_cast<REFERENCE_TIME>(stop);
    sample_->SetTime(&first, &last);
  }

  IMediaSample* sample() { return sample_.Get(); }

 private:
  ComPtr<IMediaSample> sample_;
  BYTE* bytes_;
};

}  // namespace

// Why there is no buffer does not matter to the chain: stopping, flushing, nobody connected.
std::unique_ptr<encoding::subtitling::IOutputBuffer> UpStreamPin::getBuffer() {
  if (isFlushing_ || isOutdated_) return nullptr;
  ComPtr<IMediaSample> sample;
  if (FAILED(pin_->GetDeliveryBuffer(&sample, nullptr, nullptr, 0))) return nullptr;
  BYTE* bytes = nullptr;
  if (FAILED(sample->GetPointer(&bytes))) return nullptr;
  return std::make_unique<SampleBuffer>(std::move(sample), bytes);
}

void UpStreamPin::deliver(std::unique_ptr<encoding::subtitling::IOutputBuffer> buffer) {
  note(pin_->Deliver(static_cast<SampleBuffer&>(*buffer).sample()));
}

void UpStreamPin::endOfStream() {
  note(pin_->DeliverEndOfStream());
}

// A graph stops its filters from the last one on: that the sink has stopped before us is no
// failure.
void UpStreamPin::note(HRESULT result) {
  if (result == VFW_E_WRONG_STATE) return;
  if (FAILED(result) && SUCCEEDED(result_)) result_ = result;
}

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
