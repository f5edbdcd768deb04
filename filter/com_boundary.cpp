// SPDX-License-Identifier: MIT
#include "filter/com_boundary.h"

#include <dshow.h>

#include <array>

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

namespace {

std::string toUtf8(const WCHAR* text, int length) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, text, length, nullptr, 0, nullptr, nullptr);
  std::string utf8(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, length, utf8.data(), size, nullptr, nullptr);
  return utf8;
}

// COM's event service has codes of the same values, and the system knows its texts only.
bool isOfDirectShow(HRESULT result) {
  return HRESULT_FACILITY(result) == FACILITY_ITF && HRESULT_CODE(result) >= VFW_FIRST_CODE;
}

}  // namespace

std::wstring toUtf16(const std::string& utf8) {
  const int length = static_cast<int>(utf8.size());
  const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
  std::wstring utf16(static_cast<std::size_t>(size), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, utf16.data(), size);
  return utf16;
}

std::string systemMessage(HRESULT result) {
  std::array<WCHAR, 512> text{};
  constexpr DWORD kFlags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  constexpr auto kSize = static_cast<DWORD>(text.size());
  DWORD length = 0;
  if (!isOfDirectShow(result)) {
    length =
        FormatMessageW(kFlags, nullptr, static_cast<DWORD>(result), 0, text.data(), kSize, nullptr);
  }
  if (length == 0) length = AMGetErrorTextW(result, text.data(), kSize);
  if (length == 0) return "unknown error";
  while (length != 0 && (text[length - 1] == L'\n' || text[length - 1] == L'\r')) --length;
  return toUtf8(text.data(), static_cast<int>(length));
}

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
