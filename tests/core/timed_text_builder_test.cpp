#include "core/timed_text_builder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "tests/support/recording_sink.h"

namespace korr::encoding::subtitling {
namespace {

using packaging::lib_parse_es::NAL;
using packaging::lib_parse_es::UniqueNAL;
using test_support::Delivered;
using test_support::RecordingSink;
using testing::ElementsAre;
using testing::IsEmpty;

/// What the parser and the writer of a test do, and what they saw.
struct Script {
  bool changed = false;
  bool throwsOnConvert = false;
  std::string initialDocument;
  std::function<std::string(MediaTime)> document = [](MediaTime time) {
    return "document of " + std::to_string(time / kSecond);
  };

  std::vector<MediaTime> parsed;
  std::vector<MediaTime> converted;
  bool sawContinuity = false;
  bool sawData = false;
  int probes = 0;
};

class ScriptedParser final : public ISubtitleParser {
 public:
  explicit ScriptedParser(Script& script) : script_(script) {}

  void parse(const std::uint8_t* data, std::int64_t size, MediaTime time,
             bool discontinuity) override {
    script_.parsed.push_back(time);
    script_.sawContinuity |= !discontinuity;
    script_.sawData |= data != nullptr || size != 0;
  }
  bool hasChanged() override { return script_.changed; }

 private:
  Script& script_;
};

class ScriptedWriter final : public ISubtitleConverter {
 public:
  explicit ScriptedWriter(Script& script) : script_(script) {}

  void convert(ByteBuffer& out, MediaTime time) override {
    if (script_.throwsOnConvert) throw std::runtime_error("cannot convert");
    script_.converted.push_back(time);
    out.clear();
    append(out, script_.document(time));
  }
  void initialDocument(ByteBuffer& out) override {
    ++script_.probes;
    out.clear();
    append(out, script_.initialDocument);
  }

 private:
  Script& script_;
};

/// Times of this test are whole seconds.
class TimingRule : public testing::Test {
 protected:
  void unitAt(double seconds, bool changed = false) {
    script.changed = changed;
    UniqueNAL unit(new NAL);
    unit->hasTime = true;
    unit->startTime = static_cast<MediaTime>(seconds * kSecond);
    builder().onNal(std::move(unit));
  }

  TimedTextBuilder& builder() {
    if (!builder_) {
      builder_ =
          std::make_unique<TimedTextBuilder>(sink, std::make_unique<ScriptedParser>(script),
                                             std::make_unique<ScriptedWriter>(script), settings);
    }
    return *builder_;
  }

  // "text [start, stop)" in seconds.
  std::vector<std::string> shown() const {
    std::vector<std::string> lines;
    for (const auto& buffer : sink.delivered) {
      lines.push_back(buffer.data + " [" + seconds(buffer.start) + ", " + seconds(buffer.stop) +
                      ")");
    }
    return lines;
  }

  TimedTextBuilder::Settings settings{.segmentDuration = 2 * kSecond, .isTtml = false};
  RecordingSink sink;
  Script script;

 private:
  static std::string seconds(MediaTime time) {
    const auto tenths = time * 10 / kSecond;
    return std::to_string(tenths / 10) + (tenths % 10 ? "." + std::to_string(tenths % 10) : "");
  }

  std::unique_ptr<TimedTextBuilder> builder_;
};

TEST_F(TimingRule, DiscardsUnitsWithoutATime) {
  builder().onNal(UniqueNAL(new NAL));
  EXPECT_THAT(script.parsed, IsEmpty());
  EXPECT_EQ(builder().counters().untimedUnits, 1u);
}

TEST_F(TimingRule, HandsEmptyUnitsToTheParserWithoutDataAndAlwaysAsDiscontinuous) {
  unitAt(1);
  EXPECT_THAT(script.parsed, ElementsAre(1 * kSecond));
  EXPECT_FALSE(script.sawData);
  EXPECT_FALSE(script.sawContinuity);
}

TEST_F(TimingRule, MakesADocumentOfTheFirstUnitAndDeliversItWithTheNext) {
  unitAt(10);
  EXPECT_THAT(script.converted, ElementsAre(10 * kSecond));
  EXPECT_THAT(shown(), IsEmpty());
  unitAt(12);
  EXPECT_THAT(shown(), ElementsAre("document of 10 [10, 12)"));
  EXPECT_THAT(script.converted, ElementsAre(10 * kSecond, 12 * kSecond));
}

TEST_F(TimingRule, RepeatsADocumentForEverySegment) {
  unitAt(10);
  unitAt(15);
  EXPECT_THAT(shown(), ElementsAre("document of 10 [10, 12)", "document of 10 [12, 14)",
                                   "document of 10 [14, 15)"));
}

TEST_F(TimingRule, DeliversAChangeAtOnceAndTheUnchangedAfterASegment) {
  unitAt(10);
  unitAt(11.9);
  EXPECT_THAT(shown(), IsEmpty());
  unitAt(11.9, true);
  EXPECT_THAT(shown(), ElementsAre("document of 10 [10, 11.9)"));
  unitAt(13.8);
  EXPECT_EQ(sink.delivered.size(), 1u);
  unitAt(13.9);
  EXPECT_EQ(shown().back(), "document of 11 [11.9, 13.9)");
}

TEST_F(TimingRule, ParsesButDeliversNothingForTimesThatDoNotAdvance) {
  unitAt(10);
  unitAt(10, true);
  unitAt(4, true);
  EXPECT_EQ(script.parsed.size(), 3u);
  EXPECT_THAT(script.converted, ElementsAre(10 * kSecond));
  EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(TimingRule, BeginsAnewAfterUnitsAtTimeZero) {
  unitAt(0);
  unitAt(0);
  unitAt(5);
  EXPECT_THAT(script.converted, ElementsAre(0u, 0u, 5 * kSecond));
  EXPECT_THAT(shown(), IsEmpty());
  unitAt(6, true);
  EXPECT_THAT(shown(), ElementsAre("document of 5 [5, 6)"));
}

TEST_F(TimingRule, DeliversWholeIntervalsWhenTheSegmentDurationIsZero) {
  settings.segmentDuration = 0;
  unitAt(10);
  unitAt(75);
  EXPECT_THAT(shown(), ElementsAre("document of 10 [10, 75)"));
}

TEST_F(TimingRule, FillsADayButNotMore) {
  constexpr double kDaySeconds = 24 * 60 * 60;
  unitAt(10);
  unitAt(10 + kDaySeconds);
  EXPECT_EQ(sink.delivered.size(), 43'200u);
  sink.delivered.clear();

  unitAt(11 + 2 * kDaySeconds);  // a break in time
  EXPECT_THAT(shown(), ElementsAre("document of 86410 [86410, 86412)"));
  unitAt(12 + 2 * kDaySeconds, true);
  EXPECT_EQ(shown().back(), "document of 172811 [172811, 172812)");
}

TEST_F(TimingRule, KeepsToTheTimesOfABreak) {
  constexpr double kDaySeconds = 24 * 60 * 60;
  settings.segmentDuration = 0;
  unitAt(10);
  unitAt(20 + kDaySeconds);
  EXPECT_THAT(shown(), ElementsAre("document of 10 [10, 86410)"));

  sink.delivered.clear();
  unitAt(1e11);  // far beyond what a clock reaches
  unitAt(1e11 + 1, true);
  EXPECT_EQ(sink.delivered.size(), 2u);
}

TEST_F(TimingRule, CutsABreakAtTheNewTimeWhenSegmentsAreLonger) {
  constexpr double kDaySeconds = 24 * 60 * 60;
  settings.segmentDuration = 40 * static_cast<std::int64_t>(kDay);
  unitAt(10);
  unitAt(20 + kDaySeconds, true);
  EXPECT_THAT(shown(), ElementsAre("document of 10 [10, 86420)"));
}

TEST_F(TimingRule, KeepsTheOldDocumentWhenTheWriterThrows) {
  unitAt(10);
  script.throwsOnConvert = true;
  EXPECT_THROW(unitAt(11, true), std::runtime_error);
  EXPECT_THROW(unitAt(12, true), std::runtime_error);
  script.throwsOnConvert = false;
  unitAt(13, true);
  EXPECT_THAT(shown(), ElementsAre("document of 10 [10, 11)", "document of 10 [11, 12)",
                                   "document of 10 [12, 13)"));
}

TEST_F(TimingRule, CoversTheIntervalAfterAThrowAtTheFirstUnitWithAnEmptyDocument) {
  script.throwsOnConvert = true;
  EXPECT_THROW(unitAt(10), std::runtime_error);
  script.throwsOnConvert = false;
  unitAt(11, true);
  EXPECT_THAT(shown(), ElementsAre(" [10, 11)"));
}

TEST_F(TimingRule, CutsDocumentsIntoBuffers) {
  script.document = [](MediaTime) { return std::string(1024, 'a') + std::string(1024, 'b') + "c"; };
  unitAt(1);
  unitAt(2, true);
  EXPECT_THAT(sink.delivered,
              ElementsAre(Delivered{std::string(1024, 'a'), 1 * kSecond, 2 * kSecond, true, true},
                          Delivered{std::string(1024, 'b'), 1 * kSecond, 2 * kSecond, false, false},
                          Delivered{"c", 1 * kSecond, 2 * kSecond, false, false}));
}

TEST_F(TimingRule, AddsNoEmptyBufferToADocumentThatFillsItsLast) {
  script.document = [](MediaTime) { return std::string(2048, 'a'); };
  unitAt(1);
  unitAt(2, true);
  EXPECT_EQ(sink.delivered.size(), 2u);
}

TEST_F(TimingRule, DeliversAnEmptyDocumentAsOneEmptyBuffer) {
  script.document = [](MediaTime) { return std::string(); };
  unitAt(1);
  unitAt(2, true);
  EXPECT_THAT(sink.delivered, ElementsAre(Delivered{"", 1 * kSecond, 2 * kSecond, true, true}));
}

TEST_F(TimingRule, DropsTheRestOfADocumentWhenTheSinkHasNoBuffer) {
  script.document = [](MediaTime) { return std::string(1025, 'a'); };
  unitAt(1);
  sink.buffersLeft = 1;
  unitAt(2, true);
  EXPECT_EQ(sink.delivered.size(), 1u);
  EXPECT_EQ(builder().counters().cutDocuments, 1u);
  sink.buffersLeft = SIZE_MAX;
  unitAt(3, true);
  ASSERT_EQ(sink.delivered.size(), 3u);
  EXPECT_TRUE(sink.delivered[1].syncPoint);
}

TEST_F(TimingRule, ProbesTheInitialDocumentOfTtmlUntilItHasBytes) {
  settings.isTtml = true;
  unitAt(1);
  EXPECT_EQ(script.probes, 0);
  unitAt(2, true);
  unitAt(3, true);
  EXPECT_EQ(script.probes, 2);
  script.initialDocument = "<tt/>";
  unitAt(4, true);
  unitAt(5, true);
  EXPECT_EQ(script.probes, 3);
  EXPECT_EQ(shown().back(), "document of 4 [4, 5)");
}

TEST_F(TimingRule, ProbesNothingOutsideTtml) {
  unitAt(1);
  unitAt(2, true);
  EXPECT_EQ(script.probes, 0);
}

TEST_F(TimingRule, DropsThePendingDocumentAtTheEndUnlessFlushed) {
  unitAt(10);
  builder().onEndOfStream();
  EXPECT_THAT(shown(), IsEmpty());
  builder().flush(11 * kSecond);
  builder().flush(11 * kSecond);
  EXPECT_THAT(shown(), ElementsAre("document of 10 [10, 11)"));
}

}  // namespace
}  // namespace korr::encoding::subtitling
