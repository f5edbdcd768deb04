// SPDX-License-Identifier: MIT

// The module's entry points and what it registers.
#include <wrl/client.h>

#include "filter/subtitle_converter.h"

namespace {

using namespace korr::streaming::direct_show::filters::mqs_subtitle_converter;  // NOLINT

const AMOVIESETUP_MEDIATYPE kInputTypes[] = {
    {&MEDIATYPE_TimedText, &MEDIASUBTYPE_TeletextPes},
    {&MEDIATYPE_ClosedCaptions, &MEDIASUBTYPE_ClosedCaptionTriplets},
    {&MEDIATYPE_TimedText, &MEDIASUBTYPE_DvbSubtitlePes},
};

const AMOVIESETUP_MEDIATYPE kOutputTypes[] = {
    {&MEDIATYPE_TimedText, &MEDIASUBTYPE_Ttml},
    {&MEDIATYPE_TimedText, &MEDIASUBTYPE_WebVtt},
    {&MEDIATYPE_TimedText, &MEDIASUBTYPE_YoutubeSrt},
};

WCHAR inputName[] = L"Input";
WCHAR outputName[] = L"Output";

const AMOVIESETUP_PIN kPins[] = {
    {.strName = inputName,
     .bRendered = FALSE,
     .bOutput = FALSE,
     .bZero = FALSE,
     .bMany = FALSE,
     .clsConnectsToFilter = nullptr,
     .strConnectsToPin = nullptr,
     .nMediaTypes = std::size(kInputTypes),
     .lpMediaType = kInputTypes},
    {.strName = outputName,
     .bRendered = FALSE,
     .bOutput = TRUE,
     .bZero = FALSE,
     .bMany = FALSE,
     .clsConnectsToFilter = nullptr,
     .strConnectsToPin = nullptr,
     .nMediaTypes = std::size(kOutputTypes),
     .lpMediaType = kOutputTypes},
};

// Low enough that no graph picks the filter by itself: hosts add it on purpose.
constexpr DWORD kMerit = 0x200000;

// The count of pins is 0 deliberately: their types are not for the filter mapper.
const AMOVIESETUP_FILTER kFilter = {.clsID = &CLSID_TXSubtitleConverter,
                                    .strName = CSubtitleConverter::kName,
                                    .dwMerit = kMerit,
                                    .nPins = 0,
                                    .lpPin = kPins};

}  // namespace

CFactoryTemplate g_Templates[] = {{.m_Name = CSubtitleConverter::kName,
                                   .m_ClsID = &CLSID_TXSubtitleConverter,
                                   .m_lpfnNew = CSubtitleConverter::CreateInstance,
                                   .m_lpfnInit = nullptr,
                                   .m_pAMovieSetup_Filter = &kFilter}};
int g_cTemplates = 1;

#ifdef TESSARY_PLATFORM_BASECLASSES
// The platform's base classes learn from their entry point which module they are in.
extern "C" BOOL WINAPI DllEntryPoint(HINSTANCE module, ULONG reason, LPVOID reserved);

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved) {
  return DllEntryPoint(module, reason, reserved);
}
#endif

STDAPI DllRegisterServer() {
  return AMovieDllRegisterServer2(TRUE);
}

STDAPI DllUnregisterServer() {
  return AMovieDllRegisterServer2(FALSE);
}
