// SPDX-License-Identifier: MIT
#include "platform/process.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

#include <algorithm>
#include <array>
#include <system_error>

namespace korr::platform::inline v2_1 {
namespace {

bool isGraphic(char character) {
  return character > ' ' && character <= '~';
}

}  // namespace

std::string hostName() {
  std::array<char, 256> name{};
#ifdef _WIN32
  DWORD size = static_cast<DWORD>(name.size());
  const bool known =
      GetComputerNameExA(ComputerNamePhysicalDnsFullyQualified, name.data(), &size) != 0;
#else
  const bool known = gethostname(name.data(), name.size() - 1) == 0;
#endif
  std::string text = known ? name.data() : "";
  if (text.empty() || !std::all_of(text.begin(), text.end(), isGraphic)) return "-";
  return text;
}

unsigned long processId() {
#ifdef _WIN32
  return GetCurrentProcessId();
#else
  return static_cast<unsigned long>(getpid());
#endif
}

std::filesystem::path programFile() {
#ifdef _WIN32
  std::wstring name(32768, L'\0');  // the longest that there is
  const DWORD size = GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()));
  if (size == 0) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(),
                            "GetModuleFileName");
  }
  name.resize(size);
  return name;
#else
  return std::filesystem::read_symlink("/proc/self/exe");
#endif
}

}  // namespace korr::platform::inline v2_1
