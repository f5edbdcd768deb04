// SPDX-License-Identifier: MIT
#include "transcription/shapes_store.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

#include "files/output_file.h"
#include "recognition/shapes_file.h"

namespace korr::txsub {

namespace {

// More than 40,000 shapes take; whatever is larger is no file of shapes.
constexpr std::uintmax_t kMostBytes = 256 * 1024 * 1024;

}  // namespace

ShapesStore::ShapesStore(std::string path, log::ILogger& logger) : path_(std::move(path)) {
  std::error_code error;
  if (!path_.empty() && std::filesystem::exists(pathFromUtf8(path_), error)) read(logger);
}

void ShapesStore::read(log::ILogger& logger) {
  const auto fail = [this](const std::string& why) {
    throw util::TessaryException("cannot read the shapes in '" + path_ + "': " + why);
  };
  std::error_code error;
  const auto size = std::filesystem::file_size(pathFromUtf8(path_), error);
  if (error) fail(error.message());
  if (size > kMostBytes) fail("it is too large for a file of shapes");
  std::ifstream file(pathFromUtf8(path_), std::ios::binary);
  if (!file) fail(std::strerror(errno));
  const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  auto report = recognition::readShapes(text, book_);
  for (const auto& problem : report.problems) {
    log::write(&logger, log::Level::Warning, "%s:%zu:%zu: %s; this letter is left out, and kept",
               path_.c_str(), problem.line, problem.column, problem.what.c_str());
  }
  gap_ = report.gap;
  letters_ = report.letters;
  damaged_ = std::move(report.damaged);
}

void ShapesStore::save(double wordGap) {
  if (path_.empty()) return;
  OutputFile file(path_);
  file.write(recognition::writeShapes(book_, wordGap, damaged_));
  file.commit();
}

}  // namespace korr::txsub
