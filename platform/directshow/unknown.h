// SPDX-License-Identifier: MIT

// IUnknown for objects that may be aggregated.
#pragma once

#include <dshow.h>

#include <atomic>
#include <new>

/// An object's own IUnknown, beside the one of its interfaces, which may be an outer object's. Laid
/// out as IUnknown is, so that a pointer to it can be handed out as one.
class INonDelegatingUnknown {
 public:
  virtual HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) = 0;
  virtual ULONG STDMETHODCALLTYPE NonDelegatingAddRef() = 0;
  virtual ULONG STDMETHODCALLTYPE NonDelegatingRelease() = 0;

 protected:
  ~INonDelegatingUnknown() = default;
};

/// Counts the objects that keep the module loaded.
class CBaseObject {
 public:
  /// `name` is for debuggers only and is not kept.
  explicit CBaseObject(const TCHAR* name);
  CBaseObject(const CBaseObject&) = delete;
  CBaseObject& operator=(const CBaseObject&) = delete;

  static LONG ObjectsActive() { return objects_; }

 protected:
  ~CBaseObject() { --objects_; }

 private:
  static inline std::atomic<LONG> objects_ = 0;
};

/// Identity and reference count of one COM object, which is born with a count of 0. Derived
/// classes answer their interfaces in NonDelegatingQueryInterface and delegate IUnknown with
/// DECLARE_IUNKNOWN.
class CUnknown : public INonDelegatingUnknown, public CBaseObject {
 public:
  /// `outer`: the aggregating object, or null. It is not referenced.
  CUnknown(const TCHAR* name, IUnknown* outer);
  virtual ~CUnknown() = default;

  /// The object that speaks for this one: the outer object, or this one itself.
  IUnknown* GetOwner() const { return owner_; }

  HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** object) override;
  ULONG STDMETHODCALLTYPE NonDelegatingAddRef() override;
  ULONG STDMETHODCALLTYPE NonDelegatingRelease() override;

 protected:
  std::atomic<LONG> m_cRef = 0;

 private:
  IUnknown* owner_;
};

/// Stores `face` in `object` with a reference of its own.
HRESULT GetInterface(IUnknown* face, void** object);

/// What `call` returns, E_OUTOFMEMORY when it runs out of memory: nothing is thrown at a COM
/// caller.
template <class Call>
HRESULT withoutThrowing(Call call) {
  try {
    return call();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}

// NOLINTNEXTLINE(cppcoreguidelines-macro-usage): the name that derived classes use on any base set
#define DECLARE_IUNKNOWN                                                         \
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override { \
    return GetOwner()->QueryInterface(iid, object);                              \
  }                                                                              \
  ULONG STDMETHODCALLTYPE AddRef() override {                                    \
    return GetOwner()->AddRef();                                                 \
  }                                                                              \
  ULONG STDMETHODCALLTYPE Release() override {                                   \
    return GetOwner()->Release();                                                \
  }
