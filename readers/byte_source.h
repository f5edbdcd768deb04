// SPDX-License-Identifier: MIT

// The bytes of an input, with a look ahead.
#pragma once

#include <chrono>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/byte_file.h"
#include "readers/media_reader.h"

namespace korr::txsub {

/// For messages: `path` in quotation marks, or "standard input" for "-".
std::string inputName(const std::string& path);

/// A file or standard input whose first bytes can be looked at before they are read.
class FileSource final : public IByteSource {
 public:
  /// `path` in UTF-8, "-" for standard input. Throws util::TessaryException.
  explicit FileSource(const std::string& path);

  /// The bytes of `file`.
  explicit FileSource(std::unique_ptr<platform::IByteFile> file) : file_(std::move(file)) {}

  std::size_t read(std::uint8_t* buffer, std::size_t size) override;
  std::optional<std::uint64_t> size() const override { return file_->size(); }

  /// The next bytes, as far as `lookAhead` has read them; they stay to be read.
  std::span<const std::uint8_t> ahead() const { return std::span(ahead_).subspan(aheadUsed_); }

  /// Makes `ahead` longer, on a pipe by what comes first; false at the end of the input.
  bool lookAhead();

 private:
  std::size_t readFile(std::span<std::uint8_t> buffer);

  std::unique_ptr<platform::IByteFile> file_;
  std::vector<std::uint8_t> ahead_;  // read from the file, not from this source
  std::size_t aheadUsed_ = 0;
};

/// A file that is still being written: its end is the end when nothing has come for a while.
class GrowingSource final : public IByteSource {
 public:
  GrowingSource(std::unique_ptr<IByteSource> source, std::chrono::milliseconds due)
      : source_(std::move(source)), due_(due) {}

  std::size_t read(std::uint8_t* buffer, std::size_t size) override;
  std::optional<std::uint64_t> size() const override { return {}; }

 private:
  std::unique_ptr<IByteSource> source_;
  std::chrono::milliseconds due_;
};

}  // namespace korr::txsub
