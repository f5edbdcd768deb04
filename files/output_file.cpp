// SPDX-License-Identifier: MIT
#include "files/output_file.h"

#include <cerrno>
#include <cstring>
#include <optional>
#include <system_error>
#include <utility>

#include "platform/process.h"
#include "platform/terminal.h"

namespace korr::txsub {

namespace fs = std::filesystem;

namespace {

// As long as the longest name, or shorter: file systems take names of 255 bytes, so the end of a
// long one gives way, whole characters of it.
fs::path temporaryBeside(const fs::path& target) {
  constexpr std::size_t kLongestName = 255;
  const std::string suffix = ".part" + std::to_string(platform::processId());
  std::string name = utf8FromPath(target.filename());
  if (name.size() + suffix.size() > kLongestName) {
    std::size_t size = kLongestName - suffix.size();
    while (size > 0 && (static_cast<unsigned char>(name[size]) & 0xC0) == 0x80) --size;
    name.resize(size);
  }
  return target.parent_path() / pathFromUtf8(name + suffix);
}

/// The file that a link names, also where there is none yet; nothing when links form a ring.
std::optional<fs::path> behindLinks(fs::path path) {
  constexpr int kMostLinks = 40;
  std::error_code error;
  for (int i = 0; i < kMostLinks; ++i) {
    if (!fs::is_symlink(path, error)) return path;
    path = path.parent_path() / fs::read_symlink(path, error);
  }
  return {};
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : name_('\'' + path + '\'') {
  if (path == "-") {
    name_ = "standard output";
    file_ = stdout;
    isStandardOutput_ = true;
    return;
  }
  std::error_code ignored;
  const fs::path target = pathFromUtf8(path);
  const auto status = fs::status(target, ignored);
  if (fs::is_directory(status)) {
    throw OutputError("cannot write " + name_ + ": it is a directory");
  }
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    file_ = platform::openFile(target, "wb");
    if (!file_) fail();
    return;
  }
  // A link stays a link: the file that it names is replaced.
  const auto file = behindLinks(target);
  if (!file) throw OutputError("cannot write " + name_ + ": it is a ring of links");
  final_ = *file;
  temporary_ = temporaryBeside(final_);
  file_ = platform::openFile(temporary_, "wb");
  if (!file_) fail();
}

OutputFile::~OutputFile() {
  if (!file_ || isStandardOutput_) return;
  std::fclose(file_);
  std::error_code ignored;
  if (!temporary_.empty()) fs::remove(temporary_, ignored);
}

void OutputFile::write(std::string_view bytes) {
  if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size()) fail();
}

void OutputFile::flush() {
  if (std::fflush(file_) != 0) fail();
}

void OutputFile::commit() {
  flush();
  if (isStandardOutput_) return;
  if (std::fclose(std::exchange(file_, nullptr)) != 0) fail();
  if (final_.empty()) return;
  std::error_code error;
  fs::rename(temporary_, final_, error);
  if (!error) return;
  std::error_code ignored;
  fs::remove(temporary_, ignored);
  throw OutputError("cannot write " + name_ + ": " + error.message());
}

void OutputFile::fail() const {
  throw OutputError("cannot write " + name_ + ": " + std::strerror(errno));
}

}  // namespace korr::txsub
