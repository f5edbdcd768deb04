// SPDX-License-Identifier: MIT
#include "files/frames/frame_files.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string_view>

#include "burn/frame_buffer.h"
#include "platform/png_decoder.h"
#include "timed_text/png_encoder.h"
#include "util/exception.h"

namespace korr::txsub {

namespace {

namespace subtitling = encoding::subtitling;

std::string_view asText(const std::vector<std::uint8_t>& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

StillFile::StillFile(const std::string& path, subtitling::SubtitleInputType type, MediaTime at,
                     Frame background)
    : file_(path), type_(type), at_(at), frame_(std::move(background)) {
}

void StillFile::write(const Cue& cue) {
  if (cue.start <= at_ && at_ < cue.stop) subtitle_ = cue.subtitle;
}

void StillFile::finish() {
  if (subtitle_) SubtitlePainter(type_).paint(frame_, *subtitle_);
  const auto rgba = frame_.rgba();
  const auto png = subtitling::ttml::createPngEncoder()->encode(
      {.pixels = rgba.data(),
       .width = frame_.width,
       .height = frame_.height,
       .stride = std::size_t{frame_.width} * 4,
       .paintedRows = {.first = 0, .end = frame_.height}});
  if (!png) throw util::TessaryException("the frame cannot be encoded as PNG");
  file_.write(asText(*png));
  file_.commit();
}

RawFramesFile::RawFramesFile(const std::string& path, subtitling::SubtitleInputType type,
                             std::uint32_t width, std::uint32_t height, double framesPerSecond,
                             std::function<MediaTime()> duration)
    : file_(path),
      painter_(type),
      frame_(width, height),
      framesPerSecond_(framesPerSecond),
      duration_(std::move(duration)),
      blank_(frame_.rgba()) {
}

void RawFramesFile::write(const Cue& cue) {
  writeBlankUntil(cue.start);
  std::fill(frame_.pixels.begin(), frame_.pixels.end(), 0);
  painter_.paint(frame_, *cue.subtitle);
  // The last picture may stay past the end of the recording.
  const MediaTime end = duration_();
  writeUntil(end > cue.start ? std::min(cue.stop, end) : cue.stop, frame_.rgba());
}

void RawFramesFile::finish() {
  writeBlankUntil(duration_());
  file_.commit();
}

void RawFramesFile::writeBlankUntil(MediaTime end) {
  constexpr MediaTime kDay = 24 * 3600 * subtitling::kSecond;
  if (end > end_ && end - end_ > kDay) {
    leftOut_ += end - end_;
    end_ = end;
  }
  writeUntil(end, blank_);
}

// Frame n shows the time n / framesPerSecond_, but for what is left out.
void RawFramesFile::writeUntil(MediaTime end, const std::vector<std::uint8_t>& rgba) {
  if (end <= end_) return;
  end_ = end;
  const double seconds =
      static_cast<double>(end - leftOut_) / static_cast<double>(subtitling::kSecond);
  for (; static_cast<double>(written_) / framesPerSecond_ < seconds; ++written_)
    file_.write(asText(rgba));
}

Frame readPicture(const std::string& path) {
  std::ifstream file(pathFromUtf8(path), std::ios::binary);
  if (!file) throw util::TessaryException("cannot read the picture '" + path + "'");
  const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), {});
  const auto decoded =
      platform::decodePng({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
  if (!decoded) throw util::TessaryException("'" + path + "' is not a PNG picture, or damaged");

  Frame frame(decoded->width, decoded->height);
  for (std::size_t i = 0; i < frame.pixels.size(); ++i) {
    const auto* rgba = decoded->rgba.data() + 4 * i;
    frame.pixels[i] =
        subtitling::burn::premultiply(std::uint32_t{rgba[3]} << 24 | std::uint32_t{rgba[0]} << 16 |
                                      std::uint32_t{rgba[1]} << 8 | rgba[2]);
  }
  return frame;
}

}  // namespace korr::txsub
