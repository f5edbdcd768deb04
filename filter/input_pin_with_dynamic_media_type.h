// SPDX-License-Identifier: MIT

// An input pin whose media type may change in mid-stream.
#pragma once

#include <streams.h>

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

/// Lets the upstream filter change the connection's media type by a sample that carries one. The
/// change takes place where the sample is processed, in order with the samples around it.
class CInputPinWithDynamicMediaType : public CBaseInputPin {
 public:
  using CBaseInputPin::CBaseInputPin;

  /// Makes `type`, attached to a sample, the connection's. VFW_E_TYPE_NOT_ACCEPTED when the pin
  /// would not connect on it: the connection keeps the type it has.
  HRESULT takeOver(const AM_MEDIA_TYPE& type) {
    const CMediaType changed(type);
    const CAutoLock lock(m_pLock);  // against whoever asks for the connection's type
    if (CheckMediaType(&changed) != S_OK) return VFW_E_TYPE_NOT_ACCEPTED;
    return SetMediaType(&changed);
  }
};

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
