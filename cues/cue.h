// SPDX-License-Identifier: MIT

// A subtitle and the interval over which it is shown.
#pragma once

#include <memory>

#include "model/media_time.h"
#include "model/subtitle.h"

namespace korr::txsub {

using encoding::subtitling::MediaTime;
using encoding::subtitling::Subtitle;

struct Cue {
  MediaTime start = 0;                       ///< 100 ns
  MediaTime stop = 0;                        ///< 100 ns, after `start`
  std::shared_ptr<const Subtitle> subtitle;  ///< never null, never empty
};

/// Takes the cues of one service as they end, in order of time.
class ICueListener {
 public:
  virtual ~ICueListener() = default;

  virtual void onCue(const Cue& cue) = 0;
};

/// Where the cues of a service end up. Whether it is wanted may show only in its cues, so they are
/// held until `open`.
class ICueOutput : public ICueListener {
 public:
  virtual void open() = 0;    ///< takes a place for what was held and everything from now on
  virtual void flush() = 0;   ///< lets readers of a pipe see what is complete so far
  virtual void commit() = 0;  ///< completes what was opened
};

}  // namespace korr::txsub
