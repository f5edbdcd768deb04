// SPDX-License-Identifier: MIT
#include "chain/parser_factory.h"

#include "closed_caption/closed_caption_parser.h"
#include "dvb_subtitle/dvb_subtitle_parser.h"
#include "teletext/teletext_parser.h"
#include "util/exception.h"

namespace korr::encoding::subtitling::inline v2_1 {
namespace {

// Hands out both faces of a new parser.
template <class Parser>
std::unique_ptr<ISubtitleParser> withContainer(std::unique_ptr<Parser> parser,
                                               ISubtitleContainer** container) {
  if (container) *container = parser.get();
  return parser;
}

}  // namespace

std::unique_ptr<ISubtitleParser> createParser(const ParserRequest& request) {
  switch (request.inputType) {
    case SubtitleInputType::Teletext:
      return withContainer(std::make_unique<teletext::lib_teletext::TeletextParser>(
                               request.page, request.pageOption),
                           request.container);
    case SubtitleInputType::DvbSubtitle: {
      auto parser = std::make_unique<dvb::lib_dvb_subtitle::DVBSubtitleParser>(
          request.logger, request.droppedPages);
      if (request.dvbPages) parser->renderer().setPages(*request.dvbPages);
      return withContainer(std::move(parser), request.container);
    }
    case SubtitleInputType::ClosedCaption:
      return withContainer(
          std::make_unique<closed_caption::ClosedCaptionParser>(
              closed_caption::CaptionService::fromNumber(request.page), false, request.logger),
          request.container);
  }
  throw util::TessaryException("Unexpected subtitle input type");
}

}  // namespace korr::encoding::subtitling::inline v2_1
