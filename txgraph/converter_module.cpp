// SPDX-License-Identifier: MIT
#include "txgraph/converter_module.h"

#include <array>
#include <cstdio>
#include <filesystem>

#include "files/output_file.h"
#include "filter/com_boundary.h"
#include "sdk/include/TXSubtitleConverter.h"
#include "util/exception.h"

namespace korr::streaming::direct_show::host::inline v2_1 {

using filters::mqs_subtitle_converter::CLSID_TXSubtitleConverter;
using filters::mqs_subtitle_converter::systemMessage;
using Microsoft::WRL::ComPtr;

namespace {

using GetClassObject = HRESULT(STDMETHODCALLTYPE*)(REFCLSID, REFIID, void**);

ComPtr<IBaseFilter> createFromFile(const std::string& path) {
  const HMODULE module = LoadLibraryW(std::filesystem::absolute(txsub::pathFromUtf8(path)).c_str());
  if (!module) {
    throw util::TessaryException("cannot load the module '" + path +
                                 "': " + systemMessage(HRESULT_FROM_WIN32(GetLastError())));
  }
  const auto getClassObject = reinterpret_cast<GetClassObject>(
      reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
  if (!getClassObject) throw util::TessaryException("'" + path + "' is no COM module");
  ComPtr<IClassFactory> factory;
  require(getClassObject(CLSID_TXSubtitleConverter, IID_PPV_ARGS(&factory)),
          "find the converter in the module");
  ComPtr<IBaseFilter> filter;
  require(factory->CreateInstance(nullptr, IID_PPV_ARGS(&filter)), "create the converter");
  return filter;
}

}  // namespace

ComPtr<IBaseFilter> createConverter(const std::string& path) {
  if (!path.empty()) return createFromFile(path);
  ComPtr<IBaseFilter> filter;
  const HRESULT result = CoCreateInstance(CLSID_TXSubtitleConverter, nullptr, CLSCTX_INPROC_SERVER,
                                          IID_PPV_ARGS(&filter));
  if (result == REGDB_E_CLASSNOTREG) {
    throw util::TessaryException(
        "the converter is not registered: run register.cmd, or name the module with --module");
  }
  require(result, "create the converter");
  return filter;
}

void require(HRESULT result, const char* what) {
  if (SUCCEEDED(result)) return;
  std::array<char, 16> code{};
  std::snprintf(code.data(), code.size(), "0x%08lx", static_cast<unsigned long>(result));
  throw util::TessaryException(std::string("cannot ") + what + " (" + code.data() +
                               "): " + systemMessage(result));
}

}  // namespace korr::streaming::direct_show::host::inline v2_1
