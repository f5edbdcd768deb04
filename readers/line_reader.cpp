// SPDX-License-Identifier: MIT
#include "readers/line_reader.h"

namespace korr::txsub {
namespace {

constexpr std::size_t kPiece = 256 * 1024;

}  // namespace

bool LineReader::fill() {
  return input_.fill(kPiece) != 0;
}

std::string_view LineReader::text() const {
  const auto bytes = input_.bytes();
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::optional<LineReader::Line> LineReader::take() {
  if (isSkipping_ && !skipRest()) return {};
  const std::string_view rest = text();
  const std::size_t feed = rest.find('\n', searched_);
  const bool isWhole = feed != rest.npos || (input_.isAtEnd() && !rest.empty());
  const std::string_view line = rest.substr(0, feed);
  if (!isWhole && line.size() <= longest_) {
    searched_ = rest.size();
    return {};
  }
  searched_ = 0;
  const bool isTooLong = line.size() > longest_;
  isSkipping_ = !isWhole;
  input_.drop(line.size() + (feed != rest.npos ? 1 : 0));
  return Line{.number = ++lines_, .text = line.substr(0, longest_), .isTooLong = isTooLong};
}

// Whether the end of the line too long has come.
bool LineReader::skipRest() {
  const std::size_t feed = text().find('\n');
  isSkipping_ = feed == std::string_view::npos;
  input_.drop(isSkipping_ ? text().size() : feed + 1);
  return !isSkipping_;
}

}  // namespace korr::txsub
