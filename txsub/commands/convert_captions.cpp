// SPDX-License-Identifier: MIT

// convert -o FILE.scc or FILE.mcc: captions as they were sent.
#include <algorithm>
#include <optional>

#include "files/caption_file.h"
#include "readers/byte_source.h"
#include "readers/open_input.h"
#include "txsub/commands/commands.h"

namespace korr::txsub {

namespace {

/// Writes the caption triplets of the first stream that carries any.
class CaptionCopy final : public IReaderListener {
 public:
  CaptionCopy(IMediaReader& reader, const ConvertOptions& options, Console& console)
      : reader_(reader), options_(options), console_(console) {}

  bool onStream(const StreamInfo& stream) override {
    return stream.type == SubtitleInputType::ClosedCaption && (!stream_ || stream.id == *stream_);
  }

  void onSample(const StreamInfo& stream, const InputSample& sample) override {
    if (!sample.times || sample.data.empty()) return;
    if (!stream_) begin(stream);
    if (stream.id != *stream_) return reader_.unselect(stream.id);
    const MediaTime time = sample.times->start;
    file_->write(sample.data, time > origin_ ? time - origin_ : 0);
  }

  /// Whether there was anything to write.
  bool finish() {
    if (file_) file_->finish();
    return file_ != nullptr;
  }

 private:
  void begin(const StreamInfo& stream) {
    stream_ = stream.id;
    if (!options_.absolute) origin_ = reader_.startTime(stream.program).value_or(0);
    file_ = createCaptionFile(
        {.format = options_.output.ends_with(".mcc") ? CaptionFormat::Mcc : CaptionFormat::Scc,
         .path = options_.output,
         .dropFrame = !options_.nonDrop,
         .logger = &console_});
    console_.detail("writing the captions of PID " + pidText(stream.pid));
  }

  IMediaReader& reader_;
  const ConvertOptions& options_;
  Console& console_;
  std::optional<std::uint32_t> stream_;
  MediaTime origin_ = 0;
  std::unique_ptr<ICaptionFile> file_;
};

}  // namespace

ExitCode copyCaptions(const ConvertOptions& options, IMediaReader& reader, Console& console) {
  CaptionCopy copy(reader, options, console);
  while (reader.read(copy) && !console.isStopWanted()) console.showProgress(reader.progress());
  console.endProgress();
  if (options.completeOnly && console.isStopWanted()) return kFailed;
  if (copy.finish()) return kDone;
  console.error("there are no captions in " + inputName(options.input.path));
  return kNoSubtitles;
}

}  // namespace korr::txsub
