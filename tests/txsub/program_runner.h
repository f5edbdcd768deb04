// Runs the program as a user would.
#pragma once

#include <string>
#include <vector>

namespace korr::txsub {

struct ProgramResult {
  int exitCode = -1;  ///< -1 when a signal ended it
  std::string output;
  std::string errors;
};

struct ProgramCall {
  std::string program = TXSUB_PROGRAM;
  std::vector<std::string> arguments;
  std::string input;       ///< for its standard input
  std::string outputPath;  ///< instead of a pipe, "/dev/full" say
};

/// Waits for the end of the program; fails the test when it takes longer than half a minute.
ProgramResult runProgram(const ProgramCall& call);

/// A directory of its own for one test, removed with the object.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  std::string file(const std::string& name) const { return path_ + '/' + name; }
  std::string write(const std::string& name, const std::string& content) const;
  std::string read(const std::string& name) const;

  /// The names of all files, in order.
  std::vector<std::string> names() const;

 private:
  std::string path_;
};

}  // namespace korr::txsub
