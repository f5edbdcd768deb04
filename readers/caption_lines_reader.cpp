// SPDX-License-Identifier: MIT
#include "readers/caption_lines_reader.h"

#include <algorithm>
#include <cinttypes>
#include <utility>

#include "readers/caption_sample.h"

namespace korr::txsub {
namespace {

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r";
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  text.remove_suffix(text.size() - (text.find_last_not_of(kBlanks) + 1));
  return text;
}

std::string_view withoutMark(std::string_view line) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (line.starts_with(kByteOrderMark)) line.remove_prefix(kByteOrderMark.size());
  return line;
}

}  // namespace

std::string wholeHour(std::string_view timeCode) {
  std::string hour(timeCode);
  std::replace_if(
      hour.begin() + 2, hour.end(), [](char c) { return c >= '0' && c <= '9'; }, '0');
  return hour;
}

CaptionLinesReader::CaptionLinesReader(std::unique_ptr<IByteSource> source,
                                       const ReaderOptions& options, const Format& format)
    : format_(format),
      lines_(std::move(source), format.longestLine, options.logger),
      logger_(options.logger) {
  stream_.id = stream_.pid = 1;
  stream_.type = SubtitleInputType::ClosedCaption;
}

bool CaptionLinesReader::read(IReaderListener& listener) {
  if (!std::exchange(isAnnounced_, true)) isWanted_ = listener.onStream(stream_);
  const bool isMore = lines_.fill();
  while (const auto line = lines_.take()) take(*line, listener);
  if (!isMore && !isHeaderSeen_) {
    throw util::TessaryException("it is no " + std::string(format_.name) + " file: it is empty");
  }
  return isMore;
}

void CaptionLinesReader::take(const LineReader::Line& line, IReaderListener& listener) {
  lineNumber_ = line.number;
  const std::string_view text = trimmed(isHeaderSeen_ ? line.text : withoutMark(line.text));
  if (text.empty() && !line.isTooLong) return;
  if (!isHeaderSeen_) {
    isHeaderSeen_ = text.starts_with(format_.header);
    if (isHeaderSeen_) return;
    throw util::TessaryException("it is no " + std::string(format_.name) +
                                 " file: it does not begin with \"" + std::string(format_.header) +
                                 "\"");
  }
  if (!line.isTooLong) return readLine(text, listener);
  log::write(logger_, log::Level::Warning,
             "line %" PRIu64 ": longer than %zu bytes; the line is left out", lineNumber_,
             format_.longestLine);
}

void CaptionLinesReader::send(std::uint64_t frame, std::span<const std::uint8_t> triplets,
                              IReaderListener& listener) {
  nextFrame_ = std::max(nextFrame_, frame + 1);
  if (!isWanted_ || triplets.empty()) return;
  listener.onSample(stream_, captionSample(triplets, timeOfFrame(frame), timeOfFrame(frame + 1)));
}

void CaptionLinesReader::leaveOut(std::string_view word, const char* why) {
  constexpr std::size_t kShown = 40;
  const std::string shown(word.substr(0, kShown));
  log::write(logger_, log::Level::Warning, "line %" PRIu64 ": \"%s\" %s; the line is left out",
             lineNumber_, shown.c_str(), why);
}

void CaptionLinesReader::warn(const char* what) {
  log::write(logger_, log::Level::Warning, "line %" PRIu64 ": %s", lineNumber_, what);
}

void CaptionLinesReader::unselect(std::uint32_t streamId) {
  if (streamId == stream_.id) isWanted_ = false;
}

std::optional<MediaTime> CaptionLinesReader::startTime(std::uint32_t) const {
  if (!startFrame_) return {};
  return timeOfFrame(*startFrame_);
}

std::optional<MediaTime> CaptionLinesReader::endTime(std::uint32_t) const {
  if (!startFrame_) return {};
  return timeOfFrame(nextFrame_);
}

}  // namespace korr::txsub
