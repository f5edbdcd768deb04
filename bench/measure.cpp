// SPDX-License-Identifier: MIT

// Runs a command with its output thrown away and prints its seconds and its peak memory in MB:
// measure COMMAND [ARGUMENT]...
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: measure COMMAND [ARGUMENT]...\n");
    return 2;
  }
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) {
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    execvp(argv[1], argv + 1);
    std::perror(argv[1]);
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (child < 0 || wait4(child, &status, 0, &usage) < 0) {
    std::perror("measure");
    return 1;
  }
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
  std::printf("%.3f %.1f\n", seconds.count(), static_cast<double>(usage.ru_maxrss) / 1024);
  return status == 0 ? 0 : 1;
}
