#include "readers/open_input.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "platform/module_loader.h"
#include "readers/byte_source.h"
#include "readers/libav/av_module.h"
#include "readers/mpegts/ts_reader.h"
#include "readers/samples_reader.h"
#include "readers/scc_reader.h"
#include "util/exception.h"

namespace korr::txsub {

namespace {

// Text formats show in their first bytes, so that a slow pipe of them starts at once.
constexpr std::size_t kTextProbeSize = 16;

using Bytes = std::span<const std::uint8_t>;

std::string_view asText(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Without the byte order mark that some editors leave.
std::string_view withoutMark(std::string_view text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  return text;
}

bool looksLikeSamples(Bytes start) {
  const std::string_view text = withoutMark(asText(start));
  const auto first = text.find_first_not_of(" \t\r\n");
  return first != std::string_view::npos && text[first] == '{';
}

bool looksLikeScc(Bytes start) {
  return withoutMark(asText(start)).starts_with(SccReader::kHeader.substr(0, 10));
}

// Whatever libavformat knows. It seeks in files; an MP4 file's index, say, may come last.
std::unique_ptr<IMediaReader> openOther(const std::string& path, std::unique_ptr<FileSource> source,
                                        const ReaderOptions& options) {
#ifdef TESSARY_AVFORMAT
  auto* const open =
      reinterpret_cast<OpenWithAvformat*>(platform::moduleFunction(kAvModule, kAvModuleFunction));
  if (source->size()) source.reset();
  return std::unique_ptr<IMediaReader>(open(path, std::move(source), options));
#else
  (void)path, (void)source, (void)options;
  throw util::TessaryException("it is in no format that can be read here");
#endif
}

OpenedInput openSource(const std::string& path, std::unique_ptr<FileSource> source,
                       const ReaderOptions& options) {
  const Bytes start = source->peek(kTextProbeSize);
  if (start.empty()) throw util::TessaryException("it is empty");
  if (looksLikeSamples(start)) {
    return {.format = InputFormat::RecordedSamples,
            .reader = std::make_unique<SamplesReader>(std::move(source), options)};
  }
  if (looksLikeScc(start)) {
    return {.format = InputFormat::Scc,
            .reader = std::make_unique<SccReader>(std::move(source), options)};
  }
  if (looksLikeTransportStream(source->peek(kTsProbeSize))) {
    return {.format = InputFormat::TransportStream,
            .reader = std::make_unique<TsReader>(std::move(source), options)};
  }
  return {.format = InputFormat::Other, .reader = openOther(path, std::move(source), options)};
}

}  // namespace

OpenedInput openInput(const std::string& path, const ReaderOptions& options) {
  auto source = std::make_unique<FileSource>(path);
  const std::string name = source->name();
  try {
    return openSource(path, std::move(source), options);
  } catch (const util::TessaryException& error) {
    throw util::TessaryException("cannot read " + name + ": " + error.what());
  }
}

}  // namespace korr::txsub
