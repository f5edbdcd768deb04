// SPDX-License-Identifier: MIT
#include "platform/directshow/media_type.h"

#include <cstring>
#include <new>

CMediaType::CMediaType(const GUID* type) {
  InitMediaType();
  majortype = *type;
}

CMediaType::CMediaType(const AM_MEDIA_TYPE& other) : AM_MEDIA_TYPE() {
  if (FAILED(CopyMediaType(this, &other))) throw std::bad_alloc();
}

CMediaType::CMediaType(const CMediaType& other)
    : CMediaType(static_cast<const AM_MEDIA_TYPE&>(other)) {
}

CMediaType& CMediaType::operator=(const AM_MEDIA_TYPE& other) {
  if (FAILED(Set(other))) throw std::bad_alloc();
  return *this;
}

CMediaType& CMediaType::operator=(const CMediaType& other) {
  return *this = static_cast<const AM_MEDIA_TYPE&>(other);
}

CMediaType::~CMediaType() {
  FreeMediaType(*this);
}

void CMediaType::InitMediaType() {
  static_cast<AM_MEDIA_TYPE&>(*this) = AM_MEDIA_TYPE{};
  lSampleSize = 1;
  bFixedSizeSamples = TRUE;
}

bool CMediaType::operator==(const CMediaType& other) const {
  return majortype == other.majortype && subtype == other.subtype &&
         formattype == other.formattype && cbFormat == other.cbFormat &&
         (cbFormat == 0 || std::memcmp(pbFormat, other.pbFormat, cbFormat) == 0);
}

HRESULT CMediaType::Set(const AM_MEDIA_TYPE& other) {
  if (&other == this) return S_OK;
  AM_MEDIA_TYPE copy;
  const HRESULT result = CopyMediaType(&copy, &other);
  if (FAILED(result)) return result;
  FreeMediaType(*this);
  static_cast<AM_MEDIA_TYPE&>(*this) = copy;
  return S_OK;
}

bool CMediaType::SetFormat(const BYTE* format, ULONG length) {
  BYTE* block = nullptr;
  if (length != 0) {
    block = static_cast<BYTE*>(CoTaskMemAlloc(length));
    if (!block) return false;
    std::memcpy(block, format, length);
  }
  CoTaskMemFree(pbFormat);
  pbFormat = block;
  cbFormat = length;
  return true;
}

bool CMediaType::IsPartiallySpecified() const {
  return majortype == GUID_NULL || formattype == GUID_NULL;
}

bool CMediaType::MatchesPartial(const CMediaType* partial) const {
  if (partial->majortype != GUID_NULL && partial->majortype != majortype) return false;
  if (partial->subtype != GUID_NULL && partial->subtype != subtype) return false;
  if (partial->formattype == GUID_NULL) return true;
  return partial->formattype == formattype && partial->cbFormat == cbFormat &&
         (cbFormat == 0 || std::memcmp(pbFormat, partial->pbFormat, cbFormat) == 0);
}

HRESULT CopyMediaType(AM_MEDIA_TYPE* target, const AM_MEDIA_TYPE* source) {
  *target = *source;
  target->cbFormat = 0;
  target->pbFormat = nullptr;
  target->pUnk = nullptr;
  if (source->cbFormat != 0 && source->pbFormat) {
    target->pbFormat = static_cast<BYTE*>(CoTaskMemAlloc(source->cbFormat));
    if (!target->pbFormat) return E_OUTOFMEMORY;
    target->cbFormat = source->cbFormat;
    std::memcpy(target->pbFormat, source->pbFormat, source->cbFormat);
  }
  if (source->pUnk) {
    target->pUnk = source->pUnk;
    target->pUnk->AddRef();
  }
  return S_OK;
}

void FreeMediaType(AM_MEDIA_TYPE& type) {
  CoTaskMemFree(type.pbFormat);
  type.pbFormat = nullptr;
  type.cbFormat = 0;
  if (type.pUnk) type.pUnk->Release();
  type.pUnk = nullptr;
}

void DeleteMediaType(AM_MEDIA_TYPE* type) {
  if (!type) return;
  FreeMediaType(*type);
  CoTaskMemFree(type);
}

AM_MEDIA_TYPE* CreateMediaType(const AM_MEDIA_TYPE* source) {
  auto* copy = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE)));
  if (!copy) return nullptr;
  if (FAILED(CopyMediaType(copy, source))) {
    CoTaskMemFree(copy);
    return nullptr;
  }
  return copy;
}
