// SPDX-License-Identifier: MIT
#include "streaming/mp4_track.h"

#include <algorithm>

#include "cues/language_tag.h"
#include "streaming/box_writer.h"

namespace korr::txsub {

namespace {

using Box = BoxWriter::Box;

constexpr std::uint32_t kTrackId = 1;
constexpr std::uint32_t kTimescale = kStreamTicksPerSecond;
constexpr std::uint32_t kFixedOne = 0x00010000;  // 16.16

// ISO/IEC 14496-12, 6.2.2.
void writeMatrix(BoxWriter& out) {
  for (const std::uint32_t value : {kFixedOne, 0U, 0U, 0U, kFixedOne, 0U, 0U, 0U, 0x40000000U}) {
    out.u32(value);
  }
}

bool isStpp(Mp4Codec codec) {
  return codec != Mp4Codec::Wvtt;
}

// CMAF (ISO/IEC 23000-19, annex on subtitles): the brand of each kind of track.
const char* trackBrand(Mp4Codec codec) {
  switch (codec) {
    case Mp4Codec::StppText:
      return "im1t";
    case Mp4Codec::StppImage:
      return "im1i";
    case Mp4Codec::Wvtt:
      break;
  }
  return "cwvt";
}

// 4.3 and 8.16.2.
void writeBrands(BoxWriter& out, const char* box, Mp4Codec codec) {
  const Box brands = out.open(box);
  out.text("cmfc");
  out.u32(0);
  for (const char* brand : {"iso6", "dash", "cmfc", trackBrand(codec)}) out.text(brand);
}

// 8.2.2.
void writeMovieHeader(BoxWriter& out) {
  const Box box = out.openFull("mvhd", 0, 0);
  out.zeros(8);  // creation_time, modification_time
  out.u32(kTimescale);
  out.u32(0);          // duration: in fragments
  out.u32(kFixedOne);  // rate
  out.u16(0x0100);     // volume
  out.zeros(10);
  writeMatrix(out);
  out.zeros(24);  // pre_defined
  out.u32(kTrackId + 1);
}

// 8.3.2.
void writeTrackHeader(BoxWriter& out) {
  constexpr std::uint32_t kEnabledInMovieInPreview = 0x7;
  const Box box = out.openFull("tkhd", 0, kEnabledInMovieInPreview);
  out.zeros(8);
  out.u32(kTrackId);
  out.zeros(4);
  out.u32(0);    // duration
  out.zeros(8);  // reserved
  out.u16(0);    // layer
  out.u16(0);    // alternate_group
  out.u16(0);    // volume: none
  out.u16(0);
  writeMatrix(out);
  out.zeros(8);  // width, height: those of the video
}

// ISO 639-2/T in three times five bits, "und" where it is no code.
std::uint16_t packedLanguage(const std::string& language) {
  std::string code = terminologicalCode(language);
  std::uint16_t packed = 0;
  for (const char c : code) packed = static_cast<std::uint16_t>(packed << 5 | (c - 0x60));
  return packed;
}

// 8.4.2.
void writeMediaHeader(BoxWriter& out, const std::string& language) {
  const Box box = out.openFull("mdhd", 0, 0);
  out.zeros(8);
  out.u32(kTimescale);
  out.u32(0);
  out.u16(packedLanguage(language));
  out.u16(0);
}

// 8.4.3; the handlers are those of ISO/IEC 14496-30, 5.2 and 7.2.
void writeHandler(BoxWriter& out, Mp4Codec codec) {
  const Box box = out.openFull("hdlr", 0, 0);
  out.u32(0);
  out.text(isStpp(codec) ? "subt" : "text");
  out.zeros(12);
  out.terminated("subtitles");
}

// 8.4.6: the language once more, as BCP 47.
void writeExtendedLanguage(BoxWriter& out, const std::string& language) {
  const Box box = out.openFull("elng", 0, 0);
  out.terminated(languageTag(language));
}

// 8.5.2, 12.6.3: XMLSubtitleSampleEntry.
void writeStppEntry(BoxWriter& out, Mp4Codec codec) {
  const Box entry = out.open("stpp");
  out.zeros(6);
  out.u16(1);  // data_reference_index
  out.terminated("http://www.w3.org/ns/ttml");
  out.terminated("");  // schema_location
  out.terminated(codec == Mp4Codec::StppImage ? "image/png" : "");
  const Box mime = out.openFull("mime", 0, 0);  // 12.3.3.2
  out.terminated(std::string("application/ttml+xml;codecs=") +
                 (codec == Mp4Codec::StppImage ? "im1i" : "im1t"));
}

// ISO/IEC 14496-30, 7.5: WVTTSampleEntry.
void writeWvttEntry(BoxWriter& out) {
  const Box entry = out.open("wvtt");
  out.zeros(6);
  out.u16(1);
  const Box configuration = out.open("vttC");
  out.text("WEBVTT");
}

// 8.5: no samples here, they come in fragments.
void writeSampleTable(BoxWriter& out, Mp4Codec codec) {
  const Box table = out.open("stbl");
  {
    const Box descriptions = out.openFull("stsd", 0, 0);
    out.u32(1);
    isStpp(codec) ? writeStppEntry(out, codec) : writeWvttEntry(out);
  }
  for (const char* empty : {"stts", "stsc"}) {
    const Box box = out.openFull(empty, 0, 0);
    out.u32(0);
  }
  {
    const Box sizes = out.openFull("stsz", 0, 0);
    out.u32(0);  // sample_size
    out.u32(0);  // sample_count
  }
  const Box offsets = out.openFull("stco", 0, 0);
  out.u32(0);
}

// 8.7: the data is in this file.
void writeDataInformation(BoxWriter& out) {
  const Box information = out.open("dinf");
  const Box references = out.openFull("dref", 0, 0);
  out.u32(1);
  const Box url = out.openFull("url ", 0, 1);
}

void writeMedia(BoxWriter& out, const Mp4Track& track) {
  const Box media = out.open("mdia");
  writeMediaHeader(out, track.language);
  writeHandler(out, track.codec);
  writeExtendedLanguage(out, track.language);
  const Box information = out.open("minf");
  {
    // 12.6.2 for subtitles, 8.4.5.2 for text.
    const Box header = out.openFull(isStpp(track.codec) ? "sthd" : "nmhd", 0, 0);
  }
  writeDataInformation(out);
  writeSampleTable(out, track.codec);
}

// 8.8.1 and 8.8.3.
void writeMovieExtends(BoxWriter& out) {
  const Box extends = out.open("mvex");
  const Box defaults = out.openFull("trex", 0, 0);
  out.u32(kTrackId);
  out.u32(1);  // default_sample_description_index
  out.zeros(12);
}

// 8.8.8: a duration and a size for each sample. Answers where data_offset stands.
std::size_t writeRun(BoxWriter& out, const std::vector<Mp4Sample>& samples) {
  constexpr std::uint32_t kDataOffset = 0x000001;
  constexpr std::uint32_t kDurations = 0x000100;
  constexpr std::uint32_t kSizes = 0x000200;
  const Box run = out.openFull("trun", 0, kDataOffset | kDurations | kSizes);
  out.u32(static_cast<std::uint32_t>(samples.size()));
  const std::size_t dataOffset = out.size();
  out.u32(0);
  for (const Mp4Sample& sample : samples) {
    out.u32(sample.duration);
    out.u32(static_cast<std::uint32_t>(sample.data.size()));
  }
  return dataOffset;
}

// 8.7.7: only samples with subsamples have an entry.
void writeSubsamples(BoxWriter& out, const std::vector<Mp4Sample>& samples) {
  const auto isDivided = [](const Mp4Sample& sample) { return !sample.subsamples.empty(); };
  const auto count = std::ranges::count_if(samples, isDivided);
  if (count == 0) return;
  const Box box = out.openFull("subs", 1, 0);
  out.u32(static_cast<std::uint32_t>(count));
  std::uint32_t delta = 0;
  for (const Mp4Sample& sample : samples) {
    ++delta;
    if (!isDivided(sample)) continue;
    out.u32(delta);
    out.u16(static_cast<std::uint16_t>(sample.subsamples.size()));
    for (const std::uint32_t size : sample.subsamples) {
      out.u32(size);
      out.u8(0);   // subsample_priority
      out.u8(0);   // discardable
      out.u32(0);  // codec_specific_parameters
    }
    delta = 0;
  }
}

// 8.8.4 to 8.8.12. Answers where the run's data_offset stands.
std::size_t writeMovieFragment(BoxWriter& out, std::uint32_t sequence, StreamTicks decodeTime,
                               const std::vector<Mp4Sample>& samples) {
  constexpr std::uint32_t kDefaultBaseIsMoof = 0x020000;
  const Box fragment = out.open("moof");
  {
    const Box header = out.openFull("mfhd", 0, 0);
    out.u32(sequence);
  }
  const Box trackFragment = out.open("traf");
  {
    const Box header = out.openFull("tfhd", 0, kDefaultBaseIsMoof);
    out.u32(kTrackId);
  }
  {
    const Box time = out.openFull("tfdt", 1, 0);
    out.u64(decodeTime);
  }
  const std::size_t dataOffset = writeRun(out, samples);
  writeSubsamples(out, samples);
  return dataOffset;
}

}  // namespace

const char* codecsParameter(Mp4Codec codec) {
  switch (codec) {
    case Mp4Codec::StppText:
      return "stpp.ttml.im1t";
    case Mp4Codec::StppImage:
      return "stpp.ttml.im1i";
    case Mp4Codec::Wvtt:
      break;
  }
  return "wvtt";
}

ByteBuffer mp4Initialisation(const Mp4Track& track) {
  BoxWriter out;
  writeBrands(out, "ftyp", track.codec);
  {
    const Box movie = out.open("moov");
    writeMovieHeader(out);
    {
      const Box trackBox = out.open("trak");
      writeTrackHeader(out);
      writeMedia(out, track);
    }
    writeMovieExtends(out);
  }
  return out.take();
}

ByteBuffer mp4Fragment(const Mp4Track& track, std::uint32_t sequence, StreamTicks decodeTime,
                       const std::vector<Mp4Sample>& samples) {
  BoxWriter out;
  writeBrands(out, "styp", track.codec);
  const std::size_t fragment = out.size();
  const std::size_t dataOffset = writeMovieFragment(out, sequence, decodeTime, samples);
  constexpr std::size_t kBoxHeader = 8;
  out.putU32(dataOffset, static_cast<std::uint32_t>(out.size() + kBoxHeader - fragment));
  {
    const Box data = out.open("mdat");
    for (const Mp4Sample& sample : samples) out.bytes(sample.data);
  }
  return out.take();
}

}  // namespace korr::txsub
