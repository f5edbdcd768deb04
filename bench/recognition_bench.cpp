// SPDX-License-Identifier: MIT

// Reads pictures with known letters and counts what is wrong.
//
//   recognition_bench LANGUAGE WIDTH HEIGHT ENCODER TRUTH [--alone] [--errors] < RGBA frames
//
// ENCODER: ffmpeg, or own4, own16, own256 for our own at so many colours. TRUTH: a subtitle a line,
// rows parted by '|'. Prints one line of tab-separated counts, at its end
// milliseconds a picture and megabytes at most.
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>

#include "bench/dvb_channel.h"
#include "recognition/letters.h"
#include "recognition/picture_reader.h"
#include "recognition/tesseract/tesseract_engine.h"

using namespace korr;
using namespace korr::bench;
using encoding::subtitling::SubtitleBitmap;

namespace {

using Letters = std::vector<char32_t>;

struct Differences {
  std::size_t count = 0;
  std::vector<std::pair<char32_t, char32_t>> pairs;  // of truth and reading, 0 for none
};

Differences differences(const Letters& truth, const Letters& read) {
  const std::size_t w = read.size() + 1;
  std::vector<std::uint32_t> cost((truth.size() + 1) * w);
  for (std::size_t i = 0; i <= truth.size(); ++i) {
    for (std::size_t j = 0; j < w; ++j) {
      if (i == 0 || j == 0) {
        cost[i * w + j] = std::uint32_t(i + j);
        continue;
      }
      cost[i * w + j] = std::min({cost[(i - 1) * w + j] + 1, cost[i * w + j - 1] + 1,
                                  cost[(i - 1) * w + j - 1] + (truth[i - 1] != read[j - 1])});
    }
  }
  Differences out{.count = cost.back(), .pairs = {}};
  std::size_t i = truth.size(), j = read.size();
  while (i > 0 || j > 0) {
    if (i > 0 && j > 0 &&
        cost[i * w + j] == cost[(i - 1) * w + j - 1] + (truth[i - 1] != read[j - 1])) {
      if (truth[i - 1] != read[j - 1]) out.pairs.emplace_back(truth[i - 1], read[j - 1]);
      --i, --j;
    } else if (i > 0 && cost[i * w + j] == cost[(i - 1) * w + j] + 1) {
      out.pairs.emplace_back(truth[--i], 0);
    } else {
      out.pairs.emplace_back(0, read[--j]);
    }
  }
  return out;
}

recognition::LineImage pageOf(const SubtitleBitmap& bitmap) {
  recognition::LineImage page;
  const auto rows = bitmap.pixels->paintedRows();
  page.width = static_cast<std::int32_t>(bitmap.width);
  page.height = static_cast<std::int32_t>(rows.end - rows.first + 20);
  page.grey.assign(std::size_t(page.width) * std::size_t(page.height), 255);
  for (std::uint32_t y = rows.first; y < rows.end; ++y) {
    for (std::uint32_t x = 0; x < bitmap.width; ++x) {
      const auto* p = bitmap.pixels->data() + (std::size_t{y} * bitmap.width + x) * 4;
      const double luma = (0.299 * p[0] + 0.587 * p[1] + 0.114 * p[2]) * p[3] / 255;
      page.grey[std::size_t(y - rows.first + 10) * std::size_t(page.width) + x] =
          std::uint8_t(255 - luma);
    }
  }
  return page;
}

std::string trimmed(std::string text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\n' && (out.empty() || out.back() == '\n')) continue;
    out += text[i];
  }
  while (!out.empty() && (out.back() == '\n' || out.back() == ' ' || out.back() == '\f'))
    out.pop_back();
  return out;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 6) return 2;
  const std::string language = argv[1];
  const auto width = std::uint32_t(std::stoul(argv[2]));
  const auto height = std::uint32_t(std::stoul(argv[3]));
  const std::string encoderName = argv[4];
  std::ifstream truthFile(argv[5]);
  bool alone = false, errors = false, cues = false;
  std::string style;
  for (int i = 6; i < argc; ++i) {
    alone = alone || std::strcmp(argv[i], "--alone") == 0;
    errors = errors || std::strcmp(argv[i], "--errors") == 0;
    cues = cues || std::strcmp(argv[i], "--cues") == 0;
    if (std::strncmp(argv[i], "--style=", 8) == 0) style = argv[i] + 8;
  }
  const auto encoder = encoderName == "ffmpeg" ? ChannelEncoder::Ffmpeg : ChannelEncoder::Own;
  const std::size_t colours = encoderName == "own4" ? 4 : encoderName == "own256" ? 256 : 16;

  std::vector<std::string> truth;
  for (std::string line; std::getline(truthFile, line);) truth.push_back(line);

  const auto engine = recognition::openTesseract(language);
  recognition::ShapeBook book;
  recognition::PictureReader reader(
      {.engine = engine.get(),
       .book = &book,
       .script = language == "ara" ? recognition::Script::Joined : recognition::Script::Separate});

  const std::size_t frameBytes = std::size_t{width} * height * 4;
  std::vector<std::vector<std::uint8_t>> first;
  std::unique_ptr<ChannelPalette> palette;
  std::size_t count = 0;
  std::vector<std::string> aloneTexts;
  double readerTime = 0;
  const auto take = [&](const std::vector<std::uint8_t>& frame) {
    const auto bitmap = throughDvb({width, height, frame}, *palette, encoder);
    const auto start = std::chrono::steady_clock::now();
    reader.add(bitmap);
    readerTime += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (alone) aloneTexts.push_back(trimmed(recognition::readBlock(*engine, pageOf(bitmap))));
    ++count;
  };
  const auto usePalette = [&] {
    std::vector<RenderedPicture> pictures;
    for (const auto& frame : first) pictures.push_back({width, height, frame});
    palette = std::make_unique<ChannelPalette>(pictures, colours);
    for (const auto& frame : first) take(frame);
    first.clear();
  };
  std::vector<std::uint8_t> frame(frameBytes);
  while (std::fread(frame.data(), 1, frameBytes, stdin) == frameBytes) {
    if (palette) {
      take(frame);
    } else {
      first.push_back(frame);
      if (first.size() == 8) usePalette();
    }
  }
  if (!palette) usePalette();

  std::size_t letters = 0, wrong = 0, aloneWrong = 0, wrongCues = 0, flagged = 0, wrongFlagged = 0,
              lines = 0, wrongStyles = 0;
  std::map<std::pair<char32_t, char32_t>, std::size_t> confusions;
  for (std::size_t i = 0; i < count && i < truth.size(); ++i) {
    std::string known = truth[i];
    for (auto& c : known)
      if (c == '|') c = '\n';
    std::string text;
    const auto picture = reader.text(i);
    for (const auto& line : picture.lines) {
      text += line.text() + '\n';
      ++lines;
      const bool isSecond = &line != &picture.lines.front();
      wrongStyles += line.runs.size() != 1 || line.runs[0].italic != (style == "italic") ||
                     line.runs[0].colour.red < 230 || line.runs[0].colour.green < 230 ||
                     (line.runs[0].colour.blue < 60) != (style == "two" && isSecond);
    }
    text = trimmed(text);
    const auto known32 = recognition::lettersOf(known);
    const auto found = differences(known32, recognition::lettersOf(text));
    letters += known32.size();
    wrong += found.count;
    wrongCues += found.count != 0;
    const bool isFlagged = picture.confidence < recognition::kDoubtful;
    flagged += isFlagged;
    wrongFlagged += isFlagged && found.count != 0;
    for (const auto& pair : found.pairs) ++confusions[pair];
    if (cues) {
      std::replace(text.begin(), text.end(), '\n', '|');
      std::fprintf(stderr, "%.3f\t%zu\t%s\t%s\t%s\n", picture.confidence, found.count,
                   language.c_str(), text.c_str(),
                   picture.doubts.empty() ? "" : picture.doubts[0].c_str());
    }
    if (errors && found.count)
      std::cerr << "#" << i << "\n  " << known << "\n  " << text << "\n  " << picture.confidence
                << (picture.doubts.empty() ? "" : " " + picture.doubts[0]) << "\n";
    if (alone) aloneWrong += differences(known32, recognition::lettersOf(aloneTexts[i])).count;
  }
  if (errors) {
    std::vector<std::pair<std::size_t, std::pair<char32_t, char32_t>>> sorted;
    for (const auto& [pair, n] : confusions) sorted.push_back({n, pair});
    std::sort(sorted.rbegin(), sorted.rend());
    for (std::size_t i = 0; i < sorted.size() && i < 30; ++i) {
      std::cerr << sorted[i].first << " '"
                << (sorted[i].second.first ? recognition::utf8Of(sorted[i].second.first) : "")
                << "' as '"
                << (sorted[i].second.second ? recognition::utf8Of(sorted[i].second.second) : "")
                << "'\n";
    }
  }
  const auto& counters = reader.counters();
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  std::printf("%zu\t%zu\t%zu\t%zu\t%zu\t%zu\t%zu\t%zu\t%zu\t%zu\t%zu\t%zu\t%.1f\t%ld\n", count,
              letters, wrong, aloneWrong, wrongCues, flagged, wrongFlagged, lines, wrongStyles,
              counters.engineLines, book.shapeCount(), book.kindCount(),
              readerTime * 1000 / double(count), usage.ru_maxrss / 1024);
}
