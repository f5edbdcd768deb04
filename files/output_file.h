// SPDX-License-Identifier: MIT

// A file that is there whole or not at all.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#include "util/exception.h"
#include "util/utf8_path.h"

namespace korr::txsub {

/// The output cannot be written: the end of the job, unlike what a damaged input throws.
class OutputError final : public util::TessaryException {
 public:
  using TessaryException::TessaryException;
};

/// Writes to a temporary file beside the final name and renames it when all is written; what is not
/// committed leaves no trace. Standard output, pipes and devices are written directly. All errors
/// are OutputError with the file's name and the system's reason.
class OutputFile {
 public:
  /// `path` in UTF-8; "-" is standard output.
  explicit OutputFile(const std::string& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  void write(std::string_view bytes);

  /// Lets a reader of standard output or a pipe see what is written so far.
  void flush();

  /// Closes the file under its final name. Nothing may be written afterwards.
  void commit();

 private:
  [[noreturn]] void fail() const;

  std::string name_;             // for messages
  std::filesystem::path final_;  // empty when written directly
  std::filesystem::path temporary_;
  std::FILE* file_ = nullptr;
  bool isStandardOutput_ = false;
};

}  // namespace korr::txsub
