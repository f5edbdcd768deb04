// SPDX-License-Identifier: MIT

// Access units, who makes them and who takes them.
#pragma once

#include <cstddef>
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

/// Makes units, the next one of the memory that the last one gave back. Must outlive its units. Not
/// thread-safe.
class NALPool {
 public:
  /// Gives a unit back to its pool.
  struct Return {
    NALPool* pool = nullptr;  ///< null: the unit is no pool's

    void operator()(NAL* unit) const { pool ? pool->keep(unit) : delete unit; }
  };

  /// An empty unit.
  std::unique_ptr<NAL, Return> make() {
    auto unit = spare_ ? std::move(spare_) : std::make_unique<NAL>();
    return {unit.release(), {this}};
  }

 private:
  /// In bytes. As much as a PES packet can say that it has; what is longer is rare.
  static constexpr std::size_t kMostKept = 65'536;

  void keep(NAL* unit) {
    spare_.reset(unit);
    if (unit->payload.capacity() > kMostKept) return spare_.reset();
    unit->payload.clear();
    *unit = NAL{.payload = std::move(unit->payload)};
  }

  std::unique_ptr<NAL> spare_;
};

/// A unit and its ownership.
using UniqueNAL = std::unique_ptr<NAL, NALPool::Return>;

/// Takes the units of a builder, each with its ownership.
class NALListener {
 public:
  virtual ~NALListener() = default;

  virtual void onNal(UniqueNAL unit) = 0;
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
  UniqueNAL makeUnit() { return pool_.make(); }
  virtual void deliver(UniqueNAL unit) { listener_->onNal(std::move(unit)); }
  virtual void forwardEndOfStream() { listener_->onEndOfStream(); }

 private:
  NALPool pool_;
  NALListener* listener_ = nullptr;
};

}  // namespace korr::encoding::packaging::lib_parse_es::inline v2_1
