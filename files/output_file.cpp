#include "files/output_file.h"

#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#include "platform/terminal.h"

namespace korr::txsub {

namespace fs = std::filesystem;

OutputFile::OutputFile(const std::string& path) : name_('\'' + path + '\'') {
  if (path == "-") {
    name_ = "standard output";
    file_ = stdout;
    isStandardOutput_ = true;
    return;
  }
  std::error_code ignored;
  fs::path target = pathFromUtf8(path);
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
  if (fs::is_symlink(target, ignored)) target = fs::weakly_canonical(target, ignored);
  final_ = target;
  temporary_ = target;
  temporary_ += ".part" + std::to_string(platform::processId());
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
