#include "core/parser_factory.h"

#include "util/exception.h"

namespace korr::encoding::subtitling::inline v2_1 {

std::unique_ptr<ISubtitleParser> createParser(const ParserRequest& request) {
  switch (request.inputType) {
    case SubtitleInputType::Teletext:
    case SubtitleInputType::DvbSubtitle:
    case SubtitleInputType::ClosedCaption:
      break;
  }
  throw util::TessaryException("Unexpected subtitle input type");
}

}  // namespace korr::encoding::subtitling::inline v2_1
