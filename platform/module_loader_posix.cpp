// SPDX-License-Identifier: MIT
#include <dlfcn.h>

#include <array>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/build_tag.h"
#include "platform/module_loader.h"
#include "platform/process.h"
#include "util/exception.h"

namespace korr::platform {
namespace {

// Of the shared library that this code is in, else of the program.
std::filesystem::path ownFolder() {
  Dl_info info{};
  const bool isKnown = dladdr(reinterpret_cast<void*>(&ownFolder), &info) != 0 && info.dli_fname;
  const std::filesystem::path file = isKnown ? info.dli_fname : "";
  std::error_code error;
  if (file.filename().string().find(".so") != std::string::npos) {
    return std::filesystem::canonical(file, error).parent_path();
  }
  return programFile().parent_path();
}

std::filesystem::path findModule(const char* module) {
  const auto folder = ownFolder();
  for (const auto& candidate :
       {folder / module, folder.parent_path() / "lib/txsub" / module, folder / "txsub" / module,
        folder.parent_path() / "txsub" / module}) {
    if (std::filesystem::exists(candidate)) return candidate;
  }
  throw util::TessaryException("the module " + std::string(module) + " is not installed beside " +
                               folder.string());
}

void checkBuild(void* handle, const std::filesystem::path& path) {
  const auto* const tag = static_cast<const char*>(dlsym(handle, kBuildTagName));
  if (tag && std::string_view(tag) == TESSARY_BUILD_TAG) return;
  throw util::TessaryException(
      "the module " + path.string() + " is of another build (" + (tag ? tag : "unknown") +
      ") than this program (" TESSARY_BUILD_TAG "); install both together");
}

}  // namespace

void* moduleFunction(const char* module, const char* function) {
  const auto path = findModule(module);
  void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle) checkBuild(handle, path);
  void* const address = handle ? dlsym(handle, function) : nullptr;
  if (!address) throw util::TessaryException(dlerror());
  return address;
}

}  // namespace korr::platform
