// SPDX-License-Identifier: MIT
// The library as its callers see it, from C's side.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "testkit/temporary_directory.h"
#include "txsub/txsub.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;
using Directory = korr::test_support::TemporaryDirectory;

struct Closer {
  void operator()(txsub_input* input) const { txsub_close(&input); }
  void operator()(txsub_writer* writer) const { txsub_writer_close(&writer); }
};
using Input = std::unique_ptr<txsub_input, Closer>;
using Writer = std::unique_ptr<txsub_writer, Closer>;

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// "CC1 1.068 4.638 Good evening..."
std::string describe(const txsub_input* input, const txsub_cue& cue) {
  return std::string(txsub_service_at(input, cue.service)->name) + ' ' +
         std::to_string(cue.start_ns / 1'000'000) + ' ' + std::to_string(cue.stop_ns / 1'000'000) +
         ' ' + cue.text;
}

// What there is up to now, and how it ended.
std::vector<std::string> take(txsub_input* input, txsub_result expected) {
  std::vector<std::string> cues;
  const txsub_cue* cue = nullptr;
  txsub_result result = TXSUB_OK;
  while ((result = txsub_next(input, &cue)) == TXSUB_CUE) {
    cues.push_back(describe(input, *cue));
    txsub_cue_free(&cue);
  }
  EXPECT_EQ(result, expected) << txsub_error(input);
  return cues;
}

TEST(Library, BytesInAnyPiecesGiveTheCuesOfTheFile) {
  const Directory directory;
  for (const char* sample : {"captions.ts", "teletext.ts", "captions-708.ts"}) {
    // Twice over: long enough to be read in the middle, with a jump of the clock.
    const std::string once = contentOf("samples/" + std::string(sample));
    const std::string bytes = once + once;
    const Input file(txsub_open(directory.write(sample, bytes).c_str(), nullptr));
    const auto expected = take(file.get(), TXSUB_END);
    ASSERT_FALSE(expected.empty()) << txsub_error(file.get());
    for (const std::size_t size : {std::size_t{1000}, std::size_t{128} * 1024, bytes.size()}) {
      const Input stream(txsub_open_stream(nullptr));
      std::vector<std::string> cues;
      for (std::size_t at = 0; at < bytes.size(); at += size) {
        const auto* const piece = reinterpret_cast<const std::uint8_t*>(bytes.data()) + at;
        ASSERT_EQ(txsub_push(stream.get(), piece, std::min(size, bytes.size() - at)), TXSUB_OK);
        for (auto& cue : take(stream.get(), TXSUB_MORE)) cues.push_back(std::move(cue));
      }
      EXPECT_FALSE(cues.empty()) << "none comes before the end of " << sample;
      EXPECT_EQ(txsub_end(stream.get()), TXSUB_OK);
      for (auto& cue : take(stream.get(), TXSUB_END)) cues.push_back(std::move(cue));
      EXPECT_THAT(cues, testing::UnorderedElementsAreArray(expected)) << sample << ' ' << size;
    }
  }
}

TEST(Library, SamplesGiveCuesWithStyles) {
  const Input input(txsub_open_samples(TXSUB_CAPTIONS, nullptr, 0, nullptr));
  const auto push = [&](std::int64_t ms, std::initializer_list<int> pairs) {
    std::vector<std::uint8_t> triplets;
    for (const int pair : pairs) {
      triplets.insert(triplets.end(), {0xFC, static_cast<std::uint8_t>(pair >> 8),
                                       static_cast<std::uint8_t>(pair & 0xFF)});
    }
    EXPECT_EQ(txsub_push_sample(input.get(), triplets.data(), triplets.size(), ms * 1'000'000),
              TXSUB_OK);
  };
  // Pop-on, row 15, yellow.
  push(1000, {0x9420, 0x9420, 0x94EA, 0x94EA, 0xC8E9, 0x942F, 0x942F});
  push(3000, {0x942C, 0x942C});
  EXPECT_EQ(txsub_end(input.get()), TXSUB_OK);
  const txsub_cue* cue = nullptr;
  ASSERT_EQ(txsub_next(input.get(), &cue), TXSUB_CUE);
  EXPECT_EQ(describe(input.get(), *cue), "CC1 0 2000 Hi");
  ASSERT_EQ(cue->line_count, 1U);
  ASSERT_EQ(cue->lines[0].run_count, 1U);
  EXPECT_EQ(cue->lines[0].runs[0].foreground, 0xFFFF00U);
  EXPECT_GT(cue->lines[0].top, 70);
  txsub_cue_free(&cue);
  EXPECT_EQ(cue, nullptr);
}

TEST(Library, PicturesAndWritersAgreeWithTheDisplay) {
  const Directory directory;
  Input input(txsub_open("samples/dvb.ts", nullptr));
  const txsub_cue* cue = nullptr;
  ASSERT_EQ(txsub_next(input.get(), &cue), TXSUB_CUE) << txsub_error(input.get());
  ASSERT_NE(cue->picture, nullptr);
  const txsub_picture& picture = *cue->picture;
  EXPECT_EQ(picture.display_width, 720U);
  EXPECT_LE(picture.x + picture.width, picture.display_width);
  const auto isSeenInColumn = [&](std::size_t column) {
    bool isSeen = false;
    for (std::size_t row = 0; row < picture.height; ++row) {
      isSeen |= picture.rgba[(row * picture.width + column) * 4 + 3] != 0;
    }
    return isSeen;
  };
  EXPECT_TRUE(isSeenInColumn(0)) << "the part that is seen begins too far to the left";
  EXPECT_TRUE(isSeenInColumn(picture.width - 1)) << "it ends too far to the right";

  const Writer writer(txsub_writer_open(directory.file("out.ttml").c_str(),
                                        txsub_service_at(input.get(), cue->service)));
  input.reset();  // a cue lives on
  EXPECT_EQ(txsub_writer_add(writer.get(), cue), TXSUB_OK) << txsub_writer_error(writer.get());
  EXPECT_EQ(txsub_writer_finish(writer.get()), TXSUB_OK);
  EXPECT_THAT(directory.read("out.ttml"), HasSubstr("smpte:image"));
  txsub_cue_free(&cue);
}

TEST(Library, MisuseIsAnErrorThatSaysWhich) {
  const txsub_cue* cue = nullptr;
  EXPECT_EQ(txsub_push(nullptr, nullptr, 1), TXSUB_FAILED);
  EXPECT_EQ(txsub_next(nullptr, &cue), TXSUB_FAILED);
  EXPECT_EQ(txsub_end(nullptr), TXSUB_FAILED);
  EXPECT_EQ(txsub_service_at(nullptr, 0), nullptr);
  EXPECT_STREQ(txsub_error(nullptr), "there is no input");
  EXPECT_EQ(txsub_writer_add(nullptr, nullptr), TXSUB_FAILED);
  txsub_close(nullptr);
  txsub_cue_free(nullptr);
  txsub_writer_close(nullptr);

  const auto errorOf = [](const Input& input) { return std::string(txsub_error(input.get())); };
  txsub_options options = TXSUB_OPTIONS_INIT;
  options.page = "CC9";
  const Input wrongPage(txsub_open("samples/captions.ts", &options));
  EXPECT_EQ(errorOf(wrongPage), "'CC9' is neither a caption service nor a page");
  EXPECT_EQ(txsub_next(wrongPage.get(), &cue), TXSUB_FAILED);
  EXPECT_EQ(errorOf(Input(txsub_open(nullptr, nullptr))), "there is no path");
  EXPECT_THAT(errorOf(Input(txsub_open("none.ts", nullptr))), StartsWith("cannot read 'none.ts'"));
  EXPECT_THAT(errorOf(Input(txsub_open_samples(static_cast<txsub_kind>(3), nullptr, 0, nullptr))),
              HasSubstr("no samples of this kind"));

  const Input file(txsub_open("samples/captions.ts", nullptr));
  const std::uint8_t byte = 0;
  EXPECT_EQ(txsub_push(file.get(), &byte, 1), TXSUB_FAILED);
  EXPECT_EQ(txsub_end(file.get()), TXSUB_FAILED);
  EXPECT_EQ(txsub_next(file.get(), nullptr), TXSUB_FAILED);
  EXPECT_THAT(take(file.get(), TXSUB_END), SizeIs(16));
  EXPECT_EQ(txsub_next(file.get(), &cue), TXSUB_END);

  const Input stream(txsub_open_stream(nullptr));
  EXPECT_EQ(txsub_push_sample(stream.get(), &byte, 1, 0), TXSUB_FAILED);
  EXPECT_EQ(txsub_end(stream.get()), TXSUB_OK);
  EXPECT_EQ(txsub_end(stream.get()), TXSUB_FAILED);
  EXPECT_EQ(errorOf(stream), "the input has been ended");
  EXPECT_EQ(txsub_push(stream.get(), &byte, 1), TXSUB_FAILED);

  const Directory directory;
  const txsub_service service = *txsub_service_at(file.get(), 0);
  const Writer wrongName(txsub_writer_open("out.xyz", &service));
  EXPECT_THAT(txsub_writer_error(wrongName.get()), HasSubstr("ends in none of"));
  EXPECT_EQ(txsub_writer_finish(wrongName.get()), TXSUB_FAILED);
  const Writer writer(txsub_writer_open(directory.file("out.srt").c_str(), &service));
  EXPECT_EQ(txsub_writer_add(writer.get(), nullptr), TXSUB_FAILED);
  EXPECT_EQ(txsub_writer_finish(writer.get()), TXSUB_OK);
  EXPECT_EQ(txsub_writer_finish(writer.get()), TXSUB_FAILED);
  { const Writer dropped(txsub_writer_open(directory.file("dropped.vtt").c_str(), &service)); }
  EXPECT_THAT(directory.names(), ElementsAre("out.srt"));
}

TEST(Library, DamageIsToldAndCostsLittle) {
  std::string bytes = contentOf("samples/captions.ts");
  bytes.replace(bytes.size() / 2, 300, 300, '\0');
  std::vector<std::string> messages;
  txsub_options options = TXSUB_OPTIONS_INIT;
  options.page = "cc1";
  options.context = &messages;
  options.warn = [](void* context, const char* message) {
    static_cast<std::vector<std::string>*>(context)->emplace_back(message);
  };
  const Input input(txsub_open_stream(&options));
  EXPECT_EQ(
      txsub_push(input.get(), reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()),
      TXSUB_OK);
  EXPECT_EQ(txsub_end(input.get()), TXSUB_OK);
  EXPECT_GE(take(input.get(), TXSUB_END).size(), 7U);
  ASSERT_FALSE(messages.empty());
  EXPECT_THAT(messages.front(), HasSubstr("byte "));
}

}  // namespace
