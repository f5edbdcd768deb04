// SPDX-License-Identifier: MIT
#include "chain/framer_factory.h"

#include "framing/nal_builder_dvb_subtitle.h"
#include "framing/nal_builder_raw.h"
#include "framing/nal_builder_teletext.h"
#include "util/exception.h"

namespace korr::encoding::subtitling::inline v2_1 {

namespace es = packaging::lib_parse_es;

std::unique_ptr<es::NALBuilder> createFramer(SubtitleInputType inputType) {
  switch (inputType) {
    case SubtitleInputType::Teletext:
      return std::make_unique<es::NALBuilderTeletext>();
    case SubtitleInputType::DvbSubtitle:
      return std::make_unique<es::NALBuilderDVBSubtitle>();
    case SubtitleInputType::ClosedCaption:
      return std::make_unique<es::NALBuilderRaw>(es::NALBuilderRaw::kCaptionType);
  }
  throw util::TessaryException("Unexpected subtitle input type");
}

}  // namespace korr::encoding::subtitling::inline v2_1
