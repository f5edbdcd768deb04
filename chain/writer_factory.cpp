// SPDX-License-Identifier: MIT
#include "chain/writer_factory.h"

#include "timed_text/converter_to_ttml.h"
#include "timed_text/converter_to_webvtt.h"
#include "timed_text/converter_to_youtube_srt.h"
#include "util/exception.h"

namespace korr::encoding::subtitling::inline v2_1 {

std::unique_ptr<ISubtitleConverter> createWriter(const WriterRequest& request) {
  switch (request.mode) {
    case ConversionMode::Ttml:
      return std::make_unique<ttml::ConverterToTtml>(request.container, request.ttmlOption,
                                                     ttml::createPngEncoder());
    case ConversionMode::WebVtt:
      return std::make_unique<ttml::ConverterToWebVtt>(request.container);
    case ConversionMode::YoutubeSrt:
      return std::make_unique<ttml::ConverterToYoutubeSrt>(request.container);
    case ConversionMode::Disable:
    case ConversionMode::PassThrough:
    case ConversionMode::BurnIntoVideo:
    case ConversionMode::Amf:
      break;
  }
  throw util::TessaryException("Unexpected subtitle conversion mode");
}

}  // namespace korr::encoding::subtitling::inline v2_1
