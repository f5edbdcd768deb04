// SPDX-License-Identifier: MIT

// Captions as files that caption editors take.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "files/output_file.h"
#include "log/logger.h"
#include "model/media_time.h"
#include "util/time_code.h"

namespace korr::txsub {

enum class CaptionFormat {
  Scc,  ///< Scenarist: one field of line 21, at 29.97 frames a second
  Mcc,  ///< MacCaption: all triplets, line 21 and digital captions
};

struct CaptionFileRequest {
  CaptionFormat format = CaptionFormat::Scc;
  std::string path = "-";  ///< UTF-8; "-" for standard output
  bool dropFrame = true;   ///< where the frame rate, 29.97 or 59.94, has drop-frame time codes
  log::ILogger* logger = nullptr;  ///< told what the format cannot hold; not owned
};

/// One file in the making. Throws OutputError.
class ICaptionFile {
 public:
  virtual ~ICaptionFile() = default;

  /// The cc_data triplets of one picture, in the order of presentation. `time` (100 ns) counts from
  /// the file's start, which has the time code 00:00:00:00.
  virtual void write(std::span<const std::uint8_t> triplets,
                     encoding::subtitling::MediaTime time) = 0;

  /// Completes the file and gives it its name.
  virtual void finish() = 0;
};

/// Opens the file. Throws OutputError.
std::unique_ptr<ICaptionFile> createCaptionFile(const CaptionFileRequest& request);

/// The frame rate that pictures at these times have: 23.976, 24, 25, 29.97, 30, 50, 59.94 or 60,
/// whichever is nearest; 29.97 for a single one. Pauses between them do not matter.
util::TimeCodeRate frameRateOf(std::span<const encoding::subtitling::MediaTime> times,
                               bool dropFrame);

}  // namespace korr::txsub
