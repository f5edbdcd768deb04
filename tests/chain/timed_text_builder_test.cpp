// SPDX-License-Identifier: MIT
#include "chain/timed_text_builder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <stdexcept>

#include "testkit/recording_sink.h"

namespace korr::encoding::subtitling {
namespace {

using packaging::lib_parse_es::NAL;
using packaging::lib_parse_es::UniqueNAL;
using test_support::Delivered;
using test_support::RecordingSink;

/// The builder between a parser and a writer that do what a test says, and what came of it.
class Bench {
 public:
  explicit Bench(MediaTime segment = 2 * kSecond, bool isTtml = false)
      : builder(sink, std::make_unique<Parser>(*this), std::make_unique<Writer>(*this),
                {.segmentDuration = static_cast<std::int64_t>(segment), .isTtml = isTtml}) {}

  void unitAt(double seconds, bool isChange = false) {
    changed = isChange;
    UniqueNAL unit(new NAL);
    unit->hasTime = true;
    unit->startTime = static_cast<MediaTime>(seconds * kSecond);
    builder.onNal(std::move(unit));
  }

  /// "text [start, stop)" of each buffer, in seconds.
  std::string shown() const {
    std::ostringstream lines;
    lines.precision(12);
    for (const auto& buffer : sink.delivered) {
      lines << (lines.tellp() == 0 ? "" : ", ") << buffer.data << " [" << secondsOf(buffer.start)
            << ", " << secondsOf(buffer.stop) << ")";
    }
    return lines.str();
  }

  bool changed = false;
  bool throwsOnConvert = false;
  std::optional<std::string> document;  // else that of its second
  std::string initialDocument;

  std::size_t parsed = 0;
  std::size_t converted = 0;
  bool sawContinuity = false;
  bool sawData = false;
  int probes = 0;
  RecordingSink sink;
  TimedTextBuilder builder;

 private:
  static double secondsOf(MediaTime time) { return static_cast<double>(time) / kSecond; }

  struct Parser final : ISubtitleParser {
    explicit Parser(Bench& owner) : bench(owner) {}
    void parse(const std::uint8_t* data, std::int64_t size, MediaTime,
               bool discontinuity) override {
      ++bench.parsed;
      bench.sawContinuity |= !discontinuity;
      bench.sawData |= data != nullptr || size != 0;
    }
    bool hasChanged() override { return bench.changed; }

    Bench& bench;
  };

  struct Writer final : ISubtitleConverter {
    explicit Writer(Bench& owner) : bench(owner) {}
    void convert(ByteBuffer& out, MediaTime time) override {
      if (bench.throwsOnConvert) throw std::runtime_error("cannot convert");
      ++bench.converted;
      append(out, bench.document.value_or("D" + std::to_string(time / kSecond)));
    }
    void initialDocument(ByteBuffer& out) override {
      ++bench.probes;
      append(out, bench.initialDocument);
    }

    Bench& bench;
  };
};

constexpr double kDaySeconds = 24 * 60 * 60;

TEST(TimingRule, MakesIntervalsOfTheTimesOfUnits) {
  struct Unit {
    double seconds;
    bool isChange = false;
  };
  struct Row {
    const char* name;
    std::vector<Unit> units;
    std::string shown;
    MediaTime segment = 2 * kSecond;
  };
  const Row rows[] = {
      {"a document waits for the next unit", {{10}}, ""},
      {"and is that of the first unit's time", {{10}, {12}}, "D10 [10, 12)"},
      {"repeated for every segment", {{10}, {15}}, "D10 [10, 12), D10 [12, 14), D10 [14, 15)"},
      {"a change at once, the unchanged after a segment",
       {{10}, {11.8}, {11.9, true}, {13.8}, {13.9}},
       "D10 [10, 11.9), D11 [11.9, 13.9)"},
      {"anew after units at time zero", {{0}, {0}, {5}, {6, true}}, "D5 [5, 6)"},
      {"no segments", {{10}, {75}}, "D10 [10, 75)", 0},
      {"a break without segments", {{10}, {20 + kDaySeconds}}, "D10 [10, 86410)", 0},
      {"a time far beyond what a clock reaches",
       {{10}, {1e11}, {1e11 + 1, true}},
       "D10 [10, 86410), D100000000000 [100000000000, 100000000001)",
       0},
      {"a break within a segment", {{10}, {20 + kDaySeconds, true}}, "D10 [10, 86420)", 40 * kDay},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    Bench bench(row.segment);
    for (const auto& unit : row.units) bench.unitAt(unit.seconds, unit.isChange);
    EXPECT_EQ(bench.shown(), row.shown);
  }
}

TEST(TimingRule, DiscardsUnitsWithoutATime) {
  Bench bench;
  bench.builder.onNal(UniqueNAL(new NAL));
  EXPECT_EQ(bench.parsed, 0u);
  EXPECT_EQ(bench.builder.counters().untimedUnits, 1u);
}

TEST(TimingRule, HandsEmptyUnitsToTheParserWithoutDataAndAlwaysAsDiscontinuous) {
  Bench bench;
  bench.unitAt(1);
  EXPECT_EQ(bench.parsed, 1u);
  EXPECT_FALSE(bench.sawData);
  EXPECT_FALSE(bench.sawContinuity);
}

TEST(TimingRule, ParsesButMakesNothingOfTimesThatDoNotAdvance) {
  Bench bench;
  bench.unitAt(10);
  bench.unitAt(10, true);
  bench.unitAt(4, true);
  EXPECT_EQ(bench.parsed, 3u);
  EXPECT_EQ(bench.converted, 1u);
  EXPECT_EQ(bench.shown(), "");
}

TEST(TimingRule, FillsADayButNotMore) {
  Bench bench;
  bench.unitAt(10);
  bench.unitAt(10 + kDaySeconds);
  EXPECT_EQ(bench.sink.delivered.size(), 43'200u);
  bench.sink.delivered.clear();

  bench.unitAt(11 + 2 * kDaySeconds);  // a break in time
  bench.unitAt(12 + 2 * kDaySeconds, true);
  EXPECT_EQ(bench.shown(), "D86410 [86410, 86412), D172811 [172811, 172812)");
}

TEST(TimingRule, KeepsTheOldDocumentWhenTheWriterThrows) {
  Bench bench;
  bench.unitAt(10);
  bench.throwsOnConvert = true;
  EXPECT_THROW(bench.unitAt(11, true), std::runtime_error);
  EXPECT_THROW(bench.unitAt(12, true), std::runtime_error);
  bench.throwsOnConvert = false;
  bench.unitAt(13, true);
  EXPECT_EQ(bench.shown(), "D10 [10, 11), D10 [11, 12), D10 [12, 13)");
}

TEST(TimingRule, CoversTheIntervalAfterAThrowAtTheFirstUnitWithAnEmptyDocument) {
  Bench bench;
  bench.throwsOnConvert = true;
  EXPECT_THROW(bench.unitAt(10), std::runtime_error);
  bench.throwsOnConvert = false;
  bench.unitAt(11, true);
  EXPECT_EQ(bench.shown(), " [10, 11)");
}

TEST(TimingRule, CutsDocumentsIntoBuffers) {
  const std::string full(1024, 'a');
  const std::string other(1024, 'b');
  const std::vector<std::string> cuts[] = {{""}, {full, other}, {full, other, "c"}};
  for (const auto& parts : cuts) {
    Bench bench;
    bench.document.emplace();
    std::vector<Delivered> expected;
    for (const auto& part : parts) {
      *bench.document += part;
      const bool isFirst = expected.empty();
      expected.push_back({part, 1 * kSecond, 2 * kSecond, isFirst, isFirst});
    }
    bench.unitAt(1);
    bench.unitAt(2, true);
    EXPECT_EQ(bench.sink.delivered, expected) << parts.size() << " buffers";
  }
}

TEST(TimingRule, DropsTheRestOfADocumentWhenTheSinkHasNoBuffer) {
  Bench bench;
  bench.document = std::string(1025, 'a');
  bench.unitAt(1);
  bench.sink.buffersLeft = 1;
  bench.unitAt(2, true);
  EXPECT_EQ(bench.sink.delivered.size(), 1u);
  EXPECT_EQ(bench.builder.counters().cutDocuments, 1u);
  bench.sink.buffersLeft = SIZE_MAX;
  bench.unitAt(3, true);
  ASSERT_EQ(bench.sink.delivered.size(), 3u);
  EXPECT_TRUE(bench.sink.delivered[1].syncPoint);
}

TEST(TimingRule, ProbesTheInitialDocumentOfTtmlUntilItHasBytes) {
  Bench bench(2 * kSecond, true);
  bench.unitAt(1);
  EXPECT_EQ(bench.probes, 0);
  bench.unitAt(2, true);
  bench.unitAt(3, true);
  EXPECT_EQ(bench.probes, 2);
  bench.initialDocument = "<tt/>";
  bench.unitAt(4, true);
  bench.unitAt(5, true);
  EXPECT_EQ(bench.probes, 3);
  EXPECT_THAT(bench.shown(), testing::EndsWith("D4 [4, 5)"));

  Bench notTtml;
  notTtml.unitAt(1);
  notTtml.unitAt(2, true);
  EXPECT_EQ(notTtml.probes, 0);
}

TEST(TimingRule, DropsThePendingDocumentAtTheEnd) {
  Bench bench;
  bench.unitAt(10);
  bench.builder.onEndOfStream();
  EXPECT_EQ(bench.shown(), "");
}

}  // namespace
}  // namespace korr::encoding::subtitling
