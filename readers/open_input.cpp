// SPDX-License-Identifier: MIT
#include "readers/open_input.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "platform/module_loader.h"
#include "readers/byte_source.h"
#include "readers/libav/av_module.h"
#include "readers/mcc_reader.h"
#include "readers/mpegts/ts_reader.h"
#include "readers/network_source.h"
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

/// How containers begin that are no transport streams, whatever their content looks like.
struct Magic {
  std::size_t at;
  std::string_view bytes;
};
constexpr Magic kContainers[] = {
    {4, "ftyp"},
    {4, "moov"},
    {4, "mdat"},
    {4, "moof"},
    {4, "styp"},  // ISO/IEC 14496-12
    {4, "free"},
    {4, "skip"},
    {4, "wide"},
    {4, "pnot"},              // QuickTime
    {0, "\x1A\x45\xDF\xA3"},  // Matroska, WebM: EBML
    {0, "\x06\x0E\x2B\x34"},  // MXF: SMPTE ST 377-1
    {0, "\x30\x26\xB2\x75"},  // ASF
    {0, "RIFF"},
    {0, "FLV"},
    {0, "OggS"},
};

bool looksLikeContainer(Bytes start) {
  const std::string_view text = asText(start);
  return std::ranges::any_of(kContainers, [&](const Magic& magic) {
    return text.size() > magic.at && text.substr(magic.at).starts_with(magic.bytes);
  });
}

/// Looks ahead no farther than it takes to tell: a slow pipe must not wait for more.
bool isTransportStream(FileSource& source) {
  if (looksLikeContainer(source.ahead())) return false;
  for (bool isMore = true; isMore && source.ahead().size() < kTsProbeSize;) {
    if (looksLikeTransportStream(source.ahead(), false)) return true;
    isMore = source.lookAhead();
    if (!isMore) return looksLikeTransportStream(source.ahead(), true);
  }
  return looksLikeTransportStream(source.ahead(), false);
}

bool looksLikeMcc(Bytes start) {
  return withoutMark(asText(start)).starts_with(MccReader::kHeader.substr(0, 12));
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
  while (source->ahead().size() < kTextProbeSize && source->lookAhead()) {
  }
  const Bytes start = source->ahead();
  if (start.empty()) throw util::TessaryException("it is empty");
  if (looksLikeSamples(start)) {
    return {.format = InputFormat::RecordedSamples,
            .reader = std::make_unique<SamplesReader>(std::move(source), options)};
  }
  if (looksLikeMcc(start)) {
    return {.format = InputFormat::Mcc,
            .reader = std::make_unique<MccReader>(std::move(source), options)};
  }
  if (looksLikeScc(start)) {
    return {.format = InputFormat::Scc,
            .reader = std::make_unique<SccReader>(std::move(source), options)};
  }
  if (isTransportStream(*source)) {
    std::unique_ptr<IByteSource> bytes = std::move(source);
    if (options.growthDue.count() != 0) {
      bytes = std::make_unique<GrowingSource>(std::move(bytes), options.growthDue);
    }
    return {.format = InputFormat::TransportStream,
            .reader = std::make_unique<TsReader>(std::move(bytes), options)};
  }
  return {.format = InputFormat::Other, .reader = openOther(path, std::move(source), options)};
}

}  // namespace

OpenedInput openInput(const std::string& path, const ReaderOptions& options) {
  const NetworkProtocol* const protocol = networkProtocol(path);
  auto source = protocol ? nullptr : std::make_unique<FileSource>(path);
  try {
    if (protocol) source = std::make_unique<FileSource>(openAddress(path, *protocol, options));
    return openSource(path, std::move(source), options);
  } catch (const util::TessaryException& error) {
    throw util::TessaryException("cannot read " + inputName(path) + ": " + error.what());
  }
}

}  // namespace korr::txsub
