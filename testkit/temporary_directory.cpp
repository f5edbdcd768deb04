// SPDX-License-Identifier: MIT
#include "testkit/temporary_directory.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "util/utf8_path.h"

namespace korr::test_support {

namespace {

namespace fs = std::filesystem;

using txsub::pathFromUtf8;
using txsub::utf8FromPath;

}  // namespace

TemporaryDirectory::TemporaryDirectory() {
  std::random_device random;
  fs::path path;
  do {
    path = fs::temp_directory_path() / ("txsub-test-" + std::to_string(random()));
  } while (!fs::create_directory(path));
  path_ = utf8FromPath(path);
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  fs::remove_all(pathFromUtf8(path_), ignored);
}

std::string TemporaryDirectory::write(const std::string& name, const std::string& content) const {
  std::ofstream(pathFromUtf8(file(name)), std::ios::binary) << content;
  return file(name);
}

std::string TemporaryDirectory::read(const std::string& name) const {
  std::ifstream stream(pathFromUtf8(file(name)), std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<std::string> TemporaryDirectory::names() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(pathFromUtf8(path_))) {
    names.push_back(utf8FromPath(entry.path().filename()));
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace korr::test_support
