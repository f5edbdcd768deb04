// SPDX-License-Identifier: MIT

// Captions out of video, without decoding a picture.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "log/logger.h"
#include "readers/video/caption_user_data.h"
#include "readers/video/picture_clock.h"
#include "readers/video/presentation_order.h"
#include "readers/video/video_syntax.h"

namespace korr::txsub {

/// Finds the cc_data triplets in a video elementary stream (ATSC A/53 user data "GA94": in the SEI
/// of H.264 and HEVC, in the user data of MPEG-2 pictures) and hands them over picture by picture
/// in presentation order. Copies nothing but the units that may hold captions. Not thread-safe.
class VideoCaptionExtractor {
 public:
  /// Where damage is reported, and which stream the report names: "PID 256", "track 1".
  struct Context {
    log::ILogger* logger = nullptr;  ///< null: nowhere
    std::string stream;
  };

  VideoCaptionExtractor(VideoCodec codec, CaptionListener listener, Context context);

  /// A PES packet begins. Its PTS belongs to the first picture that begins in it (ISO/IEC 13818-1,
  /// 2.4.3.7); nothing when it has none.
  void beginPes(std::optional<MediaTime> pts);

  /// The bytes that follow, cut anywhere.
  void feed(std::span<const std::uint8_t> bytes);

  /// Bytes are missing here: the unit that they tore is dropped.
  void lostData();

  /// The clock has come to `now`: hands out what is shown until then.
  void release(MediaTime now) { order_.release(now); }

  /// The end of the stream, or of this line of time: hands out everything held back.
  void flush();

 private:
  std::size_t joinHeldZeros(std::span<const std::uint8_t> bytes);
  void take(std::span<const std::uint8_t> bytes);
  void beginUnit();
  void classifyUnit();
  void finishUnit();
  void forgetUnit();
  void readHeaders();
  void readCaptions();
  void readSei();
  void addCaptions(const CcData& captions);
  void beginPicture();
  void finishPicture();
  TESSARY_PRINTF(2, 3) void report(const char* format, ...);

  VideoCodec codec_;
  PresentationOrder order_;
  Context context_;
  PictureClock clock_;
  unsigned reports_ = 0;

  // The unit being read: its first bytes, or all of it when it may carry captions.
  enum class UnitState { None, Head, Kept, PassedOver };
  UnitState unitState_ = UnitState::None;
  std::vector<std::uint8_t> unit_;
  // Zeros that ended what was fed last, 2 at most: held back, for they may begin a start code.
  std::size_t zeros_ = 0;

  // The picture being read.
  bool inPicture_ = false;
  bool sliceSeen_ = false;
  std::optional<MediaTime> picturePts_;
  std::vector<std::uint8_t> triplets_;

  std::optional<MediaTime> pesPts_;  // until a picture takes it
};

}  // namespace korr::txsub
