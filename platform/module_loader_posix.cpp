#include <dlfcn.h>

#include <array>
#include <filesystem>
#include <string>

#include "platform/module_loader.h"
#include "util/exception.h"

namespace korr::platform {
namespace {

std::filesystem::path findModule(const char* module) {
  const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  for (const auto& candidate : {folder / module, folder.parent_path() / "lib/txsub" / module}) {
    if (std::filesystem::exists(candidate)) return candidate;
  }
  throw util::TessaryException("the module " + std::string(module) + " is not installed beside " +
                               folder.string());
}

}  // namespace

void* moduleFunction(const char* module, const char* function) {
  void* const handle = dlopen(findModule(module).c_str(), RTLD_NOW | RTLD_LOCAL);
  void* const address = handle ? dlsym(handle, function) : nullptr;
  if (!address) throw util::TessaryException(dlerror());
  return address;
}

}  // namespace korr::platform
