#include "tests/support/temporary_directory.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

namespace korr::test_support {

namespace {

namespace fs = std::filesystem;

fs::path pathOf(const std::string& utf8) {
  return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string utf8Of(const fs::path& path) {
  const std::u8string utf8 = path.u8string();
  return {utf8.begin(), utf8.end()};
}

}  // namespace

TemporaryDirectory::TemporaryDirectory() {
  std::random_device random;
  fs::path path;
  do {
    path = fs::temp_directory_path() / ("txsub-test-" + std::to_string(random()));
  } while (!fs::create_directory(path));
  path_ = utf8Of(path);
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  fs::remove_all(pathOf(path_), ignored);
}

std::string TemporaryDirectory::write(const std::string& name, const std::string& content) const {
  std::ofstream(pathOf(file(name)), std::ios::binary) << content;
  return file(name);
}

std::string TemporaryDirectory::read(const std::string& name) const {
  std::ifstream stream(pathOf(file(name)), std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<std::string> TemporaryDirectory::names() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(pathOf(path_))) {
    names.push_back(utf8Of(entry.path().filename()));
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace korr::test_support
