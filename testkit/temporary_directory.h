// SPDX-License-Identifier: MIT

// A place for files that a test makes.
#pragma once

#include <string>
#include <vector>

namespace korr::test_support {

/// A directory of its own for one test, removed with the object. All names and paths in UTF-8.
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

}  // namespace korr::test_support
