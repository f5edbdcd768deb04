// SPDX-License-Identifier: MIT

// The errors of DVB subtitles.
#pragma once

#include "util/exception.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

class DVBSubtitleParser;
class DVBSubtitleRenderer;

/// The PES data field is broken: the rest of the payload is lost.
using DataFieldError = util::ExceptionTemplate<DVBSubtitleParser>;

/// One segment or the painting of one page failed: decoding goes on with the next segment.
using SegmentError = util::ExceptionTemplate<DVBSubtitleRenderer>;

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
