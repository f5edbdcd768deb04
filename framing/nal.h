// Access units, who makes them and who takes them.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "framing/media_item.h"

namespace korr::encoding::packaging::lib_parse_es::inline v2_1 {

/// One access unit of a subtitle elementary stream.
struct NAL {
  std::int32_t type = 0;  ///< the input type: 6 teletext, 11 DVB subtitles, 16 captions
  std::vector<std::uint8_t> payload;
  bool hasTime = false;
  std::uint64_t startTime = 0;  ///< 100 ns; meaningful only with `hasTime`
  bool startFlag = false;       ///< of its first sample
  bool secondFlag = false;      ///< of its first sample

  /// Takes over what a unit has from its first sample: time, if there is one, and flags.
  void takeTimeAndFlags(const IMediaItem& first) {
    if (const auto times = first.times()) {
      hasTime = true;
      startTime = times->start;
    }
    startFlag = first.startFlag();
    secondFlag = first.secondFlag();
  }
};

/// Takes the units of a builder, each with its ownership.
class NALListener {
 public:
  virtual ~NALListener() = default;

  virtual void onNal(std::unique_ptr<NAL> unit) = 0;
  virtual void onEndOfStream() = 0;
};

/// Cuts input samples into access units and hands every complete one to its listener. Exceptions of
/// the listener pass through to the caller of `push` and `endOfStream`. Not thread-safe.
class NALBuilder {
 public:
  virtual ~NALBuilder() = default;

  /// `listener` is not owned and must outlive the builder's use; set it before the first `push`.
  virtual void setListener(NALListener* listener) { listener_ = listener; }

  /// Takes one input sample. Returns a failure only when the sample's payload cannot be had and
  /// the builder does not queue.
  virtual Result push(std::shared_ptr<const IMediaItem> item) = 0;

  /// Completes what is pending, then forwards the end of stream.
  virtual void endOfStream() = 0;

 protected:
  virtual void deliver(std::unique_ptr<NAL> unit) { listener_->onNal(std::move(unit)); }
  virtual void forwardEndOfStream() { listener_->onEndOfStream(); }

 private:
  NALListener* listener_ = nullptr;
};

}  // namespace korr::encoding::packaging::lib_parse_es::inline v2_1
