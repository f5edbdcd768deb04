// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "streaming/dash_manifest.h"
#include "streaming/hls_playlist.h"
#include "streaming/mp4_track.h"
#include "tests/streaming/mp4_boxes.h"
#include "tests/streaming/published.h"

namespace korr::txsub {
namespace {

using encoding::subtitling::kSecond;
using testing::HasSubstr;
using testing::Not;

const SegmentNames kVtt{.prefix = "webvtt/", .extension = ".vtt"};
const SegmentNames kMp4{.prefix = "im1t/", .extension = ".m4s", .map = "im1t/init.mp4"};

TEST(HlsPlaylist, ListsTheWindowWithItsJumps) {
  StreamHistory history(24 * kSecond, 6 * kSecond);
  Publisher publisher(history);
  publisher.publish(2);
  publisher.jump(5);
  publisher.publish(1);
  publisher.jump(5);
  publisher.publish(5);
  EXPECT_EQ(toText(playlistOf(history, kMp4, false)), R"(#EXTM3U
#EXT-X-VERSION:6
#EXT-X-TARGETDURATION:9
#EXT-X-MEDIA-SEQUENCE:3
#EXT-X-DISCONTINUITY-SEQUENCE:1
#EXT-X-MAP:URI="im1t/init.mp4"
#EXT-X-DISCONTINUITY
#EXT-X-PROGRAM-DATE-TIME:2026-01-01T00:00:18.000Z
#EXTINF:6.000000,
im1t/4.m4s
#EXT-X-PROGRAM-DATE-TIME:2026-01-01T00:00:24.000Z
#EXTINF:6.000000,
im1t/5.m4s
#EXT-X-PROGRAM-DATE-TIME:2026-01-01T00:00:30.000Z
#EXTINF:6.000000,
im1t/6.m4s
#EXT-X-PROGRAM-DATE-TIME:2026-01-01T00:00:36.000Z
#EXTINF:6.000000,
im1t/7.m4s
#EXT-X-PROGRAM-DATE-TIME:2026-01-01T00:00:42.000Z
#EXTINF:6.000000,
im1t/8.m4s
)");
}

TEST(HlsPlaylist, IsAnEventWithoutAWindowAndSaysItsEnd) {
  StreamHistory history(std::nullopt, 2 * kSecond);
  Publisher(history).publish(1);
  EXPECT_EQ(toText(playlistOf(history, kVtt, true)), R"(#EXTM3U
#EXT-X-VERSION:3
#EXT-X-TARGETDURATION:3
#EXT-X-MEDIA-SEQUENCE:0
#EXT-X-PLAYLIST-TYPE:EVENT
#EXT-X-PROGRAM-DATE-TIME:2026-01-01T00:00:00.000Z
#EXTINF:6.000000,
webvtt/1.vtt
#EXT-X-ENDLIST
)");
}

const SubtitleRendition kGerman{.group = "subs",
                                .name = "Deutsch \"HoH\"",
                                .language = "de",
                                .isDefault = true,
                                .forHardOfHearing = true,
                                .uri = "de.m3u8",
                                .codecs = "wvtt"};
constexpr const char* kGermanLine =
    "#EXT-X-MEDIA:TYPE=SUBTITLES,GROUP-ID=\"subs\",NAME=\"Deutsch 'HoH'\",LANGUAGE=\"de\","
    "DEFAULT=YES,AUTOSELECT=YES,FORCED=NO,"
    "CHARACTERISTICS=\"public.accessibility.transcribes-spoken-dialog,"
    "public.accessibility.describes-music-and-sound\",URI=\"de.m3u8\"\n";

TEST(MasterPlaylist, PointsTheVideosVariantsToTheSubtitles) {
  const VideoPlaylist video{.text =
                                "#EXTM3U\r\n"
                                "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"a\",URI=\"a.m3u8\"\r\n"
                                "#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS=\"avc1.64001f\"\r\n"
                                "v.m3u8\r\n"
                                "#EXT-X-STREAM-INF:BANDWIDTH=2\r\n"
                                "https://cdn/v.m3u8\r\n",
                            .uri = "video/master.m3u8",
                            .prefix = "video/"};
  EXPECT_EQ(masterPlaylist(video, {kGerman}),
            std::string("#EXTM3U\n") + kGermanLine +
                "#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"a\",URI=\"video/a.m3u8\"\n"
                "#EXT-X-STREAM-INF:BANDWIDTH=1,CODECS=\"wvtt,avc1.64001f\",SUBTITLES=\"subs\"\n"
                "video/v.m3u8\n"
                "#EXT-X-STREAM-INF:BANDWIDTH=2,SUBTITLES=\"subs\"\n"
                "https://cdn/v.m3u8\n");
}

TEST(MasterPlaylist, IsMadeForAVideoOfOneVariant) {
  EXPECT_EQ(
      masterPlaylist(
          {.text = "#EXTM3U\n#EXT-X-TARGETDURATION:6\n", .uri = "v/video.m3u8", .bandwidth = 5000},
          {kGerman}),
      std::string("#EXTM3U\n#EXT-X-VERSION:6\n") + kGermanLine +
          "#EXT-X-STREAM-INF:BANDWIDTH=5000,SUBTITLES=\"subs\"\nv/video.m3u8\n");
}

TEST(DashManifest, BeginsAPeriodWhereTheClockJumpsAndKeepsItsStart) {
  StreamHistory history(24 * kSecond, 6 * kSecond);
  Publisher publisher(history);
  publisher.publish(3);
  publisher.jump(1'000'000);
  publisher.publish(3);
  const DashTrack track{
      .id = 1, .codecs = "wvtt", .language = "de", .forHardOfHearing = true, .names = kMp4};
  EXPECT_EQ(toXml(manifestOf(history, {track}, false, 1'767'225'636'100)),
            R"(<?xml version="1.0" encoding="UTF-8"?>
<MPD xmlns="urn:mpeg:dash:schema:mpd:2011" profiles="urn:mpeg:dash:profile:isoff-live:2011" type="dynamic" minBufferTime="PT9.000000S" maxSegmentDuration="PT9.000000S" availabilityStartTime="2026-01-01T00:00:00.000Z" publishTime="2026-01-01T00:00:36.100Z" minimumUpdatePeriod="PT3.000000S" timeShiftBufferDepth="PT24.000000S">
  <Period id="0" start="PT0.000000S">
    <AdaptationSet id="1" contentType="text" mimeType="application/mp4" codecs="wvtt" lang="de" segmentAlignment="true" startWithSAP="1">
      <Accessibility schemeIdUri="urn:mpeg:dash:role:2011" value="caption" />
      <Accessibility schemeIdUri="urn:tva:metadata:cs:AudioPurposeCS:2007" value="2" />
      <Role schemeIdUri="urn:mpeg:dash:role:2011" value="caption" />
      <SegmentTemplate timescale="90000" presentationTimeOffset="90000" startNumber="2" initialization="im1t/init.mp4" media="im1t/$Number$.m4s">
        <SegmentTimeline>
          <S t="630000" d="540000" r="1" />
        </SegmentTimeline>
      </SegmentTemplate>
      <Representation id="subtitles-1" bandwidth="8000" />
    </AdaptationSet>
  </Period>
  <Period id="1" start="PT18.000000S">
    <AdaptationSet id="1" contentType="text" mimeType="application/mp4" codecs="wvtt" lang="de" segmentAlignment="true" startWithSAP="1">
      <Accessibility schemeIdUri="urn:mpeg:dash:role:2011" value="caption" />
      <Accessibility schemeIdUri="urn:tva:metadata:cs:AudioPurposeCS:2007" value="2" />
      <Role schemeIdUri="urn:mpeg:dash:role:2011" value="caption" />
      <SegmentTemplate timescale="90000" presentationTimeOffset="2710000" startNumber="4" initialization="im1t/init.mp4" media="im1t/$Number$.m4s">
        <SegmentTimeline>
          <S t="2710000" d="540000" r="2" />
        </SegmentTimeline>
      </SegmentTemplate>
      <Representation id="subtitles-1" bandwidth="8000" />
    </AdaptationSet>
  </Period>
</MPD>
)");
}

TEST(DashManifest, IsStaticAtTheEnd) {
  StreamHistory history(std::nullopt, 6 * kSecond);
  Publisher publisher(history);
  publisher.publish(2);
  publisher.jump(9);
  publisher.publish(1);
  const auto xml = toXml(manifestOf(history, {}, true, 0));
  EXPECT_THAT(xml, HasSubstr("type=\"static\""));
  EXPECT_THAT(xml, HasSubstr("mediaPresentationDuration=\"PT18.000000S\""));
  EXPECT_THAT(xml, Not(HasSubstr("minimumUpdatePeriod")));
}

std::string textAt(const ByteBuffer& bytes, std::string_view path) {
  const auto box = boxAt(bytes, path);
  return {box.begin(), box.end()};
}

TEST(Mp4Initialisation, NamesTheCodecItsHandlerAndItsLanguage) {
  const auto stpp = mp4Initialisation({.codec = Mp4Codec::StppImage, .language = "ger"});
  EXPECT_THAT(textAt(stpp, "ftyp"), HasSubstr("im1i"));
  EXPECT_EQ(textAt(stpp, "moov/trak/mdia/hdlr").substr(8, 4), "subt");
  EXPECT_THAT(textAt(stpp, "moov/trak/mdia/minf/stbl/stsd"),
              HasSubstr(std::string("http://www.w3.org/ns/ttml\0\0image/png\0", 37)));
  EXPECT_EQ(textAt(stpp, "moov/trak/mdia/elng").substr(4), std::string("de\0", 3));
  // "deu" in five bits a letter.
  EXPECT_EQ(bigEndian(boxAt(stpp, "moov/trak/mdia/mdhd"), 20, 2), (4U << 10 | 5U << 5 | 21U));
  EXPECT_EQ(textAt(stpp, "moov/trak/mdia/minf/sthd").size(), 4U);

  const auto wvtt = mp4Initialisation({.codec = Mp4Codec::Wvtt});
  EXPECT_EQ(textAt(wvtt, "moov/trak/mdia/hdlr").substr(8, 4), "text");
  EXPECT_THAT(textAt(wvtt, "moov/trak/mdia/minf/stbl/stsd"), HasSubstr("vttCWEBVTT"));
  EXPECT_EQ(textAt(wvtt, "moov/trak/mdia/minf/nmhd").size(), 4U);
}

}  // namespace
}  // namespace korr::txsub
