// SPDX-License-Identifier: MIT
#include "platform/png_decoder.h"

#include "platform/gdiplus_session.h"

namespace korr::platform::inline v2_1 {

namespace {

std::optional<DecodedPng> decode(IStream* stream) {
  Gdiplus::Bitmap bitmap(stream);
  if (bitmap.GetLastStatus() != Gdiplus::Ok) return std::nullopt;
  if (std::uint64_t{bitmap.GetWidth()} * bitmap.GetHeight() > kMaximumPngPixels)
    return std::nullopt;
  DecodedPng decoded{.width = bitmap.GetWidth(), .height = bitmap.GetHeight(), .rgba = {}};
  for (UINT y = 0; y < decoded.height; ++y) {
    for (UINT x = 0; x < decoded.width; ++x) {
      Gdiplus::Color colour;
      bitmap.GetPixel(static_cast<INT>(x), static_cast<INT>(y), &colour);
      decoded.rgba.insert(decoded.rgba.end(), {colour.GetRed(), colour.GetGreen(), colour.GetBlue(),
                                               colour.GetAlpha()});
    }
  }
  return decoded;
}

}  // namespace

std::optional<DecodedPng> decodePng(std::span<const std::uint8_t> png) {
  const GdiplusSession session;
  if (!session.isStarted()) return std::nullopt;
  IStream* stream = nullptr;
  std::optional<DecodedPng> decoded;
  if (SUCCEEDED(CreateStreamOnHGlobal(nullptr, TRUE, &stream))) {
    stream->Write(png.data(), static_cast<ULONG>(png.size()), nullptr);
    stream->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr);
    decoded = decode(stream);
    stream->Release();
  }
  return decoded;
}

}  // namespace korr::platform::inline v2_1
