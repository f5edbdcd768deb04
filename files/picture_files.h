// SPDX-License-Identifier: MIT

// PNG files of numbered pictures.
#pragma once

#include <filesystem>
#include <string>

#include "files/picture.h"

namespace korr::txsub {

/// Writes pictures to files of one directory. Throws OutputError.
class PictureFiles {
 public:
  /// Files are called `prefix`, a number of at least four digits and ".png".
  PictureFiles(std::filesystem::path directory, std::string prefix)
      : directory_(std::move(directory)), prefix_(std::move(prefix)) {}

  /// The picture's file name in UTF-8; a new picture is written.
  std::string store(const PictureSet::Picture& picture) const;

 private:
  std::filesystem::path directory_;
  std::string prefix_;  // UTF-8
};

}  // namespace korr::txsub
