#include "core/writer_factory.h"

#include "timed_text/converter_to_ttml.h"
#include "util/exception.h"

namespace korr::encoding::subtitling::inline v2_1 {

std::unique_ptr<ISubtitleConverter> createWriter(const WriterRequest& request) {
  switch (request.mode) {
    case ConversionMode::Ttml:
      return std::make_unique<ttml::ConverterToTtml>(request.container, request.ttmlOption,
                                                     ttml::createPngEncoder());
    case ConversionMode::WebVtt:
    case ConversionMode::YoutubeSrt:
    case ConversionMode::Disable:
    case ConversionMode::PassThrough:
    case ConversionMode::BurnIntoVideo:
    case ConversionMode::Amf:
      break;
  }
  throw util::TessaryException("Unexpected subtitle conversion mode");
}

}  // namespace korr::encoding::subtitling::inline v2_1
