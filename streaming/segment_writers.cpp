// SPDX-License-Identifier: MIT
#include "streaming/segment_writers.h"

#include <utility>

#include "cues/cue_time.h"
#include "files/ttml_image_document.h"
#include "files/ttml_text_document.h"
#include "files/webvtt_file.h"
#include "streaming/box_writer.h"

namespace korr::txsub {

namespace {

using encoding::subtitling::append;
using encoding::subtitling::fromTicks90k;

constexpr StreamTicks kTicksPerMillisecond = kStreamTicksPerSecond / 1000;

// With times that count from tick 0, as the samples of a track do.
Cue onTrack(const Segment& segment, const Cue& cue) {
  return {.start = fromTicks90k(segment.ticksOf(cue.start)),
          .stop = fromTicks90k(segment.ticksOf(cue.stop)),
          .subtitle = cue.subtitle};
}

Mp4Sample wholeSegment(const Segment& segment) {
  return {.duration = static_cast<std::uint32_t>(segment.duration()), .data = {}};
}

// ISO/IEC 14496-30, 5: one document, active for the sample's time, with the track's times in it.
Mp4Sample textSample(std::string_view language, const Segment& segment,
                     const std::vector<SegmentCue>& cues) {
  TtmlTextDocument document(language);
  for (const auto& cue : cues) document.add(onTrack(segment, partIn(segment, cue.cue)));
  Mp4Sample sample = wholeSegment(segment);
  append(sample.data, document.text());
  return sample;
}

// ISO/IEC 14496-30, 5.4: the document is the first subsample, each picture one more, which the
// document names by its number from 1 on.
Mp4Sample imageSample(std::string_view language, const Segment& segment,
                      const std::vector<SegmentCue>& cues) {
  TtmlImageDocument document(language, TtmlImageDocument::Profile::Imsc1);
  PictureSet pictures;
  std::vector<ByteBuffer> files;
  for (const auto& cue : cues) {
    document.add(onTrack(segment, partIn(segment, cue.cue)),
                 [&](const TtmlImageDocument::SubtitleBitmap& bitmap, const PictureArea& area) {
                   auto picture = pictures.add(bitmap, area);
                   if (picture.isNew) files.push_back(std::move(picture.png));
                   return "urn:mpeg:14496-30:subs:" + std::to_string(picture.number);
                 });
  }
  Mp4Sample sample = wholeSegment(segment);
  append(sample.data, document.opening() + document.closing());
  sample.subsamples.push_back(static_cast<std::uint32_t>(sample.data.size()));
  for (const ByteBuffer& file : files) {
    sample.data.insert(sample.data.end(), file.begin(), file.end());
    sample.subsamples.push_back(static_cast<std::uint32_t>(file.size()));
  }
  return sample;
}

// ISO/IEC 14496-30, 7.4: the cues that are shown together are one sample; parts of one cue in
// several samples bear the same source_ID.
ByteBuffer cueBoxes(const SegmentCue& cue) {
  constexpr std::uint32_t kMostBlocks = 64;
  BoxWriter out;
  std::uint32_t part = 0;
  for (const auto& block : webVttBlocks(*cue.cue.subtitle)) {
    const auto box = out.open("vttc");
    {
      const auto source = out.open("vsid");
      out.u32(cue.id * kMostBlocks + part++ % kMostBlocks);
    }
    {
      const auto settings = out.open("sttg");
      out.text(block.settings);
    }
    const auto payload = out.open("payl");
    out.text(block.payload);
  }
  return out.take();
}

ByteBuffer emptyBox() {
  BoxWriter out;
  { const auto box = out.open("vtte"); }
  return out.take();
}

std::vector<Mp4Sample> cueSamples(const Segment& segment, const std::vector<SegmentCue>& cues) {
  std::vector<Mp4Sample> samples;
  StreamTicks at = segment.startTicks;
  const auto addUpTo = [&](StreamTicks stop, ByteBuffer data) {
    if (stop <= at) return;
    samples.push_back({.duration = static_cast<std::uint32_t>(stop - at), .data = std::move(data)});
    at = stop;
  };
  for (const auto& cue : cues) {
    const Cue part = partIn(segment, cue.cue);
    ByteBuffer boxes = cueBoxes(cue);
    if (boxes.empty()) continue;
    addUpTo(segment.ticksOf(part.start), emptyBox());
    addUpTo(segment.ticksOf(part.stop), std::move(boxes));
  }
  addUpTo(segment.stopTicks, emptyBox());
  return samples;
}

}  // namespace

std::string webVttSegment(const Segment& segment, const std::vector<SegmentCue>& cues) {
  constexpr std::string_view kFirstLine = "WEBVTT\n";
  const StreamTicks local = segment.startTicks / kTicksPerMillisecond;
  const std::string map =
      "X-TIMESTAMP-MAP=MPEGTS:" + std::to_string(local * kTicksPerMillisecond % kStampWrap) +
      ",LOCAL:" + cueTimeText(local, '.') + '\n';
  std::string text;
  ColourClasses classes;
  for (const auto& cue : cues) text += webVttCues(onTrack(segment, cue.cue), &classes);
  return webVttHeader(classes).insert(kFirstLine.size(), map) + text;
}

ByteBuffer mp4Segment(Mp4Codec codec, std::string_view language, const Segment& segment,
                      const std::vector<SegmentCue>& cues) {
  std::vector<Mp4Sample> samples;
  switch (codec) {
    case Mp4Codec::StppText:
      samples.push_back(textSample(language, segment, cues));
      break;
    case Mp4Codec::StppImage:
      samples.push_back(imageSample(language, segment, cues));
      break;
    case Mp4Codec::Wvtt:
      samples = cueSamples(segment, cues);
      break;
  }
  return mp4Fragment({.codec = codec, .language = std::string(language)},
                     static_cast<std::uint32_t>(segment.number), segment.startTicks, samples);
}

}  // namespace korr::txsub
