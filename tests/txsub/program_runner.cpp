// SPDX-License-Identifier: MIT
#include "tests/txsub/program_runner.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace korr::txsub {

namespace {

constexpr unsigned kLongestSeconds = 30;

int openFor(const std::string& path, int flags) {
  const int descriptor = ::open(path.c_str(), flags | O_CLOEXEC, 0600);
  EXPECT_GE(descriptor, 0) << path;
  return descriptor;
}

struct Descriptors {
  int input = -1;
  int output = -1;
  int errors = -1;
};

// Takes over the descriptors.
pid_t start(const ProgramCall& call, const Descriptors& descriptors) {
  std::vector<const char*> arguments{call.program.c_str()};
  for (const auto& argument : call.arguments) arguments.push_back(argument.c_str());
  arguments.push_back(nullptr);

  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(descriptors.input, STDIN_FILENO);
    ::dup2(descriptors.output, STDOUT_FILENO);
    ::dup2(descriptors.errors, STDERR_FILENO);
    ::alarm(kLongestSeconds);
    ::execv(call.program.c_str(), const_cast<char* const*>(arguments.data()));
    ::_exit(127);
  }
  for (const int descriptor : {descriptors.input, descriptors.output, descriptors.errors}) {
    ::close(descriptor);
  }
  return child;
}

// What a program has written into files of `scratch` when it ends.
ProgramResult resultOf(pid_t child, const TemporaryDirectory& scratch) {
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_FALSE(WIFSIGNALED(status)) << "ended by signal " << WTERMSIG(status);
  return {.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1,
          .output = scratch.read("out"),
          .errors = scratch.read("errors")};
}

}  // namespace

ProgramResult runProgram(const ProgramCall& call) {
  // Files instead of pipes: neither side ever waits for the other.
  const TemporaryDirectory scratch;
  const std::string output = call.outputPath.empty() ? scratch.file("out") : call.outputPath;
  return resultOf(start(call, {.input = openFor(scratch.write("in", call.input), O_RDONLY),
                               .output = openFor(output, O_WRONLY | O_CREAT),
                               .errors = openFor(scratch.file("errors"), O_WRONLY | O_CREAT)}),
                  scratch);
}

std::string outputOf(const std::vector<std::string>& arguments, const std::string& input) {
  const auto result = run(arguments, input);
  EXPECT_EQ(result.exitCode, 0) << testing::PrintToString(arguments) << '\n' << result.errors;
  return result.output;
}

std::string errorsOf(int exitCode, const std::vector<std::string>& arguments) {
  const auto result = run(arguments);
  EXPECT_EQ(result.exitCode, exitCode) << testing::PrintToString(arguments) << result.errors;
  EXPECT_EQ(result.output, "") << testing::PrintToString(arguments);
  return result.errors;
}

ProgramResult runAndInterrupt(const ProgramCall& call, int signal) {
  const TemporaryDirectory scratch;
  int pipe[2] = {};
  EXPECT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
  const int watched = ::fcntl(pipe[0], F_DUPFD_CLOEXEC, 0);
  const pid_t child = start(call, {.input = pipe[0],
                                   .output = openFor(scratch.file("out"), O_WRONLY | O_CREAT),
                                   .errors = openFor(scratch.file("errors"), O_WRONLY | O_CREAT)});
  EXPECT_EQ(::write(pipe[1], call.input.data(), call.input.size()),
            static_cast<ssize_t>(call.input.size()));
  for (int left = 1; left > 0;) {
    ::usleep(10'000);
    siginfo_t ended = {};
    ::waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOHANG | WNOWAIT);
    if (ended.si_pid == child || ::ioctl(watched, FIONREAD, &left) != 0) break;
  }
  ::kill(child, signal);
  const ProgramResult result = resultOf(child, scratch);
  ::close(watched);
  ::close(pipe[1]);
  return result;
}

ProgramResult runIntoClosedPipe(const ProgramCall& call) {
  const TemporaryDirectory scratch;
  int pipe[2] = {};
  EXPECT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
  ::close(pipe[0]);
  return resultOf(start(call, {.input = openFor("/dev/null", O_RDONLY),
                               .output = pipe[1],
                               .errors = openFor(scratch.file("errors"), O_WRONLY | O_CREAT)}),
                  scratch);
}

}  // namespace korr::txsub
