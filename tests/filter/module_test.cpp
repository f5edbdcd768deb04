// SPDX-License-Identifier: MIT

// The module as the system sees it: registered, listed, created, unloaded.
#include <dshow.h>
#include <gtest/gtest.h>
#include <process.h>
#include <wrl/client.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "sdk/include/TXSubtitleConverter.h"

namespace {

using Microsoft::WRL::ComPtr;
using namespace korr::streaming::direct_show::filters::mqs_subtitle_converter;  // NOLINT

constexpr WCHAR kModule[] = L"TXSubtitleConverter.ax";

std::filesystem::path modulePath() {
  return std::filesystem::path(_pgmptr).parent_path() / kModule;
}

/// Runs regsvr32 and returns its exit code.
std::intptr_t regsvr32(const WCHAR* options) {
  const std::wstring path = L'"' + modulePath().wstring() + L'"';
  return _wspawnlp(_P_WAIT, L"regsvr32", L"regsvr32", options, path.c_str(), nullptr);
}

template <class Interface>
ComPtr<Interface> create(const CLSID& clsid, HRESULT expected = S_OK) {
  ComPtr<Interface> object;
  EXPECT_EQ(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object)),
            expected);
  return object;
}

class RegisteredModule : public testing::Test {
 protected:
  RegisteredModule() {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    EXPECT_EQ(regsvr32(L"/s"), 0);
  }
  ~RegisteredModule() override {
    EXPECT_EQ(regsvr32(L"/s /u"), 0);
    create<IBaseFilter>(CLSID_TXSubtitleConverter, REGDB_E_CLASSNOTREG);
    CoUninitialize();
  }
};

TEST_F(RegisteredModule, CreatesTheFilterWithItsConfiguration) {
  const auto filter = create<IBaseFilter>(CLSID_TXSubtitleConverter);
  ASSERT_TRUE(filter);
  CLSID clsid = {};
  EXPECT_EQ(filter->GetClassID(&clsid), S_OK);
  EXPECT_EQ(clsid, CLSID_TXSubtitleConverter);
  ComPtr<ISubtitleConverterConfig> config;
  ASSERT_EQ(filter.As(&config), S_OK);
  EXPECT_EQ(config->SetConfiguration(4, 0x888, 2000, "eng", 0, 0, 0), S_OK);
  EXPECT_EQ(config->SetConfiguration(4, 0x888, 2000, nullptr, 0, 0, 0), S_OK);
  EXPECT_EQ(config->SetOpaqueValue(~0ull), S_OK);
  EXPECT_EQ(config->SetLogger(nullptr), S_OK);
  ComPtr<IUnknown> fromConfig;
  ComPtr<IUnknown> fromFilter;
  config.As(&fromConfig);
  filter.As(&fromFilter);
  EXPECT_EQ(fromConfig.Get(), fromFilter.Get());
}

TEST_F(RegisteredModule, IsListedAmongTheFiltersByName) {
  const auto devices = create<ICreateDevEnum>(CLSID_SystemDeviceEnum);
  ASSERT_TRUE(devices);
  ComPtr<IEnumMoniker> monikers;
  ASSERT_EQ(devices->CreateClassEnumerator(CLSID_LegacyAmFilterCategory, &monikers, 0), S_OK);
  bool found = false;
  ComPtr<IMoniker> moniker;
  while (monikers->Next(1, moniker.ReleaseAndGetAddressOf(), nullptr) == S_OK) {
    ComPtr<IPropertyBag> properties;
    VARIANT name;
    VariantInit(&name);
    if (FAILED(moniker->BindToStorage(nullptr, nullptr, IID_PPV_ARGS(&properties)))) continue;
    if (SUCCEEDED(properties->Read(L"FriendlyName", &name, nullptr))) {
      found = found || std::wstring(name.bstrVal) == L"Tessary Subtitle Converter";
    }
    VariantClear(&name);
  }
  EXPECT_TRUE(found);
}

TEST_F(RegisteredModule, IsNeverPickedByMediaType) {
  const auto mapper = create<IFilterMapper2>(CLSID_FilterMapper2);
  ASSERT_TRUE(mapper);
  const GUID input[] = {MEDIATYPE_TimedText, MEDIASUBTYPE_TeletextPes};
  ComPtr<IEnumMoniker> matching;
  ASSERT_EQ(
      mapper->EnumMatchingFilters(&matching, 0, TRUE, MERIT_DO_NOT_USE + 1, TRUE, 1, input, nullptr,
                                  nullptr, FALSE, FALSE, 0, nullptr, nullptr, nullptr),
      S_OK);
  ComPtr<IMoniker> moniker;
  EXPECT_EQ(matching->Next(1, &moniker, nullptr), S_FALSE);
}

TEST_F(RegisteredModule, CanBeUnloadedAfterUse) {
  const HMODULE module = LoadLibraryW(modulePath().c_str());
  ASSERT_NE(module, nullptr);
  const auto canUnload = reinterpret_cast<HRESULT(STDMETHODCALLTYPE*)()>(
      reinterpret_cast<void*>(GetProcAddress(module, "DllCanUnloadNow")));
  {
    const auto filter = create<IBaseFilter>(CLSID_TXSubtitleConverter);
    EXPECT_EQ(canUnload(), S_FALSE);
  }
  EXPECT_EQ(canUnload(), S_OK);
  FreeLibrary(module);
  CoFreeUnusedLibrariesEx(0, 0);
  EXPECT_EQ(GetModuleHandleW(kModule), nullptr) << "and nothing crashes once it is gone";
}

TEST(Module, CarriesItsVersion) {
  const auto path = modulePath();
  const DWORD size = GetFileVersionInfoSizeW(path.c_str(), nullptr);
  ASSERT_NE(size, 0u);
  std::vector<char> info(size);
  ASSERT_TRUE(GetFileVersionInfoW(path.c_str(), 0, size, info.data()));
  void* name = nullptr;
  UINT length = 0;
  ASSERT_TRUE(
      VerQueryValueW(info.data(), L"\\StringFileInfo\\040904B0\\ProductName", &name, &length));
  EXPECT_EQ(std::wstring(static_cast<const WCHAR*>(name)), L"Tessary Subtitle Converter");
}

/// The names of the modules that a module imports from.
std::vector<std::string> importsOf(const std::filesystem::path& path) {
  const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES);
  const auto* base = reinterpret_cast<const char*>(module);
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
  const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
  const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
  std::vector<std::string> names;
  const auto* entry =
      reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
  for (; entry->Name != 0; ++entry) names.emplace_back(base + entry->Name);
  FreeLibrary(module);
  return names;
}

TEST(Module, NeedsNothingButTheSystem) {
  const std::vector<std::string> kSystem = {"ADVAPI32.dll", "gdiplus.dll", "KERNEL32.dll",
                                            "msvcrt.dll",   "ole32.dll",   "OLEAUT32.dll",
                                            "QUARTZ.dll",   "USER32.dll"};
  const auto imports = importsOf(modulePath());
  EXPECT_FALSE(imports.empty());
  for (const auto& name : imports) {
    EXPECT_NE(std::ranges::find(kSystem, name), kSystem.end()) << name;
  }
}

}  // namespace
