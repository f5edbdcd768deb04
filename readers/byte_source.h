// The bytes of an input, with a look ahead.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/byte_file.h"
#include "readers/media_reader.h"

namespace korr::txsub {

/// A file or standard input whose first bytes can be looked at before they are read.
class FileSource final : public IByteSource {
 public:
  /// `path` in UTF-8, "-" for standard input. Throws util::TessaryException.
  explicit FileSource(const std::string& path);

  /// For messages: the path in quotation marks, or "standard input".
  const std::string& name() const { return name_; }

  std::size_t read(std::uint8_t* buffer, std::size_t size) override;
  std::optional<std::uint64_t> size() const override { return file_->size(); }

  /// The next bytes, which stay to be read: at least `size` unless the input ends before. Waits for
  /// them on a pipe.
  std::span<const std::uint8_t> peek(std::size_t size);

 private:
  std::size_t readFile(std::span<std::uint8_t> buffer);

  std::string name_;
  std::unique_ptr<platform::IByteFile> file_;
  std::vector<std::uint8_t> ahead_;  // read from the file, not from this source
  std::size_t aheadUsed_ = 0;
};

}  // namespace korr::txsub
