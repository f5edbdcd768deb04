// SPDX-License-Identifier: MIT

// The enumerators of pins and of media types.
#pragma once

#include <dshow.h>

#include <atomic>

#include "platform/directshow/media_type.h"

class CBaseFilter;
class CBasePin;

/// Enumerates what `Source` counts, a reference to which it holds. Ends with
/// VFW_E_ENUM_OUT_OF_SYNC when the version of the source has changed, until `Reset`. Used by one
/// thread at a time.
template <class Interface, class Source, class Item>
class DirectShowEnumerator : public Interface {
 public:
  DirectShowEnumerator(const DirectShowEnumerator&) = delete;
  DirectShowEnumerator& operator=(const DirectShowEnumerator&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references_); }
  ULONG STDMETHODCALLTYPE Release() override;

  HRESULT STDMETHODCALLTYPE Next(ULONG count, Item* items, ULONG* fetched) override;
  HRESULT STDMETHODCALLTYPE Skip(ULONG count) override;
  HRESULT STDMETHODCALLTYPE Reset() override;

 protected:
  DirectShowEnumerator(Source* source, LONG version, int position);
  virtual ~DirectShowEnumerator();

  /// Stores the item at `position`, owned by the caller: S_OK, S_FALSE past the end, or a failure.
  virtual HRESULT get(int position, Item* item) = 0;
  virtual LONG sourceVersion() const = 0;

  bool isOutOfSync() const { return version_ != sourceVersion(); }

  Source* source_;
  LONG version_;
  int position_;

 private:
  virtual void drop(Item item) = 0;

  std::atomic<LONG> references_ = 0;
};

/// The pins of a filter.
class CEnumPins final : public DirectShowEnumerator<IEnumPins, CBaseFilter, IPin*> {
 public:
  /// Stores a new enumerator at the first pin.
  static HRESULT Create(CBaseFilter* filter, IEnumPins** enumerator);

  HRESULT STDMETHODCALLTYPE Clone(IEnumPins** clone) override;

 private:
  using DirectShowEnumerator::DirectShowEnumerator;

  HRESULT get(int position, IPin** pin) override;
  LONG sourceVersion() const override;
  void drop(IPin* pin) override { pin->Release(); }
};

/// The media types that a pin proposes; each comes in COM task memory.
class CEnumMediaTypes final
    : public DirectShowEnumerator<IEnumMediaTypes, CBasePin, AM_MEDIA_TYPE*> {
 public:
  /// Stores a new enumerator at the first type.
  static HRESULT Create(CBasePin* pin, IEnumMediaTypes** enumerator);

  HRESULT STDMETHODCALLTYPE Clone(IEnumMediaTypes** clone) override;

 private:
  using DirectShowEnumerator::DirectShowEnumerator;

  HRESULT get(int position, AM_MEDIA_TYPE** type) override;
  LONG sourceVersion() const override;
  void drop(AM_MEDIA_TYPE* type) override { DeleteMediaType(type); }
};
