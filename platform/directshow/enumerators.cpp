// SPDX-License-Identifier: MIT
#include "platform/directshow/enumerators.h"

#include <new>

#include "platform/directshow/base_filter.h"
#include "platform/directshow/base_pin.h"

template <class Interface, class Source, class Item>
DirectShowEnumerator<Interface, Source, Item>::DirectShowEnumerator(Source* source, LONG version,
                                                                    int position)
    : source_(source), version_(version), position_(position) {
  source_->AddRef();
}

template <class Interface, class Source, class Item>
DirectShowEnumerator<Interface, Source, Item>::~DirectShowEnumerator() {
  source_->Release();
}

template <class Interface, class Source, class Item>
HRESULT DirectShowEnumerator<Interface, Source, Item>::QueryInterface(REFIID iid, void** object) {
  if (!object) return E_POINTER;
  if (iid == IID_IUnknown || iid == __uuidof(Interface)) {
    return GetInterface(static_cast<Interface*>(this), object);
  }
  *object = nullptr;
  return E_NOINTERFACE;
}

template <class Interface, class Source, class Item>
ULONG DirectShowEnumerator<Interface, Source, Item>::Release() {
  const LONG left = --references_;
  if (left == 0) delete this;
  return static_cast<ULONG>(left);
}

template <class Interface, class Source, class Item>
HRESULT DirectShowEnumerator<Interface, Source, Item>::Next(ULONG count, Item* items,
                                                            ULONG* fetched) {
  if (fetched) *fetched = 0;
  if (!items) return E_POINTER;
  if (!fetched && count > 1) return E_INVALIDARG;
  if (isOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
  ULONG done = 0;
  HRESULT result = S_OK;
  for (; done < count; ++done) {
    result = get(position_, &items[done]);
    if (result != S_OK) break;
    ++position_;
  }
  if (FAILED(result)) {
    for (ULONG i = 0; i < done; ++i) drop(items[i]);
    position_ -= static_cast<int>(done);
    return result;
  }
  if (fetched) *fetched = done;
  return done == count ? S_OK : S_FALSE;
}

template <class Interface, class Source, class Item>
HRESULT DirectShowEnumerator<Interface, Source, Item>::Skip(ULONG count) {
  if (isOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
  for (; count != 0; --count) {
    Item passed = nullptr;
    const HRESULT result = get(position_, &passed);
    if (result != S_OK) return result;
    drop(passed);
    ++position_;
  }
  return S_OK;
}

template <class Interface, class Source, class Item>
HRESULT DirectShowEnumerator<Interface, Source, Item>::Reset() {
  version_ = sourceVersion();
  position_ = 0;
  return S_OK;
}

HRESULT CEnumPins::Create(CBaseFilter* filter, IEnumPins** enumerator) {
  auto* created = new (std::nothrow) CEnumPins(filter, filter->GetPinVersion(), 0);
  if (!created) return E_OUTOFMEMORY;
  return GetInterface(created, reinterpret_cast<void**>(enumerator));
}

HRESULT CEnumPins::Clone(IEnumPins** clone) {
  if (!clone) return E_POINTER;
  *clone = nullptr;
  if (isOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
  auto* created = new (std::nothrow) CEnumPins(source_, version_, position_);
  if (!created) return E_OUTOFMEMORY;
  return GetInterface(created, reinterpret_cast<void**>(clone));
}

HRESULT CEnumPins::get(int position, IPin** pin) {
  CBasePin* found = position < source_->GetPinCount() ? source_->GetPin(position) : nullptr;
  *pin = found;
  if (!found) return S_FALSE;
  found->AddRef();
  return S_OK;
}

LONG CEnumPins::sourceVersion() const {
  return source_->GetPinVersion();
}

HRESULT CEnumMediaTypes::Create(CBasePin* pin, IEnumMediaTypes** enumerator) {
  auto* created = new (std::nothrow) CEnumMediaTypes(pin, pin->GetMediaTypeVersion(), 0);
  if (!created) return E_OUTOFMEMORY;
  return GetInterface(created, reinterpret_cast<void**>(enumerator));
}

HRESULT CEnumMediaTypes::Clone(IEnumMediaTypes** clone) {
  if (!clone) return E_POINTER;
  *clone = nullptr;
  if (isOutOfSync()) return VFW_E_ENUM_OUT_OF_SYNC;
  auto* created = new (std::nothrow) CEnumMediaTypes(source_, version_, position_);
  if (!created) return E_OUTOFMEMORY;
  return GetInterface(created, reinterpret_cast<void**>(clone));
}

// A pin that answers a position with anything but S_OK has no more types to propose.
HRESULT CEnumMediaTypes::get(int position, AM_MEDIA_TYPE** type) {
  *type = nullptr;
  CMediaType proposed;
  if (source_->GetMediaType(position, &proposed) != S_OK) return S_FALSE;
  *type = CreateMediaType(&proposed);
  return *type ? S_OK : E_OUTOFMEMORY;
}

LONG CEnumMediaTypes::sourceVersion() const {
  return source_->GetMediaTypeVersion();
}
