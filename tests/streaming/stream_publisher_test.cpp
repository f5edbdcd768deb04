// SPDX-License-Identifier: MIT
#include "streaming/stream_publisher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "files/output_file.h"
#include "testkit/cue_builder.h"
#include "testkit/temporary_directory.h"
#include "tests/streaming/checked_store.h"

namespace korr::txsub {
namespace {

using encoding::subtitling::kSecond;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;

const StreamService kGerman{.folder = "0x0034-page-888-ger", .name = "German", .language = "ger"};
const StreamService kDvb{
    .folder = "0x0035", .name = "French", .language = "fre", .hasPictures = true};

// One run of a programme into a store.
class StreamRun {
 public:
  explicit StreamRun(IStreamStore& store, std::optional<MediaTime> window = 30 * kSecond)
      : publisher_(store, {.window = window, .video = {}, .now = [] { return WallTime{0}; }}) {
    publisher_.offer(kGerman);
    start_ = MediaTime{publisher_.history().nextNumber()} * 1000 * kSecond;
    isFirst_ = publisher_.history().nextNumber() != 1;
  }

  void segments(int count) {
    for (int i = 0; i < count; ++i, start_ += 6 * kSecond) {
      const Segment segment{.number = publisher_.history().nextNumber(),
                            .start = start_,
                            .stop = start_ + 6 * kSecond,
                            .startTicks = toStreamTicks(start_),
                            .stopTicks = toStreamTicks(start_ + 6 * kSecond),
                            .isDiscontinuous = isFirst_ || i % 7 == 3};
      isFirst_ = false;
      publisher_.publish(segment, static_cast<WallTime>(start_ / 10'000),
                         [&](const StreamService& service) { return cuesOf(service, segment); });
    }
  }

  StreamPublisher& publisher() { return publisher_; }

 private:
  static std::vector<SegmentCue> cuesOf(const StreamService& service, const Segment& segment) {
    if (service.hasPictures) return {};
    const MediaTime ms = segment.start / 10'000;
    return {{.cue = cue(ms + 1000, ms + 2000, captions({captionRow(15, 0, "A")})), .id = 1}};
  }

  StreamPublisher publisher_;
  MediaTime start_ = 0;
  bool isFirst_ = false;
};

std::uint64_t lastNumberOf(const ReadPlaylist& playlist) {
  return playlist.mediaSequence + playlist.entries.size();
}

TEST(StreamPublisher, KeepsEveryPlaylistTrueAndRemovesWhatIsOld) {
  CheckedStore store;
  StreamRun run(store);
  run.segments(40);
  EXPECT_THAT(store.faults, IsEmpty());
  EXPECT_FALSE(store.files.contains("0x0034-page-888-ger/webvtt-1.vtt"));
  EXPECT_TRUE(store.files.contains("0x0034-page-888-ger/webvtt-36.vtt"));
  EXPECT_LT(store.files.size(), 50U);
  run.publisher().end();
  EXPECT_THAT(store.files["0x0034-page-888-ger/im1t.m3u8"], HasSubstr("#EXT-X-ENDLIST"));
  EXPECT_THAT(store.files["subtitles.mpd"], HasSubstr("type=\"static\""));
}

TEST(StreamPublisher, BeginsAServiceThatComesLateWithEmptySegments) {
  CheckedStore store;
  StreamRun run(store);
  run.segments(8);
  run.publisher().offer(kDvb);
  run.segments(1);
  EXPECT_THAT(store.faults, IsEmpty());
  EXPECT_TRUE(store.files.contains("0x0035/im1i-5.m4s"));
  EXPECT_THAT(store.files["subtitles.mpd"], HasSubstr("stpp.ttml.im1i"));
  EXPECT_THAT(store.files["media-lines.m3u8"],
              HasSubstr("NAME=\"German\",LANGUAGE=\"de\",DEFAULT=NO"));
}

// Whatever change a run is killed before, everything is as players need it, and the next run goes
// on with numbers and says so.
TEST(StreamPublisher, CanBeKilledBeforeAnyChange) {
  std::uint64_t changes = 0;
  {
    CheckedStore store;
    StreamRun(store).segments(12);
    changes = store.changes;
  }
  ASSERT_GT(changes, 100U);
  for (std::uint64_t at = 0; at < changes; ++at) {
    CheckedStore store;
    store.killAt = at;
    EXPECT_THROW(StreamRun(store).segments(12), CheckedStore::Killed);
    store.beginRun();
    store.checkAll();
    const auto playlist = store.get("0x0034-page-888-ger/webvtt.m3u8");
    StreamRun(store).segments(12);
    ASSERT_THAT(store.faults, IsEmpty()) << "killed before change " << at;
    const auto after = readPlaylist(store.files["0x0034-page-888-ger/webvtt.m3u8"]);
    EXPECT_GE(lastNumberOf(after), (playlist ? lastNumberOf(readPlaylist(*playlist)) : 0) + 12);
  }
}

TEST(StreamPublisher, SaysDiscontinuityWhereARunGoesOn) {
  CheckedStore store;
  StreamRun(store, std::nullopt).segments(2);
  store.beginRun();
  StreamRun(store, std::nullopt).segments(1);
  const auto playlist = readPlaylist(store.files["0x0034-page-888-ger/webvtt.m3u8"]);
  ASSERT_EQ(playlist.entries.size(), 3U);
  EXPECT_TRUE(playlist.entries[2].isDiscontinuous);
  EXPECT_EQ(playlist.entries[2].uri, "webvtt-3.vtt");
}

TEST(StreamPublisher, RefusesWhatIsNoStreamOfItsOwn) {
  CheckedStore store;
  store.files["stream.json"] = "{}";
  EXPECT_THROW(StreamRun run(store), OutputError);
}

TEST(DirectoryStore, WritesWholeFilesAndClearsWhatAKilledRunLeft) {
  const test_support::TemporaryDirectory directory;
  const std::string path = directory.file("stream");
  DirectoryStore(path).put("a/1.vtt", "text");
  DirectoryStore(path).put("a/2.vtt.part123", "torn");
  DirectoryStore store(path);
  EXPECT_EQ(store.get("a/1.vtt"), "text");
  EXPECT_FALSE(store.get("a/2.vtt.part123"));
  store.remove("a/1.vtt");
  store.remove("a/1.vtt");
  EXPECT_FALSE(store.get("a/1.vtt"));
}

}  // namespace
}  // namespace korr::txsub
