// SPDX-License-Identifier: MIT
#include <map>

#include "files/output_file.h"
#include "platform/terminal.h"
#include "readers/byte_source.h"
#include "readers/open_input.h"
#include "readers/record_format.h"
#include "services/service.h"
#include "txsub/commands/commands.h"
#include "txsub/commands/explain.h"

namespace korr::txsub {

namespace {

/// Records the first stream that delivers a sample.
class Extraction final : public IReaderListener {
 public:
  Extraction(IMediaReader& reader, const std::string& path) : reader_(reader), file_(path) {}

  bool onStream(const StreamInfo& stream) override {
    if (stream.pictures != PictureSystem::Dvb) {
      hasOfDiscs_ = true;  // the filter has none
      return false;
    }
    streams_[stream.id] = stream;
    return !chosen_ || *chosen_ == stream.id;
  }

  void onSample(const StreamInfo& stream, const InputSample& sample) override {
    if (!chosen_) choose(stream);
    if (stream.id != *chosen_) return;
    file_.write(formatSample(sample));
    ++samples_;
  }

  void flush() { file_.flush(); }
  void commit() { file_.commit(); }

  std::size_t samples() const { return samples_; }
  bool hasOfDiscs() const { return hasOfDiscs_; }
  const StreamInfo* chosen() const { return chosen_ ? &streams_.at(*chosen_) : nullptr; }
  const std::map<std::uint32_t, StreamInfo>& streams() const { return streams_; }

 private:
  void choose(const StreamInfo& stream) {
    chosen_ = stream.id;
    for (const auto& [id, other] : streams_) {
      if (id != stream.id) reader_.unselect(id);
    }
    RecordHeader header{.type = stream.type, .format = {}};
    if (stream.type == SubtitleInputType::Teletext && !stream.descriptors.empty()) {
      header.format = stream.descriptors;
    }
    file_.write(formatHeader(header));
  }

  IMediaReader& reader_;
  OutputFile file_;
  std::map<std::uint32_t, StreamInfo> streams_;  // by id
  std::optional<std::uint32_t> chosen_;
  std::size_t samples_ = 0;
  bool hasOfDiscs_ = false;
};

std::string streamText(const StreamInfo& stream) {
  return "PID " + pidText(stream.pid) + " (" + std::string(streamName(stream.type)) + ")";
}

// The others that --pid could name; a video stream may hold no captions.
std::string otherStreams(const Extraction& extraction) {
  std::string text;
  for (const auto& [id, stream] : extraction.streams()) {
    if (&stream == extraction.chosen() || stream.isVideo) continue;
    text += (text.empty() ? "" : ", ") + streamText(stream);
  }
  return text;
}

}  // namespace

ExitCode run(const ExtractOptions& options, Console& console) {
  const auto input = openInput(options.input.path, readerOptions(options.input, console));
  Extraction extraction(*input.reader, options.output);
  while (input.reader->read(extraction)) {
    console.showProgress(input.reader->progress());
    extraction.flush();
    if (platform::isInterrupted()) break;
  }
  console.endProgress();
  if (!extraction.chosen()) {
    const auto why = explainInput(*input.reader, options.input);
    console.error(!why.empty() ? why
                  : extraction.hasOfDiscs()
                      ? "PGS and DVD subtitles, which " + inputName(options.input.path) +
                            " holds, are none that the filter converts: there is nothing to record"
                      : "there is no sample of a subtitle stream in " +
                            inputName(options.input.path));
    return kFailed;
  }
  extraction.commit();
  console.note("recorded " + std::to_string(extraction.samples()) + " samples of " +
               streamText(*extraction.chosen()));
  if (const auto others = otherStreams(extraction); !others.empty()) {
    console.note("also in this recording: " + others + "; choose with --pid");
  }
  return kDone;
}

}  // namespace korr::txsub
