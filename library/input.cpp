// SPDX-License-Identifier: MIT
#include "library/input.h"

#include <chrono>

#include "readers/mpegts/ts_reader.h"
#include "sessions/cue_sessions.h"
#include "util/exception.h"

namespace korr::txsub {

namespace {

// A stream is looked at when this many bytes have come: its tables are among them, as a rule.
constexpr std::size_t kOpening = std::size_t{64} * 1024;

std::string placeText(const Place& place) {
  std::string text = place.pid == 0 ? "" : "PID " + pidText(place.pid);
  if (place.time) {
    text += (text.empty() ? "" : ", ") +
            std::to_string(*place.time / encoding::subtitling::kMillisecond) + " ms";
  }
  return text.empty() ? text : text + ": ";
}

txsub_kind kindOf(SubtitleInputType type) {
  switch (type) {
    case SubtitleInputType::Teletext:
      return TXSUB_TELETEXT;
    case SubtitleInputType::ClosedCaption:
      return TXSUB_CAPTIONS;
    case SubtitleInputType::DvbSubtitle:
      break;
  }
  return TXSUB_DVB_SUBTITLES;
}

}  // namespace

SubtitleInputType typeOf(txsub_kind kind) {
  switch (kind) {
    case TXSUB_TELETEXT:
      return SubtitleInputType::Teletext;
    case TXSUB_CAPTIONS:
      return SubtitleInputType::ClosedCaption;
    case TXSUB_DVB_SUBTITLES:
      return SubtitleInputType::DvbSubtitle;
  }
  throw util::TessaryException("there are no samples of this kind");
}

/// Takes the cues of one service.
class LibraryInput::Output final : public ICueOutput {
 public:
  Output(LibraryInput& input, std::size_t service) : input_(input), service_(service) {}

  void onCue(const Cue& cue) override {
    const MediaTime origin = input_.originOf(input_.services_[service_].service);
    input_.cues_.push_back(std::make_unique<CueRecord>(service_, cue, origin));
  }
  void open() override {}
  void flush() override {}
  void commit() override {}

 private:
  LibraryInput& input_;
  std::size_t service_;
};

LibraryInput::LibraryInput(InputRequest request) : request_(std::move(request)) {
}

LibraryInput::~LibraryInput() = default;

void LibraryInput::openFile(const std::string& path) {
  auto opened = openInput(path, {.pid = request_.pid, .logger = this});
  format_ = opened.format;
  reader_ = std::move(opened.reader);
  isEnded_ = true;
  begin();
}

void LibraryInput::openStream() {
  auto source = std::make_unique<PushedBytes>();
  bytes_ = source.get();
  format_ = InputFormat::TransportStream;
  // Nobody waits for tables here: what has been pushed is all that there is.
  reader_ = std::make_unique<TsReader>(
      std::move(source),
      ReaderOptions{
          .pid = request_.pid, .logger = this, .tablesDue = std::chrono::milliseconds(0)});
  begin();
}

void LibraryInput::openSamples(SubtitleInputType type, std::vector<std::uint8_t> descriptors) {
  StreamInfo stream;
  stream.type = type;
  stream.descriptors = std::move(descriptors);
  auto samples = std::make_unique<PushedSamples>(std::move(stream));
  samples_ = samples.get();
  reader_ = std::move(samples);
  begin();
}

void LibraryInput::begin() {
  pass_ = std::make_unique<ServicePass>(
      *reader_, ServicePass::Wanted::All,
      [this](const StreamInfo& stream) {
        return createServiceFinder(stream, request_.query, this);
      },
      [this](const Service& service, const StreamInfo&) { return makeSession(service); },
      static_cast<ISessionMonitor&>(*this));
}

std::unique_ptr<ServiceSession> LibraryInput::makeSession(const Service& service) {
  const auto& language = request_.language;
  if (!language.empty() && service.language != language) return nullptr;
  auto& found = services_.emplace_back(Found{.service = service, .name = displayName(service)});
  found.view = {.kind = kindOf(service.type),
                .name = found.name.c_str(),
                .language = found.service.language.c_str(),
                .pid = service.pid,
                .program = service.program,
                .hard_of_hearing = service.hearingImpaired ? 1 : 0};
  CueSession::Settings settings;
  settings.configuration.page = service.page;
  settings.configuration.pageOption = service.pageOption;
  settings.isAskedFor = request_.query.page.has_value();
  if (format_ == InputFormat::RecordedSamples) settings.rules = DisplayRules::Filter;
  return createCueSession(service, settings, std::make_unique<Output>(*this, services_.size() - 1),
                          *this);
}

MediaTime LibraryInput::originOf(const Service& service) const {
  return request_.keepsTimes ? 0 : reader_->startTime(service.program).value_or(0);
}

void LibraryInput::push(std::span<const std::uint8_t> bytes) {
  if (!bytes_) throw util::TessaryException("bytes go into a stream (txsub_open_stream)");
  if (isEnded_) throw util::TessaryException("the input has been ended");
  bytes_->push(bytes);
  if (hasBegun_ || bytes_->waiting() >= kOpening) readOn();
}

void LibraryInput::pushSample(std::span<const std::uint8_t> bytes, MediaTime time) {
  if (!samples_)
    throw util::TessaryException("samples go into an input of samples (txsub_open_samples)");
  if (isEnded_) throw util::TessaryException("the input has been ended");
  InputSample sample;
  sample.data.assign(bytes.begin(), bytes.end());
  sample.times = {.start = time, .stop = time};
  sample.sync = true;
  samples_->push(std::move(sample));
  readOn();
}

void LibraryInput::readOn() {
  hasBegun_ = true;
  while (reader_->read(*pass_) && bytes_ && bytes_->waiting() != 0) {
  }
}

void LibraryInput::end() {
  if (!reader_) throw util::TessaryException("nothing has been opened");
  if (!bytes_ && !samples_) throw util::TessaryException("a recording ends by itself");
  if (isEnded_) throw util::TessaryException("the input has been ended");
  isEnded_ = true;
  if (bytes_) {
    while (reader_->read(*pass_)) {
    }
  }
  complete();
}

std::unique_ptr<CueRecord> LibraryInput::next() {
  if (!reader_) throw util::TessaryException("nothing has been opened");
  while (cues_.empty() && !isComplete_ && isEnded_) {
    if (!reader_->read(*pass_)) complete();
  }
  if (cues_.empty()) return nullptr;
  auto cue = std::move(cues_.front());
  cues_.pop_front();
  return cue;
}

void LibraryInput::complete() {
  isComplete_ = true;
  pass_->complete();
}

void LibraryInput::warn(const std::string& message) const {
  if (request_.warn) request_.warn(message);
}

void LibraryInput::logV(log::Level level, const char* format, std::va_list arguments) {
  if (level != log::Level::Information) warn(util::vformat(format, arguments));
}

void LibraryInput::report(log::Level level, const Place& place, const std::string& message) {
  if (level != log::Level::Information) warn(placeText(place) + message);
}

void LibraryInput::chainError(const Place& place, const char* message) {
  warn(placeText(place) + "Error: " + message);
}

}  // namespace korr::txsub
