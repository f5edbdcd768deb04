// SPDX-License-Identifier: MIT

// A media sample of the graph as the framers see it.
#pragma once

#include <dshow.h>
#include <wrl/client.h>

#include "framing/media_item.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

/// Holds a reference on the sample, and so on its bytes, as long as a framer needs it.
class MediaSampleItem final : public encoding::packaging::lib_parse_es::IMediaItem {
 public:
  explicit MediaSampleItem(IMediaSample* sample) : sample_(sample) {}

  std::int32_t length() const override { return sample_->GetActualDataLength(); }

  encoding::packaging::lib_parse_es::Result payload(const std::uint8_t*& data) const override {
    BYTE* bytes = nullptr;
    const HRESULT result = sample_->GetPointer(&bytes);
    data = bytes;
    return result;
  }

  std::optional<Times> times() const override {
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    if (FAILED(sample_->GetTime(&start, &stop))) return std::nullopt;
    return Times{static_cast<std::uint64_t>(start), static_cast<std::uint64_t>(stop)};
  }

  bool startFlag() const override { return sample_->IsSyncPoint() == S_OK; }
  bool secondFlag() const override { return sample_->IsDiscontinuity() == S_OK; }

 private:
  Microsoft::WRL::ComPtr<IMediaSample> sample_;
};

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
