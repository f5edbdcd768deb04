// SPDX-License-Identifier: MIT

// The filter delivers what the native program makes of the same recording.
#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

#include "platform/png_decoder.h"
#include "readers/record_format.h"
#include "tests/filter/recording_logger.h"
#include "txgraph/graph_replay.h"
#include "txsub/options/options.h"
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

/// Puts the pixels of a document's picture, if it has one, in place of their encoding.
void decodePicture(std::string& document) {
  const std::size_t tag = document.find("<smpte:image");
  if (tag == std::string::npos) return;
  const std::size_t begin = document.find('>', tag) + 1;
  const std::size_t length = document.find('<', begin) - begin;
  const auto png = util::decodeBase64(document.substr(begin, length)).value();
  const auto picture = platform::decodePng(png).value();
  document.replace(begin, length, std::to_string(picture.width) + " pixels a row: ");
  document.append(picture.rgba.begin(), picture.rgba.end());
}

/// Documents, each put together from its buffers and with its times before it.
std::vector<std::string> documentsOf(const std::string& delivered) {
  std::vector<std::string> documents;
  for (const auto& line : linesOf(delivered)) {
    if (line.find("endOfStream") != std::string::npos) continue;
    const auto buffer = txsub::parseSample(line);
    EXPECT_EQ(buffer.sync, buffer.discontinuity);
    if (buffer.sync) {
      documents.push_back(std::to_string(buffer.times->start) + " to " +
                          std::to_string(buffer.times->stop) + '\n');
    }
    documents.back().append(buffer.data.begin(), buffer.data.end());
  }
  for (auto& document : documents) decodePicture(document);
  return documents;
}

// Encoders differ, pictures may not.
void expectSameDocuments(const std::string& delivered, const std::string& reference) {
  const auto ours = documentsOf(delivered);
  const auto theirs = documentsOf(reference);
  ASSERT_EQ(ours.size(), theirs.size());
  for (std::size_t i = 0; i < ours.size(); ++i)
    ASSERT_TRUE(ours[i] == theirs[i]) << ours[i].c_str() << "\nis not\n" << theirs[i].c_str();
}

// The program says where in the recording a message comes from, and counts equal ones; the filter
// leaves both to its host.
std::vector<std::string> errorsOneByOne(const std::string& errors) {
  static const std::regex kRepeats("the same ([0-9]+) more time");
  std::vector<std::string> all;
  for (const auto& line : linesOf(errors)) {
    const auto begin = line.find("Error: ");
    std::smatch repeats;
    if (std::regex_search(line, repeats, kRepeats)) {
      all.insert(all.end(), std::stoul(repeats[1]), std::string(all.back()));
    } else {
      all.push_back("0 " + line.substr(begin == std::string::npos ? 0 : begin));
    }
  }
  return all;
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
    const auto errors = errorsOneByOne(contentOf(folder / (number + ".errors")));
    for (const auto sink : {SinkKind::Collecting, SinkKind::Grabber}) {
      SCOPED_TRACE(sink == SinkKind::Grabber ? "Grabber" : "Collecting");
      RecordingLogger logger;
      const auto delivered = deliveredBy(sink, recording, arguments, logger);
      if (recording.type == txsub::SubtitleInputType::DvbSubtitle) {
        expectSameDocuments(delivered, reference);
      } else {
        EXPECT_EQ(delivered, reference);
      }
      auto said = logger.take();
      std::erase_if(said, [](const std::string& text) { return !text.starts_with("0 "); });
      EXPECT_EQ(said, errors);
    }
  }
  CoUninitialize();
}

TEST(Replay, EndsWithTheReasonWhenTheGraphIsAborted) {
  CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  RecordingLogger logger;
  Recording recording{.type = txsub::SubtitleInputType::ClosedCaption, .format = {}, .samples = {}};
  for (std::uint64_t second = 1; second < 9; ++second) {
    recording.samples.push_back({.data = {0xFC, 0x80, 0x80},
                                 .times = txsub::InputSample::Times{second * 10'000'000, 0},
                                 .sync = true,
                                 .format = {}});
  }
  const ReplaySettings settings = {
      .module = (fs::path(_pgmptr).parent_path() / "TXSubtitleConverter.ax").string(),
      .configuration = {.page = 1},
      .logger = &logger};
  std::string reason;
  try {
    replay(recording, settings, [](const ReceivedSample&) { throw std::bad_alloc(); });
  } catch (const util::TessaryException& error) {
    reason = error.what();
  }
  EXPECT_THAT(reason, testing::StartsWith("cannot replay to the end (0x8007000e): "));
  CoUninitialize();
}

}  // namespace
}  // namespace korr::streaming::direct_show::host::inline v2_1
