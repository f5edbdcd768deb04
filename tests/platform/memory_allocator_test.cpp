// SPDX-License-Identifier: MIT
#include "platform/directshow/memory_allocator.h"

#include <gtest/gtest.h>
#include <wrl/client.h>

#include <chrono>
#include <future>

#include "platform/directshow/media_type.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr long kSize = 40;  // bytes

class MemoryAllocator : public testing::Test {
 protected:
  MemoryAllocator() { CMemAllocator::create(&allocator_); }

  HRESULT set(ALLOCATOR_PROPERTIES wanted) {
    ALLOCATOR_PROPERTIES granted = {};
    return allocator_->SetProperties(&wanted, &granted);
  }

  void commitTwoSamples() {
    ASSERT_EQ(set({.cBuffers = 2, .cbBuffer = kSize, .cbAlign = 32, .cbPrefix = 0}), S_OK);
    ASSERT_EQ(allocator_->Commit(), S_OK);
  }

  HRESULT get(ComPtr<IMediaSample>& sample, DWORD flags = AM_GBF_NOWAIT) {
    return allocator_->GetBuffer(&sample, nullptr, nullptr, flags);
  }

  ComPtr<IMemAllocator> allocator_;
};

TEST_F(MemoryAllocator, RefusesWhatItCannotKeep) {
  EXPECT_EQ(allocator_->Commit(), VFW_E_SIZENOTSET);
  EXPECT_EQ(set({.cBuffers = 2, .cbBuffer = kSize, .cbAlign = 0, .cbPrefix = 0}), VFW_E_BADALIGN);
  EXPECT_EQ(set({.cBuffers = 2, .cbBuffer = kSize, .cbAlign = 3, .cbPrefix = 0}), VFW_E_BADALIGN);
  EXPECT_EQ(set({.cBuffers = 2, .cbBuffer = -1, .cbAlign = 1, .cbPrefix = 0}), E_INVALIDARG);
  commitTwoSamples();
  const ALLOCATOR_PROPERTIES others = {.cBuffers = 1, .cbBuffer = 8, .cbAlign = 1, .cbPrefix = 0};
  EXPECT_EQ(set(others), VFW_E_ALREADY_COMMITTED);
  ComPtr<IMediaSample> sample;
  ASSERT_EQ(get(sample), S_OK);
  allocator_->Decommit();
  EXPECT_EQ(set(others), VFW_E_BUFFERS_OUTSTANDING);
  sample.Reset();
  EXPECT_EQ(set(others), S_OK);
}

TEST_F(MemoryAllocator, GivesAlignedSamplesThatDoNotOverlap) {
  commitTwoSamples();
  ComPtr<IMediaSample> samples[2];
  BYTE* bytes[2] = {};
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(get(samples[i]), S_OK);
    samples[i]->GetPointer(&bytes[i]);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bytes[i]) % 32, 0u);
    EXPECT_EQ(samples[i]->GetSize(), kSize);
  }
  EXPECT_GE(std::abs(bytes[0] - bytes[1]), kSize);
  ComPtr<IMediaSample> third;
  EXPECT_EQ(get(third), VFW_E_TIMEOUT);
}

TEST_F(MemoryAllocator, GivesSamplesWithoutTraceOfTheirLastUse) {
  commitTwoSamples();
  ComPtr<IMediaSample> held;
  ComPtr<IMediaSample> sample;
  ASSERT_EQ(get(held), S_OK);
  ASSERT_EQ(get(sample), S_OK);
  REFERENCE_TIME start = 7;
  REFERENCE_TIME stop = 9;
  CMediaType type(&MEDIATYPE_Text);
  EXPECT_EQ(sample->SetTime(&start, nullptr), S_OK);
  EXPECT_EQ(sample->GetTime(&start, &stop), VFW_S_NO_STOP_TIME);
  EXPECT_EQ(stop, 8);
  EXPECT_EQ(sample->SetTime(&start, &stop), S_OK);
  EXPECT_EQ(sample->GetTime(&start, &stop), S_OK);
  EXPECT_EQ(sample->SetMediaTime(&start, &stop), S_OK);
  EXPECT_EQ(sample->SetMediaType(&type), S_OK);
  sample->SetSyncPoint(TRUE);
  sample->SetDiscontinuity(TRUE);
  sample->SetPreroll(TRUE);
  EXPECT_EQ(sample->SetActualDataLength(kSize + 1), VFW_E_BUFFER_OVERFLOW);
  EXPECT_EQ(sample->SetActualDataLength(1), S_OK);

  AM_MEDIA_TYPE* attached = nullptr;
  ASSERT_EQ(sample->GetMediaType(&attached), S_OK);
  EXPECT_EQ(attached->majortype, MEDIATYPE_Text);
  DeleteMediaType(attached);

  IMediaSample* const used = sample.Get();
  sample.Reset();
  ASSERT_EQ(get(sample), S_OK);
  ASSERT_EQ(sample.Get(), used);
  EXPECT_EQ(sample->GetActualDataLength(), kSize);
  EXPECT_EQ(sample->GetTime(&start, &stop), VFW_E_SAMPLE_TIME_NOT_SET);
  EXPECT_EQ(sample->GetMediaTime(&start, &stop), VFW_E_MEDIA_TIME_NOT_SET);
  EXPECT_EQ(sample->GetMediaType(&attached), S_FALSE);
  EXPECT_EQ(sample->IsSyncPoint(), S_FALSE);
  EXPECT_EQ(sample->IsDiscontinuity(), S_FALSE);
  EXPECT_EQ(sample->IsPreroll(), S_FALSE);
}

TEST_F(MemoryAllocator, GivesSamplesWhosePropertiesAreReadAndSetAtOnce) {
  commitTwoSamples();
  ComPtr<IMediaSample> sample;
  ComPtr<IMediaSample2> whole;
  ASSERT_EQ(get(sample), S_OK);
  ASSERT_EQ(sample.As(&whole), S_OK);
  REFERENCE_TIME start = 7;
  REFERENCE_TIME stop = 9;
  CMediaType type(&MEDIATYPE_Text);
  sample->SetTime(&start, &stop);
  sample->SetSyncPoint(TRUE);
  sample->SetMediaType(&type);

  AM_SAMPLE2_PROPERTIES properties = {};
  auto* const bytes = reinterpret_cast<BYTE*>(&properties);
  ASSERT_EQ(whole->GetProperties(sizeof properties, bytes), S_OK);
  EXPECT_EQ(properties.cbData, sizeof properties);
  EXPECT_EQ(properties.dwSampleFlags, DWORD{AM_SAMPLE_SPLICEPOINT | AM_SAMPLE_TYPECHANGED |
                                            AM_SAMPLE_TIMEVALID | AM_SAMPLE_STOPVALID});
  EXPECT_EQ(properties.lActual, kSize);
  EXPECT_EQ(properties.tStart, 7);
  EXPECT_EQ(properties.tStop, 9);
  EXPECT_EQ(properties.pMediaType->majortype, MEDIATYPE_Text);
  EXPECT_EQ(properties.cbBuffer, kSize);

  properties.cbData = 99;
  properties.lActual = 99;
  constexpr DWORD kFirstTwo = offsetof(AM_SAMPLE2_PROPERTIES, dwSampleFlags);
  EXPECT_EQ(whole->GetProperties(kFirstTwo, bytes), S_OK);
  EXPECT_EQ(properties.cbData, kFirstTwo);
  EXPECT_EQ(properties.lActual, 99) << "past the size asked for";

  properties.dwSampleFlags = AM_SAMPLE_TIMEVALID | AM_SAMPLE_DATADISCONTINUITY;
  properties.lActual = 3;
  properties.tStart = 5;
  properties.dwStreamId = 1;
  EXPECT_EQ(whole->SetProperties(sizeof properties, bytes), S_OK);
  EXPECT_EQ(sample->GetTime(&start, &stop), VFW_S_NO_STOP_TIME);
  EXPECT_EQ(start, 5);
  EXPECT_EQ(sample->IsSyncPoint(), S_FALSE);
  EXPECT_EQ(sample->IsDiscontinuity(), S_OK);
  EXPECT_EQ(sample->GetActualDataLength(), 3);
  AM_MEDIA_TYPE* attached = nullptr;
  EXPECT_EQ(sample->GetMediaType(&attached), S_FALSE);
  EXPECT_EQ(whole->GetProperties(sizeof properties, bytes), S_OK);
  EXPECT_EQ(properties.dwStreamId, 1u);

  properties.dwSampleFlags = AM_SAMPLE_PREROLL | AM_SAMPLE_TYPECHANGED;  // and no type
  properties.lActual = 1;
  EXPECT_EQ(whole->SetProperties(offsetof(AM_SAMPLE2_PROPERTIES, lActual), bytes), S_OK);
  EXPECT_EQ(sample->IsPreroll(), S_OK);
  EXPECT_EQ(sample->GetMediaType(&attached), S_FALSE);
  EXPECT_EQ(sample->GetActualDataLength(), 3) << "past the size given";
  properties.lActual = kSize + 1;
  EXPECT_EQ(whole->SetProperties(sizeof properties, bytes), VFW_E_BUFFER_OVERFLOW);
  properties.lActual = 1;
  ++properties.pbBuffer;
  EXPECT_EQ(whole->SetProperties(sizeof properties, bytes), E_INVALIDARG);
  --properties.pbBuffer;
  ++properties.cbBuffer;
  EXPECT_EQ(whole->SetProperties(sizeof properties, bytes), E_INVALIDARG);
  EXPECT_EQ(sample->GetActualDataLength(), 3) << "all or nothing";
}

TEST_F(MemoryAllocator, WaitsUntilASampleComesBackOrItIsDecommitted) {
  commitTwoSamples();
  ComPtr<IMediaSample> samples[2];
  for (auto& sample : samples) ASSERT_EQ(get(sample), S_OK);
  const auto waitForOne = [this] {
    ComPtr<IMediaSample> sample;
    return get(sample, 0);
  };
  constexpr std::chrono::milliseconds kLongEnough{20};

  auto comesBack = std::async(std::launch::async, waitForOne);
  EXPECT_EQ(comesBack.wait_for(kLongEnough), std::future_status::timeout);
  samples[0].Reset();
  EXPECT_EQ(comesBack.get(), S_OK);

  ASSERT_EQ(get(samples[0]), S_OK);
  auto decommitted = std::async(std::launch::async, waitForOne);
  EXPECT_EQ(decommitted.wait_for(kLongEnough), std::future_status::timeout);
  allocator_->Decommit();
  EXPECT_EQ(decommitted.get(), VFW_E_NOT_COMMITTED);
}

TEST_F(MemoryAllocator, LivesAsLongAsItsSamples) {
  const LONG others = CBaseObject::ObjectsActive() - 1;
  commitTwoSamples();
  ComPtr<IMediaSample> sample;
  ASSERT_EQ(get(sample), S_OK);
  allocator_.Reset();
  BYTE* bytes = nullptr;
  sample->GetPointer(&bytes);
  bytes[kSize - 1] = 1;
  EXPECT_EQ(CBaseObject::ObjectsActive(), others + 1);
  sample.Reset();
  EXPECT_EQ(CBaseObject::ObjectsActive(), others);
}

TEST_F(MemoryAllocator, EndsOnceWhenSamplesAndReferencesGoAtTheSameTime) {
  allocator_.Reset();
  const LONG others = CBaseObject::ObjectsActive();
  for (int i = 0; i < 200; ++i) {
    CMemAllocator::create(&allocator_);
    commitTwoSamples();
    ComPtr<IMediaSample> samples[2];
    for (auto& sample : samples) ASSERT_EQ(get(sample), S_OK);
    auto elsewhere = std::async(std::launch::async, [&] { samples[0].Reset(); });
    samples[1].Reset();
    allocator_.Reset();
    elsewhere.get();
    ASSERT_EQ(CBaseObject::ObjectsActive(), others);
  }
}

}  // namespace
