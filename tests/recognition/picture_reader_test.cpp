// SPDX-License-Identifier: MIT

// Pictures drawn with the letters of the samples, and an engine that knows them.
#include "recognition/picture_reader.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <deque>

#include "samples/text_picture.h"

namespace korr::recognition {
namespace {

using encoding::subtitling::PixelBuffer;

struct DrawnLine {
  std::string text;
  Colour colour{255, 255, 255, 255};
};

// The strokes of the samples' letters do not meet: a pixel more on every side joins them.
unsigned thickened(const samples::IndexedPicture& picture, std::uint32_t x, std::uint32_t y) {
  unsigned most = 0;
  for (std::uint32_t v = y - std::min(y, 1u); v <= std::min(y + 1, picture.height - 1); ++v) {
    for (std::uint32_t u = x - std::min(x, 1u); u <= std::min(x + 1, picture.width - 1); ++u) {
      most = std::max<unsigned>(most, picture.at(u, v));
    }
  }
  return most;
}

// Lines one under the other, outlined in black.
SubtitleBitmap draw(const std::vector<DrawnLine>& lines, std::uint32_t lineHeight = 40) {
  SubtitleBitmap bitmap;
  bitmap.visible = 1;
  bitmap.width = 720;
  bitmap.height = 576;
  auto pixels = std::make_shared<PixelBuffer>(bitmap.width, bitmap.height);
  pixels->addPaintedRows({0, bitmap.height});
  std::uint32_t top = 400;
  for (const auto& line : lines) {
    const auto picture = samples::textPicture(line.text, lineHeight);
    const std::uint32_t left = (bitmap.width - picture.width) / 2;
    for (std::uint32_t y = 0; y < picture.height; ++y) {
      for (std::uint32_t x = 0; x < picture.width; ++x) {
        const unsigned code = thickened(picture, x, y);
        if (code == samples::kNothing) continue;
        auto* to = pixels->data() + (std::size_t{top + y} * bitmap.width + left + x) * 4;
        const unsigned share = code - samples::kEdge;
        to[0] = static_cast<std::uint8_t>(line.colour.red * share / 14);
        to[1] = static_cast<std::uint8_t>(line.colour.green * share / 14);
        to[2] = static_cast<std::uint8_t>(line.colour.blue * share / 14);
        to[3] = 255;
      }
    }
    top += lineHeight + 4;
  }
  bitmap.pixels = std::move(pixels);
  return bitmap;
}

// Says what it was told to, spread over the width of the line.
class ToldEngine final : public ILineEngine {
 public:
  std::vector<EngineSymbol> read(const LineImage& line) override {
    ++calls;
    if (answers.empty()) return {};
    std::string text = answers.front();
    if (answers.size() > 1) answers.pop_front();
    std::vector<EngineSymbol> symbols;
    const double step = (line.width - 24.0) / double(text.size());
    bool startsWord = true;
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] == ' ') {
        startsWord = true;
        continue;
      }
      const double left = 12 + step * double(i);
      symbols.push_back({std::string(1, text[i]), left, left + step, 0.95, startsWord});
      startsWord = false;
    }
    return symbols;
  }

  std::deque<std::string> answers;
  int calls = 0;
};

class PictureReading : public testing::Test {
 protected:
  PictureReader readerWith(ILineEngine* engine) {
    return PictureReader({.engine = engine, .words = nullptr, .book = &book_});
  }

  ShapeBook book_;
  ToldEngine engine_;
};

TEST_F(PictureReading, KeepsLinesWordsColoursAndPlaces) {
  engine_.answers = {"THE FERRY", "LEAVES AT 9"};
  auto reader = readerWith(&engine_);
  const Colour yellow{255, 255, 0, 255};
  reader.add(draw({{"THE FERRY"}, {"LEAVES AT 9", yellow}}));
  const auto picture = reader.text(0);
  EXPECT_EQ(picture.text(), "THE FERRY\nLEAVES AT 9");
  ASSERT_EQ(picture.lines.size(), 2U);
  ASSERT_EQ(picture.lines[0].runs.size(), 1U);
  ASSERT_EQ(picture.lines[1].runs.size(), 1U);
  EXPECT_EQ(picture.lines[0].runs[0].colour.blue, 255);
  EXPECT_EQ(picture.lines[1].runs[0].colour.blue, 0);
  EXPECT_FALSE(picture.lines[0].runs[0].italic);
  EXPECT_NEAR(picture.lines[0].box.left + picture.lines[0].box.right, 720, 12);
  EXPECT_EQ(picture.lines[1].baseline - picture.lines[0].baseline, 44);
}

TEST_F(PictureReading, TakesADotForAPartOfWhatItStandsOver) {
  auto reader = readerWith(nullptr);
  reader.add(draw({{"A:B!"}}));
  EXPECT_EQ(reader.counters().glyphs, 4U);
}

TEST_F(PictureReading, ReadsKnownLettersWithoutTheEngine) {
  engine_.answers = {"NOON ON NOON"};
  auto reader = readerWith(&engine_);
  for (int i = 0; i < 4; ++i) reader.add(draw({{"NOON ON NOON"}}));
  const int calls = engine_.calls;
  EXPECT_LT(calls, 4);
  reader.add(draw({{"NO ONO"}}));
  EXPECT_EQ(engine_.calls, calls);
  EXPECT_EQ(reader.text(4).text(), "NO ONO");
}

TEST_F(PictureReading, OutvotesSingleErrorsOfTheEngineInEarlierPicturesToo) {
  engine_.answers = {"HOSE HOQES", "HOMES", "HOME SOME", "MOSS", "MOSS"};
  auto reader = readerWith(&engine_);
  reader.add(draw({{"HOSE HOMES"}}));
  for (const char* text : {"HOMES", "HOME SOME", "MOSS", "MOSS"}) reader.add(draw({{text}}));
  EXPECT_EQ(reader.text(0).text(), "HOSE HOMES");
}

TEST_F(PictureReading, TellsALowMarkFromAHighOneOfTheSameShape) {
  engine_.answers = {"A.B.A.B.", "A.B.A.B.", "A.B.A.B.", "A.B.A.B."};
  auto reader = readerWith(&engine_);
  reader.add(draw({{"A.B.A.B."}}));
  auto bitmap = draw({{"A.B.A.B."}});
  // The same dots, but up in the air.
  auto raised = std::make_shared<PixelBuffer>(bitmap.width, bitmap.height);
  raised->addPaintedRows({0, bitmap.height});
  std::copy_n(bitmap.pixels->data(), bitmap.pixels->size(), raised->data());
  const auto kinds = book_.kindCount();
  const auto box = reader.text(0).lines[0].box;
  const auto dot = [&](std::uint32_t y, std::uint32_t x) {
    return raised->data() + (std::size_t{y} * 720 + x) * 4;
  };
  const auto right = static_cast<std::uint32_t>(box.right) + 3;
  for (std::uint32_t y = 0; y < 12; ++y) {
    for (std::uint32_t x = right - 12; x < right; ++x) {
      std::swap_ranges(dot(static_cast<std::uint32_t>(box.bottom) - 10 + y, x),
                       dot(static_cast<std::uint32_t>(box.bottom) - 10 + y, x) + 4,
                       dot(static_cast<std::uint32_t>(box.top) - 2 + y, x));
    }
  }
  bitmap.pixels = raised;
  reader.add(bitmap);
  EXPECT_GT(book_.kindCount(), kinds) << "the raised dot counts as the low one";
}

TEST_F(PictureReading, MarksWhatNobodyHasReadAndLosesNoPicture) {
  auto reader = readerWith(nullptr);
  reader.add(draw({{"AHOY"}}));
  reader.add(SubtitleBitmap());
  EXPECT_EQ(reader.text(0).text(), "\uFFFD\uFFFD\uFFFD\uFFFD");
  EXPECT_LT(reader.text(0).confidence, kDoubtful);
  EXPECT_THAT(reader.text(0).doubts, testing::Not(testing::IsEmpty()));
  EXPECT_TRUE(reader.text(1).lines.empty());
}

TEST_F(PictureReading, WinsByHandOverEveryVote) {
  engine_.answers = {"OOOO"};
  auto reader = readerWith(&engine_);
  for (int i = 0; i < 3; ++i) reader.add(draw({{"OOOO"}}));
  ASSERT_EQ(reader.text(0).text(), "OOOO");
  for (KindId kind = 0; kind < book_.kindCount(); ++kind) book_.correct(kind, "0");
  EXPECT_EQ(reader.text(0).text(), "0000");
  EXPECT_EQ(reader.text(0).confidence, 1);
}

TEST_F(PictureReading, SurvivesNoiseBlotsAndSinglePixels) {
  auto reader = readerWith(&engine_);
  SubtitleBitmap bitmap;
  bitmap.visible = 1;
  bitmap.width = 1024;
  bitmap.height = 576;
  std::uint32_t seed = 1;
  for (const int kind : {0, 1, 2}) {
    auto pixels = std::make_shared<PixelBuffer>(bitmap.width, bitmap.height);
    pixels->addPaintedRows({0, bitmap.height});
    for (std::size_t i = 0; i < pixels->size(); i += 4) {
      seed = seed * 1664525 + 1013904223;
      const bool isNoise = kind == 0;
      const bool isBlot = kind == 1 && i % 4096 < 2000;
      const bool isDot = kind == 2 && i == 4096 * 100 + 400;
      if (!isNoise && !isBlot && !isDot) continue;
      pixels->data()[i] = static_cast<std::uint8_t>(isNoise ? seed >> 24 : 255);
      pixels->data()[i + 1] = static_cast<std::uint8_t>(isNoise ? seed >> 16 : 255);
      pixels->data()[i + 2] = static_cast<std::uint8_t>(isNoise ? seed >> 8 : 255);
      pixels->data()[i + 3] = 255;
    }
    bitmap.pixels = pixels;
    const auto number = reader.add(bitmap);
    EXPECT_LT(reader.text(number).confidence, kDoubtful) << kind;
    EXPECT_FALSE(reader.text(number).lines.empty()) << kind;
  }
}

}  // namespace
}  // namespace korr::recognition
