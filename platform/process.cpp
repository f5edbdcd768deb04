// SPDX-License-Identifier: MIT
#include "platform/process.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

#include <algorithm>
#include <array>

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

}  // namespace korr::platform::inline v2_1
