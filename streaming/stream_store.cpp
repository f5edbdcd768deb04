// SPDX-License-Identifier: MIT
#include "streaming/stream_store.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <vector>

#include "files/output_file.h"
#include "util/utf8_path.h"

namespace korr::txsub {

namespace {

namespace fs = std::filesystem;

void makeDirectory(const fs::path& path) {
  std::error_code error;
  fs::create_directories(path, error);
  if (!error) return;
  throw OutputError("cannot make the directory '" + utf8FromPath(path) + "': " + error.message());
}

// As OutputFile names what it has not finished.
bool isUnfinished(const fs::path& path) {
  const std::string extension = utf8FromPath(path.extension());
  constexpr std::string_view kPart = ".part";
  return extension.starts_with(kPart) && extension.size() > kPart.size() &&
         extension.find_first_not_of("0123456789", kPart.size()) == extension.npos;
}

}  // namespace

DirectoryStore::DirectoryStore(const std::string& path) : path_(path) {
  const fs::path directory = pathFromUtf8(path);
  makeDirectory(directory);
  std::vector<fs::path> unfinished;
  std::error_code error;
  for (fs::recursive_directory_iterator at(directory, error), end; !error && at != end;
       at.increment(error)) {
    if (isUnfinished(at->path())) unfinished.push_back(at->path());
  }
  for (const auto& file : unfinished) fs::remove(file, error);
}

void DirectoryStore::put(const std::string& name, std::string_view content) {
  const std::string path = path_ + '/' + name;
  const fs::path directory = pathFromUtf8(path).parent_path();
  std::error_code error;
  // The stream's own directory is not made again: where it vanished, something is wrong.
  if (!fs::is_directory(directory, error) && fs::is_directory(pathFromUtf8(path_), error)) {
    makeDirectory(directory);
  }
  OutputFile file(path);
  file.write(content);
  file.commit();
}

std::optional<std::string> DirectoryStore::get(const std::string& name) {
  std::ifstream file(pathFromUtf8(path_ + '/' + name), std::ios::binary);
  if (!file) return {};
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

bool DirectoryStore::has(const std::string& name) {
  std::error_code ignored;
  return fs::exists(pathFromUtf8(path_ + '/' + name), ignored);
}

void DirectoryStore::remove(const std::string& name) {
  std::error_code ignored;
  fs::remove(pathFromUtf8(path_ + '/' + name), ignored);
}

}  // namespace korr::txsub
