// SPDX-License-Identifier: MIT
#include "filter/media_types.h"

#include "sdk/include/TXSubtitleConverter.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

std::optional<SubtitleInputType> classifyInput(const AM_MEDIA_TYPE& type) {
  struct Row {
    const GUID& major;
    const GUID& sub;
    SubtitleInputType inputType;
  };
  static const Row kRows[] = {
      {MEDIATYPE_TimedText, MEDIASUBTYPE_TeletextPes, SubtitleInputType::Teletext},
      {MEDIATYPE_TimedText, MEDIASUBTYPE_DvbSubtitlePes, SubtitleInputType::DvbSubtitle},
      {MEDIATYPE_ClosedCaptions, MEDIASUBTYPE_ClosedCaptionTriplets,
       SubtitleInputType::ClosedCaption},
  };
  for (const Row& row : kRows) {
    if (type.majortype == row.major && type.subtype == row.sub) return row.inputType;
  }
  return std::nullopt;
}

const GUID& outputSubtype(ConversionMode mode) {
  switch (mode) {
    case ConversionMode::Ttml:
      return MEDIASUBTYPE_Ttml;
    case ConversionMode::WebVtt:
      return MEDIASUBTYPE_WebVtt;
    case ConversionMode::YoutubeSrt:
      return MEDIASUBTYPE_YoutubeSrt;
    case ConversionMode::Disable:
    case ConversionMode::PassThrough:
    case ConversionMode::BurnIntoVideo:
    case ConversionMode::Amf:
      break;
  }
  return GUID_NULL;
}

bool isOutputType(const AM_MEDIA_TYPE& type) {
  return type.majortype == MEDIATYPE_TimedText &&
         (type.subtype == MEDIASUBTYPE_Ttml || type.subtype == MEDIASUBTYPE_WebVtt ||
          type.subtype == MEDIASUBTYPE_YoutubeSrt);
}

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
