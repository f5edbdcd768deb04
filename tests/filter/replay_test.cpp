// The filter delivers what the native program makes of the same recording.
#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "filter/host/graph_replay.h"
#include "platform/png_decoder.h"
#include "tests/filter/recording_logger.h"
#include "txsub/options/options.h"
#include "txsub/record_format.h"
#include "util/base64.h"

namespace korr::streaming::direct_show::host::inline v2_1 {
namespace {

namespace fs = std::filesystem;
using filters::mqs_subtitle_converter::RecordingLogger;

std::string contentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// Documents, each put together from its buffers.
struct Document {
  txsub::MediaTime start = 0;
  txsub::MediaTime stop = 0;
  std::string text;
};

std::vector<Document> documentsOf(const std::string& delivered) {
  std::vector<Document> documents;
  for (const auto& line : linesOf(delivered)) {
    if (line.find("endOfStream") != std::string::npos) continue;
    const auto buffer = txsub::parseSample(line);
    EXPECT_EQ(buffer.sync, buffer.discontinuity);
    if (buffer.sync) {
      documents.push_back({.start = buffer.times->start, .stop = buffer.times->stop, .text = {}});
    }
    documents.back().text.append(buffer.data.begin(), buffer.data.end());
  }
  return documents;
}

/// Takes the picture out of a document; empty when it has none.
std::string takePicture(std::string& document) {
  const std::size_t tag = document.find("<smpte:image");
  if (tag == std::string::npos) return {};
  const std::size_t begin = document.find('>', tag) + 1;
  const std::size_t end = document.find('<', begin);
  const std::string picture = document.substr(begin, end - begin);
  document.erase(begin, end - begin);
  return picture;
}

// Encoders differ, pictures may not.
void expectSameDocuments(const std::string& delivered, const std::string& reference) {
  auto ours = documentsOf(delivered);
  auto theirs = documentsOf(reference);
  ASSERT_EQ(ours.size(), theirs.size());
  for (std::size_t i = 0; i < ours.size(); ++i) {
    EXPECT_EQ(ours[i].start, theirs[i].start);
    EXPECT_EQ(ours[i].stop, theirs[i].stop);
    const auto ourPicture = takePicture(ours[i].text);
    const auto theirPicture = takePicture(theirs[i].text);
    ASSERT_EQ(ours[i].text, theirs[i].text);
    ASSERT_EQ(ourPicture.empty(), theirPicture.empty());
    if (ourPicture.empty() || ourPicture == theirPicture) continue;
    const auto picture = platform::decodePng(util::decodeBase64(ourPicture).value());
    const auto expected = platform::decodePng(util::decodeBase64(theirPicture).value());
    ASSERT_TRUE(picture && expected);
    ASSERT_EQ(picture->width, expected->width);
    ASSERT_TRUE(picture->rgba == expected->rgba) << "document " << i;
  }
}

// The program says where in the recording a message comes from; the filter leaves that to its host.
std::string withoutPlaces(const std::string& errors) {
  std::string text;
  for (const auto& line : linesOf(errors)) {
    const auto begin = line.find("Error: ");
    text += line.substr(begin == std::string::npos ? 0 : begin) + '\n';
  }
  return text;
}

std::string errorsOf(RecordingLogger& logger) {
  std::string text;
  for (const auto& line : logger.take()) {
    if (line.starts_with("0 ")) text += line.substr(2) + '\n';
  }
  return text;
}

/// What comes out of the filter, as the native program writes it.
std::string deliveredBy(SinkKind sink, const Recording& recording,
                        const std::vector<std::string>& arguments, RecordingLogger& logger) {
  const auto command = std::get<txsub::Command>(txsub::parseCommandLine(arguments));
  std::string delivered;
  replay(recording,
         {.module = (fs::path(_pgmptr).parent_path() / "TXSubtitleConverter.ax").string(),
          .sink = sink,
          .configuration = configurationOf(std::get<txsub::ConvertOptions>(command)),
          .logger = &logger,
          .statistics = nullptr},
         [&delivered](const ReceivedSample& sample) {
           delivered += txsub::formatDelivered({.start = sample.start,
                                                .stop = sample.stop,
                                                .sync = sample.sync,
                                                .discontinuity = sample.discontinuity,
                                                .data = sample.data});
         });
  return delivered + txsub::formatEndOfStream();
}

TEST(Replay, DeliversWhatTheNativeProgramMakes) {
  const char* references = std::getenv("TESSARY_REFERENCES");
  const fs::path folder = references ? references : "";
  const auto cases = linesOf(contentOf(folder / "cases.txt"));
  if (cases.empty()) GTEST_SKIP() << "no references: build the native preset first";
  CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  for (const auto& line : cases) {
    SCOPED_TRACE(line);
    std::istringstream words(line);
    std::string name;
    std::string number;
    words >> name >> number;
    std::vector<std::string> arguments = {"txgraph", "convert", name, "--as", "samples"};
    for (std::string word; words >> word;) arguments.push_back(word);

    const auto recording = readRecording((folder / name).string(), nullptr);
    const auto reference = contentOf(folder / (number + ".jsonl"));
    const auto errors = withoutPlaces(contentOf(folder / (number + ".errors")));
    for (const auto sink : {SinkKind::Collecting, SinkKind::Grabber}) {
      SCOPED_TRACE(sink == SinkKind::Grabber ? "Grabber" : "Collecting");
      RecordingLogger logger;
      const auto delivered = deliveredBy(sink, recording, arguments, logger);
      if (recording.type == txsub::SubtitleInputType::DvbSubtitle) {
        expectSameDocuments(delivered, reference);
      } else {
        EXPECT_EQ(delivered, reference);
      }
      EXPECT_EQ(errorsOf(logger), errors);
    }
  }
  CoUninitialize();
}

}  // namespace
}  // namespace korr::streaming::direct_show::host::inline v2_1
