// SPDX-License-Identifier: MIT

// Where the files of a stream are put.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "model/byte_buffer.h"

namespace korr::txsub {

/// Takes files by their names, whose parts are separated by '/'. Errors throw OutputError.
class IStreamStore {
 public:
  virtual ~IStreamStore() = default;

  /// A file that readers see whole, the old one or the new one.
  virtual void put(const std::string& name, std::string_view content) = 0;

  /// What a file holds; nothing when there is none.
  virtual std::optional<std::string> get(const std::string& name) = 0;

  /// Whether a file is still there, as far as that costs nothing to know.
  virtual bool has(const std::string& name) = 0;

  /// A file that need not be there.
  virtual void remove(const std::string& name) = 0;
};

/// A directory of the file system, which is made where it is missing.
class DirectoryStore final : public IStreamStore {
 public:
  /// `path` in UTF-8. Removes what a killed run has left unfinished.
  explicit DirectoryStore(const std::string& path);

  void put(const std::string& name, std::string_view content) override;
  std::optional<std::string> get(const std::string& name) override;
  bool has(const std::string& name) override;
  void remove(const std::string& name) override;

 private:
  std::string path_;
};

}  // namespace korr::txsub
