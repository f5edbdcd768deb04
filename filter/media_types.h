// SPDX-License-Identifier: MIT

// Which media types come in and go out.
#pragma once

#include <dshow.h>

#include <optional>

#include "model/modes.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

using encoding::subtitling::ConversionMode;
using encoding::subtitling::SubtitleInputType;

/// The subtitle system of an input's media type, by its major type and subtype; nothing when it is
/// none of the filter's.
std::optional<SubtitleInputType> classifyInput(const AM_MEDIA_TYPE& type);

/// The output's subtype in a mode: GUID_NULL in modes that make no text.
const GUID& outputSubtype(ConversionMode mode);

/// Whether a media type is one that the filter can put out in any mode.
bool isOutputType(const AM_MEDIA_TYPE& type);

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
