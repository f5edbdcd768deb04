// SPDX-License-Identifier: MIT

// How fast line-21 pairs are decoded, and how much the chain around the decoder adds.
#include <benchmark/benchmark.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "chain/conversion_chain.h"
#include "closed_caption/caption_display_decoder.h"
#include "closed_caption/closed_caption_parser.h"
#include "cues/growing_rows.h"
#include "dtvcc/dtvcc_display_decoder.h"
#include "testkit/encoders/caption_builder.h"
#include "testkit/encoders/dtvcc_encoder.h"

namespace korr::encoding::subtitling {
namespace {

using encoders::CaptionBuilder;

constexpr std::size_t kTripletBytes = 3;

/// Two rows of a film, as pop-on captions send them: codes twice, text once.
std::vector<std::uint8_t> popOnCaption() {
  return CaptionBuilder()
      .eraseNonDisplayedMemory()
      .twice()
      .resumeCaptionLoading()
      .twice()
      .preamble(14, 0x12)
      .twice()
      .text("The tide will turn at half")
      .preamble(15, 0x12)
      .twice()
      .control(0x11, 0x2E)
      .twice()
      .text("past nine, and we go home.")
      .endOfCaption()
      .twice()
      .take();
}

/// One row of live captions.
std::vector<std::uint8_t> rollUpRow() {
  return CaptionBuilder()
      .rollUp(3)
      .twice()
      .carriageReturn()
      .twice()
      .preamble(15)
      .twice()
      .text(">> THE TIDE WILL TURN AT NINE.")
      .take();
}

/// Padding, which is most of what line 21 carries.
std::vector<std::uint8_t> padding() {
  CaptionBuilder builder;
  for (int i = 0; i < 60; ++i) builder.pair(0, 0);
  return builder.take();
}

/// Whole captions a unit, each yielded once.
void decode(benchmark::State& state, const std::vector<std::uint8_t>& triplets) {
  closed_caption::ClosedCaptionParser parser(closed_caption::CaptionService::fromNumber(1));
  MediaTime time = 0;
  for (auto _ : state) {
    parser.parse(triplets.data(), static_cast<std::int64_t>(triplets.size()), ++time, true);
    if (parser.hasChanged()) benchmark::DoNotOptimize(parser.currentSubtitle(time));
  }
  state.SetItemsProcessed(state.iterations() *
                          static_cast<std::int64_t>(triplets.size() / kTripletBytes));
}
BENCHMARK_CAPTURE(decode, popOn, popOnCaption());
BENCHMARK_CAPTURE(decode, rollUp, rollUpRow());
BENCHMARK_CAPTURE(decode, padding, padding());

/// Takes what is shown and forgets it.
class Viewer final : public IDisplayListener {
 public:
  void onDisplay(MediaTime, Subtitle subtitle) override { benchmark::DoNotOptimize(subtitle); }
};

/// The same as a receiver shows it, another text each time.
void decodeAsReceiver(benchmark::State& state, const std::vector<std::uint8_t>& triplets) {
  auto others = triplets;
  for (auto& byte : others) {
    if (byte == 0x54) byte = 0x57;  // T to W, of equal parity
  }
  Viewer viewer;
  closed_caption::CaptionDisplayDecoder decoder(1, viewer, nullptr);
  MediaTime time = 0;
  bool isOther = false;
  for (auto _ : state) {
    decoder.decode(isOther ? others : triplets, time += kSecond);
    isOther = !isOther;
  }
  state.SetItemsProcessed(state.iterations() *
                          static_cast<std::int64_t>(triplets.size() / kTripletBytes));
}
BENCHMARK_CAPTURE(decodeAsReceiver, popOn, popOnCaption());
BENCHMARK_CAPTURE(decodeAsReceiver, rollUp, rollUpRow());
BENCHMARK_CAPTURE(decodeAsReceiver, padding, padding());

/// The same captions as CEA-708 has them; `items` are pairs of line 21, so that rates compare.
void decodeDigital(benchmark::State& state, bool isRollUp) {
  constexpr std::size_t kPopOnPairs = 38;
  constexpr std::size_t kRollUpPairs = 21;
  encoders::DtvccChannel channel;
  const auto caption = [&](const char* upper, const char* lower) {
    encoders::DtvccCodes codes;
    if (isRollUp) {
      codes.define(0, {.rows = 3, .columns = 32}).carriageReturn().text(upper);
    } else {
      codes.define(0, {.visible = false, .rows = 2, .columns = 32}).clear(1);
      codes.text(upper).carriageReturn().text(lower).display(1);
    }
    return channel.add(1, codes).take();
  };
  std::vector<std::vector<std::uint8_t>> units;
  for (int i = 0; i < 8; ++i) {  // a round of sequence numbers
    const bool isOther = i % 2 != 0;
    units.push_back(isRollUp ? caption(">> THE TIDE WILL TURN AT NINE.", "")
                    : isOther
                        ? caption("The wide will wurn at half", "past nine, and we go home.")
                        : caption("The tide will turn at half", "past nine, and we go home."));
  }
  Viewer viewer;
  dtvcc::DtvccDisplayDecoder decoder({}, viewer, nullptr);
  MediaTime time = 0;
  std::size_t next = 0;
  for (auto _ : state) {
    decoder.decode(units[next], time += kSecond);
    next = (next + 1) % units.size();
  }
  state.SetItemsProcessed(state.iterations() *
                          static_cast<std::int64_t>(isRollUp ? kRollUpPairs : kPopOnPairs));
}
BENCHMARK_CAPTURE(decodeDigital, popOn, false);
BENCHMARK_CAPTURE(decodeDigital, rollUp, true);

/// The one pair of a picture.
class PictureItem final : public packaging::lib_parse_es::IMediaItem {
 public:
  PictureItem(const std::uint8_t* triplet, MediaTime start) : triplet_(triplet), start_(start) {}

  std::int32_t length() const override { return kTripletBytes; }
  packaging::lib_parse_es::Result payload(const std::uint8_t*& data) const override {
    data = triplet_;
    return packaging::lib_parse_es::kOk;
  }
  std::optional<Times> times() const override { return Times{start_, start_ + 1}; }
  bool startFlag() const override { return true; }
  bool secondFlag() const override { return false; }

 private:
  const std::uint8_t* triplet_;
  MediaTime start_;
};

/// Gives away every buffer it takes back.
class ReusingSink final : public IOutputSink {
 public:
  std::unique_ptr<IOutputBuffer> getBuffer() override {
    return free_ ? std::move(free_) : std::make_unique<Buffer>();
  }
  void deliver(std::unique_ptr<IOutputBuffer> buffer) override { free_ = std::move(buffer); }
  void endOfStream() override {}

 private:
  class Buffer final : public IOutputBuffer {
   public:
    std::uint8_t* data() override { return bytes_; }
    std::size_t capacity() const override { return sizeof bytes_; }
    void setUsedLength(std::size_t) override {}
    void setSyncPoint(bool) override {}
    void setDiscontinuity(bool) override {}
    void setTime(MediaTime, MediaTime) override {}

   private:
    std::uint8_t bytes_[1024];
  };

  std::unique_ptr<IOutputBuffer> free_;
};

/// Samples of one pair, 29.97 a second, from the framer to the sink.
void convert(benchmark::State& state, const std::vector<std::uint8_t>& triplets) {
  constexpr MediaTime kPicture = 333'667;
  ReusingSink sink;
  ConversionChain chain(
      sink,
      {.inputType = SubtitleInputType::ClosedCaption, .page = 1, .mode = ConversionMode::WebVtt},
      nullptr);
  MediaTime time = 0;
  for (auto _ : state) {
    for (std::size_t at = 0; at < triplets.size(); at += kTripletBytes) {
      chain.framer().push(std::make_shared<PictureItem>(triplets.data() + at, time += kPicture));
    }
  }
  state.SetItemsProcessed(state.iterations() *
                          static_cast<std::int64_t>(triplets.size() / kTripletBytes));
}
BENCHMARK_CAPTURE(convert, popOn, popOnCaption());
BENCHMARK_CAPTURE(convert, rollUp, rollUpRow());
BENCHMARK_CAPTURE(convert, padding, padding());

/// The same pictures as a receiver shows them in a file: no slower than 0.9 of `convert`.
void show(benchmark::State& state, const std::vector<std::uint8_t>& triplets) {
  constexpr MediaTime kPicture = 333'667;
  Viewer viewer;
  txsub::GrowingRows rows(viewer, txsub::GrowingRows::Output::File);
  closed_caption::CaptionDisplayDecoder decoder(1, rows, nullptr);
  MediaTime time = 0;
  for (auto _ : state) {
    for (std::size_t at = 0; at < triplets.size(); at += kTripletBytes) {
      decoder.decode(std::span(triplets).subspan(at, kTripletBytes), time += kPicture);
    }
  }
  state.SetItemsProcessed(state.iterations() *
                          static_cast<std::int64_t>(triplets.size() / kTripletBytes));
}
BENCHMARK_CAPTURE(show, popOn, popOnCaption());
BENCHMARK_CAPTURE(show, rollUp, rollUpRow());
BENCHMARK_CAPTURE(show, padding, padding());

}  // namespace
}  // namespace korr::encoding::subtitling
