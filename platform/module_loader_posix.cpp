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

std::filesystem::path findModule(const char* module) {
  const auto folder = programFile().parent_path();
  for (const auto& candidate : {folder / module, folder.parent_path() / "lib/txsub" / module}) {
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
