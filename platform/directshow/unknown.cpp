// SPDX-License-Identifier: MIT
#include "platform/directshow/unknown.h"

static_assert(sizeof(INonDelegatingUnknown) == sizeof(IUnknown));

namespace {

IUnknown* asUnknown(INonDelegatingUnknown* object) {
  return reinterpret_cast<IUnknown*>(object);
}

}  // namespace

CBaseObject::CBaseObject(const TCHAR*) {
  ++objects_;
}

CUnknown::CUnknown(const TCHAR* name, IUnknown* outer)
    : CBaseObject(name), owner_(outer ? outer : asUnknown(this)) {
}

HRESULT CUnknown::NonDelegatingQueryInterface(REFIID iid, void** object) {
  if (!object) return E_POINTER;
  if (iid == IID_IUnknown) return GetInterface(asUnknown(this), object);
  *object = nullptr;
  return E_NOINTERFACE;
}

ULONG CUnknown::NonDelegatingAddRef() {
  return static_cast<ULONG>(++m_cRef);
}

ULONG CUnknown::NonDelegatingRelease() {
  const LONG left = --m_cRef;
  if (left == 0) {
    ++m_cRef;  // whoever takes and drops a reference during destruction must not destroy again
    delete this;
  }
  return static_cast<ULONG>(left);
}

HRESULT GetInterface(IUnknown* face, void** object) {
  if (!object) return E_POINTER;
  *object = face;
  face->AddRef();
  return S_OK;
}
