// SPDX-License-Identifier: MIT
#include "model/modes.h"

namespace korr::encoding::subtitling::inline v2_1 {

const char* displayName(ConversionMode mode) {
  switch (mode) {
    case ConversionMode::Disable:
      return "Disable";
    case ConversionMode::PassThrough:
      return "Pass-Through";
    case ConversionMode::Ttml:
      return "TTML";
    case ConversionMode::BurnIntoVideo:
      return "Burn into video";
    case ConversionMode::WebVtt:
      return "WebVTT";
    case ConversionMode::Amf:
      return "AMF";
    case ConversionMode::YoutubeSrt:
      return "Youtube Srt";
  }
  return "????";
}

}  // namespace korr::encoding::subtitling::inline v2_1
