// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string_view>

#include "platform/interrupt_posix.h"
#include "platform/terminal.h"

namespace korr::platform {

namespace {

volatile std::sig_atomic_t interrupted = 0;
int wakePipe[2] = {-1, -1};

void onInterrupt(int) {
  interrupted = 1;
  const int error = errno;
  [[maybe_unused]] const auto written = ::write(wakePipe[1], "", 1);
  errno = error;
}

}  // namespace

std::vector<std::string> utf8Arguments(int argc, char** argv) {
  return {argv, argv + argc};
}

bool isErrorTerminal() {
  const char* terminal = std::getenv("TERM");
  return ::isatty(STDERR_FILENO) != 0 && !(terminal && std::string_view(terminal) == "dumb");
}

unsigned errorTerminalWidth() {
  winsize size{};
  if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
  return size.ws_col;
}

void prepareStandardStreams() {
  std::signal(SIGPIPE, SIG_IGN);
}

void catchInterrupts() {
  if (::pipe2(wakePipe, O_CLOEXEC | O_NONBLOCK) != 0) return;
  struct sigaction action {};
  action.sa_handler = onInterrupt;
  // Reset: the second signal ends the program. No restart: a read that waits for a pipe returns.
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before {};
    ::sigaction(signal, nullptr, &before);
    if (before.sa_handler != SIG_IGN) ::sigaction(signal, &action, nullptr);
  }
}

int interruptDescriptor() {
  return wakePipe[0];
}

bool isInterrupted() {
  return interrupted != 0;
}

std::FILE* openFile(const std::filesystem::path& path, const char* mode) {
  return std::fopen(path.c_str(), mode);
}

}  // namespace korr::platform
