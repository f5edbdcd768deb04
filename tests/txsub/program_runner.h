// SPDX-License-Identifier: MIT

// Runs the program as a user would.
#pragma once

#include <csignal>
#include <string>
#include <vector>

#include "testkit/temporary_directory.h"

namespace korr::txsub {

struct ProgramResult {
  int exitCode = -1;  ///< -1 when a signal ended it
  std::string output;
  std::string errors;
};

struct ProgramCall {
  std::string program = TXSUB_PROGRAM;
  std::vector<std::string> arguments{};
  std::string input{};       ///< for its standard input
  std::string outputPath{};  ///< where its standard output goes, if not into the result
};

/// Waits for the end of the program; fails the test when it takes longer than half a minute.
ProgramResult runProgram(const ProgramCall& call);

inline ProgramResult run(const std::vector<std::string>& arguments, const std::string& input = {}) {
  return runProgram({.arguments = arguments, .input = input});
}

/// The output of a run that must succeed.
std::string outputOf(const std::vector<std::string>& arguments, const std::string& input = {});

/// What a run says that must fail, with this exit code and without output.
std::string errorsOf(int exitCode, const std::vector<std::string>& arguments);

inline ProgramResult runShell(const std::string& command) {
  return runProgram({.program = "/bin/sh", .arguments = {"-c", command}});
}

/// Hands the input over through a pipe that stays open, and interrupts the program when it has
/// taken everything.
ProgramResult runAndInterrupt(const ProgramCall& call, int signal = SIGINT);

/// Runs the program with a pipe as its standard output that nobody reads.
ProgramResult runIntoClosedPipe(const ProgramCall& call);

using test_support::TemporaryDirectory;

}  // namespace korr::txsub
