// SPDX-License-Identifier: MIT
#include "chain/decoder_factory.h"

#include "closed_caption/caption_display_decoder.h"
#include "dvb_subtitle/dvb_display_decoder.h"
#include "teletext/teletext_display_decoder.h"
#include "util/exception.h"

namespace korr::encoding::subtitling::inline v2_1 {

std::unique_ptr<IDisplayDecoder> createDisplayDecoder(const DecoderRequest& request) {
  switch (request.inputType) {
    case SubtitleInputType::Teletext:
      return std::make_unique<teletext::lib_teletext::TeletextDisplayDecoder>(
          request.page, request.pageOption, request.isAskedFor, request.listener, request.logger);
    case SubtitleInputType::DvbSubtitle:
      return std::make_unique<dvb::lib_dvb_subtitle::DvbDisplayDecoder>(
          request.dvbPages, request.listener, request.logger);
    case SubtitleInputType::ClosedCaption:
      return std::make_unique<closed_caption::CaptionDisplayDecoder>(request.page, request.listener,
                                                                     request.logger);
  }
  throw util::TessaryException("Unexpected subtitle input type");
}

}  // namespace korr::encoding::subtitling::inline v2_1
