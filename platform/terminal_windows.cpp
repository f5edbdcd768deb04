// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <io.h>
#include <windows.h>
// After windows.h, which it needs.
#include <shellapi.h>

#include <atomic>

#include "platform/terminal.h"

namespace korr::platform {

namespace {

std::atomic<bool> interrupted = false;
HANDLE mainThread = nullptr;

BOOL WINAPI onControl(DWORD event) {
  const bool isSecond = interrupted.exchange(true);
  ::CancelSynchronousIo(mainThread);  // it may wait for a pipe in which nothing comes
  if (event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT) return isSecond ? FALSE : TRUE;
  // The window closes, or the user goes: the system ends the program as soon as this returns, or
  // after five seconds, in which it can complete its output and end by itself.
  for (;;) {
    ::Sleep(50);
    ::CancelSynchronousIo(mainThread);  // it may have begun to wait just now
  }
}

std::string toUtf8(const wchar_t* text) {
  const int size = ::WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  if (size <= 1) return {};
  std::string utf8(static_cast<std::size_t>(size), '\0');
  ::WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), size, nullptr, nullptr);
  utf8.pop_back();
  return utf8;
}

}  // namespace

std::vector<std::string> utf8Arguments(int argc, char** argv) {
  int count = 0;
  wchar_t** wide = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  if (!wide) return {argv, argv + argc};
  std::vector<std::string> arguments;
  for (int i = 0; i < count; ++i) arguments.push_back(toUtf8(wide[i]));
  ::LocalFree(wide);
  return arguments;
}

bool isErrorTerminal() {
  return ::_isatty(_fileno(stderr)) != 0;
}

unsigned errorTerminalWidth() {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!::GetConsoleScreenBufferInfo(::GetStdHandle(STD_ERROR_HANDLE), &info)) return 80;
  return static_cast<unsigned>(info.srWindow.Right - info.srWindow.Left + 1);
}

void prepareStandardStreams() {
  ::_setmode(_fileno(stdin), _O_BINARY);
  ::_setmode(_fileno(stdout), _O_BINARY);
  ::SetConsoleOutputCP(CP_UTF8);
  const HANDLE errors = ::GetStdHandle(STD_ERROR_HANDLE);
  DWORD mode = 0;
  if (::GetConsoleMode(errors, &mode)) {
    ::SetConsoleMode(errors, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
  }
}

void catchInterrupts() {
  ::DuplicateHandle(::GetCurrentProcess(), ::GetCurrentThread(), ::GetCurrentProcess(), &mainThread,
                    0, FALSE, DUPLICATE_SAME_ACCESS);
  ::SetConsoleCtrlHandler(onControl, TRUE);
}

bool isInterrupted() {
  return interrupted;
}

std::FILE* openFile(const std::filesystem::path& path, const char* mode) {
  const std::wstring wideMode(mode, mode + std::char_traits<char>::length(mode));
  return ::_wfopen(path.c_str(), wideMode.c_str());
}

}  // namespace korr::platform
