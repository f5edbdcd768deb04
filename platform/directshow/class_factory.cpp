// SPDX-License-Identifier: MIT
#include "platform/directshow/class_factory.h"

#include <array>
#include <string>

namespace {

std::atomic<LONG> serverLocks = 0;

/// Makes objects of one class.
class ClassFactory final : public IClassFactory {
 public:
  explicit ClassFactory(const CFactoryTemplate& served) : template_(served) { ++serverLocks; }
  ClassFactory(const ClassFactory&) = delete;
  ClassFactory& operator=(const ClassFactory&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    if (iid == IID_IUnknown || iid == IID_IClassFactory) return GetInterface(this, object);
    *object = nullptr;
    return E_NOINTERFACE;
  }

  ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references_); }

  ULONG STDMETHODCALLTYPE Release() override {
    const LONG left = --references_;
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
  }

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    // Only its own IUnknown lets the outer object control an aggregated one.
    if (outer && iid != IID_IUnknown) return E_NOINTERFACE;
    HRESULT result = S_OK;
    CUnknown* created = template_.m_lpfnNew(outer, &result);
    if (!created) return FAILED(result) ? result : E_OUTOFMEMORY;
    created->NonDelegatingAddRef();
    if (SUCCEEDED(result)) result = created->NonDelegatingQueryInterface(iid, object);
    created->NonDelegatingRelease();
    return result;
  }

  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
    serverLocks += lock ? 1 : -1;
    return S_OK;
  }

 private:
  virtual ~ClassFactory() { --serverLocks; }

  const CFactoryTemplate& template_;
  std::atomic<LONG> references_ = 0;
};

constexpr std::size_t kGuidCharacters = 39;  // with braces and the terminating zero

std::wstring classKey(const CLSID& clsid) {
  std::array<WCHAR, kGuidCharacters> text{};
  StringFromGUID2(clsid, text.data(), kGuidCharacters);
  return std::wstring(L"CLSID\\") + text.data();
}

/// The file of the module that this code is part of; empty when it cannot be had.
std::wstring modulePath() {
  HMODULE module = nullptr;
  GetModuleHandleExW(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      reinterpret_cast<LPCWSTR>(&serverLocks), &module);
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
    path.resize(path.size() * 2);
  }
}

HRESULT setValue(const std::wstring& key, const WCHAR* name, const std::wstring& value) {
  HKEY handle = nullptr;
  LSTATUS status = RegCreateKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, nullptr,
                                   REG_OPTION_NON_VOLATILE, KEY_WRITE, nullptr, &handle, nullptr);
  if (status != ERROR_SUCCESS) return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
  status = RegSetValueExW(handle, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                          static_cast<DWORD>((value.size() + 1) * sizeof(WCHAR)));
  RegCloseKey(handle);
  return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

HRESULT addClass(const CFactoryTemplate& served) {
  const std::wstring path = modulePath();
  if (path.empty()) return HRESULT_FROM_WIN32(GetLastError());
  const std::wstring key = classKey(*served.m_ClsID);
  HRESULT result = setValue(key, nullptr, served.m_Name);
  if (FAILED(result)) return result;
  result = setValue(key + L"\\InprocServer32", nullptr, path);
  if (FAILED(result)) return result;
  return setValue(key + L"\\InprocServer32", L"ThreadingModel", L"Both");
}

// A class that was not registered counts as removed.
HRESULT removeClass(const CFactoryTemplate& served) {
  const LSTATUS status = RegDeleteTreeW(HKEY_CLASSES_ROOT, classKey(*served.m_ClsID).c_str());
  if (status == ERROR_FILE_NOT_FOUND) return S_OK;
  return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

HRESULT changeFilter(const CFactoryTemplate& served, bool add) {
  if (!served.m_pAMovieSetup_Filter) return S_OK;
  const HRESULT initialised = CoInitialize(nullptr);
  const HRESULT result = registerWithFilterMapper(*served.m_pAMovieSetup_Filter, add);
  if (SUCCEEDED(initialised)) CoUninitialize();
  return result;
}

HRESULT addAll() {
  for (int i = 0; i < g_cTemplates; ++i) {
    HRESULT result = addClass(g_Templates[i]);
    if (SUCCEEDED(result)) result = changeFilter(g_Templates[i], true);
    if (FAILED(result)) return result;
  }
  return S_OK;
}

// Goes on after a failure, to leave as little behind as possible.
HRESULT removeAll() {
  HRESULT failure = S_OK;
  for (int i = 0; i < g_cTemplates; ++i) {
    for (const HRESULT result :
         {changeFilter(g_Templates[i], false), removeClass(g_Templates[i])}) {
      if (FAILED(result)) failure = result;
    }
  }
  return failure;
}

}  // namespace

STDAPI AMovieDllRegisterServer2(BOOL add) {
  return withoutThrowing([add] {
    if (!add) return removeAll();
    const HRESULT result = addAll();
    if (FAILED(result)) removeAll();
    return result;
  });
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
  if (!object) return E_POINTER;
  *object = nullptr;
  for (int i = 0; i < g_cTemplates; ++i) {
    if (*g_Templates[i].m_ClsID != clsid) continue;
    auto* factory = new (std::nothrow) ClassFactory(g_Templates[i]);
    if (!factory) return E_OUTOFMEMORY;
    factory->AddRef();
    const HRESULT result = factory->QueryInterface(iid, object);
    factory->Release();
    return result;
  }
  return CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() {
  return serverLocks == 0 && CBaseObject::ObjectsActive() == 0 ? S_OK : S_FALSE;
}
