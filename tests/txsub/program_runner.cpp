#include "tests/txsub/program_runner.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <sstream>

namespace korr::txsub {

namespace {

constexpr unsigned kLongestSeconds = 30;

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

void redirect(int descriptor, const std::string& path, int flags) {
  const int file = ::open(path.c_str(), flags, 0600);
  if (file < 0 || ::dup2(file, descriptor) < 0) ::_exit(126);
}

}  // namespace

ProgramResult runProgram(const ProgramCall& call) {
  // Files instead of pipes: neither side ever waits for the other.
  const TemporaryDirectory scratch;
  const std::string input = scratch.write("in", call.input);
  const std::string output = call.outputPath.empty() ? scratch.file("out") : call.outputPath;

  std::vector<const char*> arguments{call.program.c_str()};
  for (const auto& argument : call.arguments) arguments.push_back(argument.c_str());
  arguments.push_back(nullptr);

  const pid_t child = ::fork();
  if (child == 0) {
    redirect(STDIN_FILENO, input, O_RDONLY);
    redirect(STDOUT_FILENO, output, O_WRONLY | O_CREAT);
    redirect(STDERR_FILENO, scratch.file("errors"), O_WRONLY | O_CREAT);
    ::alarm(kLongestSeconds);
    ::execv(call.program.c_str(), const_cast<char* const*>(arguments.data()));
    ::_exit(127);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_FALSE(WIFSIGNALED(status)) << "ended by signal " << WTERMSIG(status);
  return {.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1,
          .output = call.outputPath.empty() ? contentOf(output) : "",
          .errors = contentOf(scratch.file("errors"))};
}

}  // namespace korr::txsub
