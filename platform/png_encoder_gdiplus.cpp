// SPDX-License-Identifier: MIT

// PNG by GDI+.
#include <memory>
#include <string_view>
#include <vector>

#include "platform/gdiplus_session.h"
#include "timed_text/png_encoder.h"

namespace korr::encoding::subtitling::ttml::inline v2_1 {

namespace {

namespace gdi = Gdiplus::DllExports;

struct ReleaseCom {
  void operator()(IUnknown* object) const { object->Release(); }
};
using StreamPtr = std::unique_ptr<IStream, ReleaseCom>;

struct DisposeImage {
  void operator()(Gdiplus::GpImage* image) const { gdi::GdipDisposeImage(image); }
};
using ImagePtr = std::unique_ptr<Gdiplus::GpImage, DisposeImage>;

StreamPtr createMemoryStream() {
  IStream* stream = nullptr;
  return StreamPtr(SUCCEEDED(CreateStreamOnHGlobal(nullptr, TRUE, &stream)) ? stream : nullptr);
}

std::optional<CLSID> findPngEncoder() {
  UINT count = 0;
  UINT bytes = 0;
  if (gdi::GdipGetImageEncodersSize(&count, &bytes) != Gdiplus::Ok || count == 0) {
    return std::nullopt;
  }
  // The texts that the entries point to follow them in the same memory.
  const std::size_t entries = bytes / sizeof(Gdiplus::ImageCodecInfo) + 1;
  std::vector<Gdiplus::ImageCodecInfo> encoders(entries);
  if (gdi::GdipGetImageEncoders(count, bytes, encoders.data()) != Gdiplus::Ok) return std::nullopt;
  for (UINT i = 0; i < count; ++i) {
    if (std::wstring_view(encoders[i].MimeType) == L"image/png") return encoders[i].Clsid;
  }
  return std::nullopt;
}

// GDI+ reads 32-bit ARGB as the bytes B, G, R, A: red and blue change places, in a copy, because
// the pixels are shared.
std::vector<std::uint8_t> toBgra(const RgbaImage& image) {
  const std::size_t rowBytes = std::size_t{image.width} * 4;
  std::vector<std::uint8_t> bgra(rowBytes * image.height);
  for (std::uint32_t y = image.paintedRows.first; y < image.paintedRows.end; ++y) {
    const std::uint8_t* in = image.row(y);
    std::uint8_t* out = bgra.data() + y * rowBytes;
    for (std::size_t i = 0; i < rowBytes; i += 4) {
      out[i] = in[i + 2];
      out[i + 1] = in[i + 1];
      out[i + 2] = in[i];
      out[i + 3] = in[i + 3];
    }
  }
  return bgra;
}

// Wraps `bgra`, which must outlive the result; null when GDI+ fails.
ImagePtr wrapPixels(const RgbaImage& image, std::vector<std::uint8_t>& bgra) {
  Gdiplus::GpBitmap* bitmap = nullptr;
  const auto status = gdi::GdipCreateBitmapFromScan0(
      static_cast<INT>(image.width), static_cast<INT>(image.height),
      static_cast<INT>(image.width * 4), PixelFormat32bppARGB, bgra.data(), &bitmap);
  return ImagePtr(status == Gdiplus::Ok ? bitmap : nullptr);
}

std::optional<ByteBuffer> readAll(IStream& stream) {
  STATSTG stat = {};
  if (FAILED(stream.Stat(&stat, STATFLAG_NONAME))) return std::nullopt;
  if (FAILED(stream.Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr))) return std::nullopt;
  ByteBuffer bytes(static_cast<std::size_t>(stat.cbSize.QuadPart));
  ULONG bytesRead = 0;
  if (FAILED(stream.Read(bytes.data(), static_cast<ULONG>(bytes.size()), &bytesRead))) {
    return std::nullopt;
  }
  bytes.resize(bytesRead);
  return bytes;
}

class GdiplusEncoder final : public IPngEncoder {
 public:
  std::optional<ByteBuffer> encode(const RgbaImage& image) override {
    const StreamPtr stream = createMemoryStream();
    if (!stream) return std::nullopt;
    const auto encoder = findPngEncoder();
    if (!encoder) return std::nullopt;
    std::vector<std::uint8_t> bgra = toBgra(image);
    const ImagePtr bitmap = wrapPixels(image, bgra);
    if (!bitmap) return std::nullopt;
    if (gdi::GdipSaveImageToStream(bitmap.get(), stream.get(), &*encoder, nullptr) != Gdiplus::Ok) {
      return std::nullopt;
    }
    return readAll(*stream);
  }

 private:
  platform::GdiplusSession session_;
};

}  // namespace

std::unique_ptr<IPngEncoder> createPngEncoder() {
  return std::make_unique<GdiplusEncoder>();
}

}  // namespace korr::encoding::subtitling::ttml::inline v2_1
