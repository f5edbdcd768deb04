// The filter delivers what the native program makes of the same recording.
#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <objidl.h>
#include <wincrypt.h>

#include <gdiplus/gdiplus.h>
#include <wrl/client.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <sstream>

#include "filter/host/graph_replay.h"
#include "txsub/options/options.h"
#include "txsub/record_format.h"

namespace korr::streaming::direct_show::host::inline v2_1 {
namespace {

namespace fs = std::filesystem;

/// One line of cases.txt.
struct Case {
  fs::path recording;
  fs::path reference;
  fs::path errors;
  txsub::ConvertOptions options;
  std::string line;
};

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

std::vector<Case> readCases() {
  const char* folder = std::getenv("TESSARY_REFERENCES");
  if (!folder) return {};
  std::vector<Case> cases;
  for (const auto& line : linesOf(contentOf(fs::path(folder) / "cases.txt"))) {
    std::istringstream words(line);
    std::string recording;
    std::string number;
    words >> recording >> number;
    std::vector<std::string> arguments = {"txgraph", "convert", recording, "--as", "samples"};
    for (std::string word; words >> word;) arguments.push_back(word);
    const auto parsed = txsub::parseCommandLine(arguments);
    cases.push_back({.recording = fs::path(folder) / recording,
                     .reference = fs::path(folder) / (number + ".jsonl"),
                     .errors = fs::path(folder) / (number + ".errors"),
                     .options = std::get<txsub::ConvertOptions>(std::get<txsub::Command>(parsed)),
                     .line = line});
  }
  return cases;
}

/// Keeps the filter's errors.
class ErrorList final : public filters::mqs_subtitle_converter::ILogger {
 public:
  void STDMETHODCALLTYPE Log(std::uint32_t level, const char* format,
                             std::va_list arguments) override {
    const std::scoped_lock lock(mutex_);
    if (level == 0) text_ += util::vformat(format, arguments) + '\n';
  }
  void STDMETHODCALLTYPE NameBufferCounters(const char*) override {}

  std::string text() {
    const std::scoped_lock lock(mutex_);
    return text_;
  }

 private:
  std::mutex mutex_;
  std::string text_;
};

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

/// Width, height and pixels of a picture in base64.
std::vector<std::uint32_t> pixelsOf(const std::string& base64) {
  DWORD size = 0;
  CryptStringToBinaryA(base64.data(), static_cast<DWORD>(base64.size()), CRYPT_STRING_BASE64,
                       nullptr, &size, nullptr, nullptr);
  const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, size);
  CryptStringToBinaryA(base64.data(), static_cast<DWORD>(base64.size()), CRYPT_STRING_BASE64,
                       static_cast<BYTE*>(GlobalLock(memory)), &size, nullptr, nullptr);
  GlobalUnlock(memory);
  Microsoft::WRL::ComPtr<IStream> stream;
  CreateStreamOnHGlobal(memory, TRUE, &stream);
  Gdiplus::Bitmap bitmap(stream.Get());
  std::vector<std::uint32_t> pixels = {bitmap.GetWidth(), bitmap.GetHeight()};
  Gdiplus::BitmapData data;
  const Gdiplus::Rect all(0, 0, static_cast<INT>(bitmap.GetWidth()),
                          static_cast<INT>(bitmap.GetHeight()));
  if (bitmap.LockBits(&all, Gdiplus::ImageLockModeRead, PixelFormat32bppARGB, &data) !=
      Gdiplus::Ok) {
    return {};
  }
  for (UINT y = 0; y < data.Height; ++y) {
    const auto* row = reinterpret_cast<const std::uint32_t*>(
        static_cast<const BYTE*>(data.Scan0) + static_cast<std::ptrdiff_t>(y) * data.Stride);
    pixels.insert(pixels.end(), row, row + data.Width);
  }
  bitmap.UnlockBits(&data);
  return pixels;
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
    const auto pixels = pixelsOf(ourPicture);
    ASSERT_GT(pixels.size(), 2u);
    ASSERT_TRUE(pixels == pixelsOf(theirPicture)) << "document " << i;
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

std::string modulePath() {
  WCHAR self[MAX_PATH] = {};
  GetModuleFileNameW(nullptr, self, MAX_PATH);
  return (fs::path(self).parent_path() / "TXSubtitleConverter.ax").string();
}

class Replay : public testing::TestWithParam<SinkKind> {
 protected:
  Replay() {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    const Gdiplus::GdiplusStartupInput input;
    Gdiplus::GdiplusStartup(&gdiplus_, &input, nullptr);
  }
  ~Replay() override {
    Gdiplus::GdiplusShutdown(gdiplus_);
    CoUninitialize();
  }

 private:
  ULONG_PTR gdiplus_ = 0;
};

TEST_P(Replay, DeliversWhatTheNativeProgramMakes) {
  const auto cases = readCases();
  if (cases.empty()) GTEST_SKIP() << "no references: build the native preset first";
  for (const auto& one : cases) {
    SCOPED_TRACE(one.line);
    const auto recording = readRecording(one.recording.string(), nullptr);
    ErrorList errors;
    std::string delivered;
    replay(recording,
           {.module = modulePath(),
            .sink = GetParam(),
            .configuration = configurationOf(one.options),
            .logger = &errors,
            .statistics = nullptr},
           [&delivered](const ReceivedSample& sample) {
             delivered += txsub::formatDelivered({.start = sample.start,
                                                  .stop = sample.stop,
                                                  .sync = sample.sync,
                                                  .discontinuity = sample.discontinuity,
                                                  .data = sample.data});
           });
    delivered += txsub::formatEndOfStream();
    const std::string reference = contentOf(one.reference);
    if (recording.type == txsub::SubtitleInputType::DvbSubtitle) {
      expectSameDocuments(delivered, reference);
    } else {
      EXPECT_EQ(delivered, reference);
    }
    EXPECT_EQ(errors.text(), withoutPlaces(contentOf(one.errors)));
  }
}

INSTANTIATE_TEST_SUITE_P(WithEverySink, Replay,
                         testing::Values(SinkKind::Collecting, SinkKind::Grabber),
                         [](const auto& sink) {
                           return sink.param == SinkKind::Grabber ? "Grabber" : "Collecting";
                         });

}  // namespace
}  // namespace korr::streaming::direct_show::host::inline v2_1
