// SPDX-License-Identifier: MIT
#include <algorithm>
#include <filesystem>
#include <memory>

#include "burn/glyph_rasteriser.h"
#include "platform/gdiplus_session.h"
#include "util/exception.h"
#include "util/utf.h"

namespace korr::encoding::subtitling::burn::inline v2_1 {
namespace {

class GdiplusGlyphRasteriser;
using RasteriserError = util::ExceptionTemplate<GdiplusGlyphRasteriser>;

constexpr double kPixelsPerPoint = 4.0 / 3.0;
// Larger letters than any frame needs are left out.
constexpr double kMaximumPixels = 4096;
// A font of the family "Lucida Console", used when it lies in the working folder.
constexpr const wchar_t* kPrivateFontFile = L"Lucon.ttf";

class GdiplusGlyphRasteriser final : public IGlyphRasteriser {
 public:
  GdiplusGlyphRasteriser() {
    if (!gdiplus_.isStarted()) throw RasteriserError("GDI+ does not start");
    privateFonts_ = std::make_unique<Gdiplus::PrivateFontCollection>();
    privateFonts_->AddFontFile(kPrivateFontFile);  // may be absent
  }

  GlyphMask rasterise(std::u16string_view letter, const FontFace& face) override {
    const double pixels = face.size * kPixelsPerPoint;
    const double largest = pixels * std::max({face.widthScale, face.heightScale, 1.0});
    const double smallest = pixels * std::min({face.widthScale, face.heightScale, 1.0});
    if (!(smallest > 0) || !(largest <= kMaximumPixels)) return {};

    const std::wstring text(letter.begin(), letter.end());
    const auto family = findFamily(face.family);
    if (!family) return {};
    const Gdiplus::Font font(family.get(), static_cast<Gdiplus::REAL>(pixels),
                             face.isItalic ? Gdiplus::FontStyleItalic : Gdiplus::FontStyleRegular,
                             Gdiplus::UnitPixel);
    return draw(text, font, face, pixels);
  }

 private:
  using Family = std::unique_ptr<Gdiplus::FontFamily>;

  // The private font's family, the system's, or a fixed-pitch one.
  Family findFamily(const std::string& name) const {
    const auto units = util::utf8ToUtf16(name);
    const std::wstring wide(units.begin(), units.end());
    for (const Gdiplus::FontCollection* fonts :
         {static_cast<const Gdiplus::FontCollection*>(privateFonts_.get()),
          static_cast<const Gdiplus::FontCollection*>(nullptr)}) {
      auto family = std::make_unique<Gdiplus::FontFamily>(wide.c_str(), fonts);
      if (family->IsAvailable()) return family;
    }
    for (const wchar_t* fixed : {L"Consolas", L"Courier New", L"DejaVu Sans Mono"}) {
      auto family = std::make_unique<Gdiplus::FontFamily>(fixed);
      if (family->IsAvailable()) return family;
    }
    return Family(Gdiplus::FontFamily::GenericMonospace()->Clone());
  }

  static GlyphMask draw(const std::wstring& text, const Gdiplus::Font& font, const FontFace& face,
                        double pixels) {
    // Room for overhang on every side; blank edges are cut off below.
    const int margin = static_cast<int>(pixels * std::max(face.widthScale, face.heightScale) / 2);
    const int width = static_cast<int>(pixels * face.widthScale * 2) + 2 * margin + 2;
    const int height = static_cast<int>(pixels * face.heightScale * 2) + 2 * margin + 2;
    Gdiplus::Bitmap canvas(width, height, PixelFormat32bppARGB);
    {
      Gdiplus::Graphics graphics(&canvas);
      graphics.Clear(Gdiplus::Color(255, 0, 0, 0));
      graphics.SetTextRenderingHint(Gdiplus::TextRenderingHintAntiAlias);
      graphics.TranslateTransform(static_cast<Gdiplus::REAL>(margin),
                                  static_cast<Gdiplus::REAL>(margin));
      graphics.ScaleTransform(static_cast<Gdiplus::REAL>(face.widthScale),
                              static_cast<Gdiplus::REAL>(face.heightScale));
      const Gdiplus::SolidBrush white(Gdiplus::Color(255, 255, 255, 255));
      graphics.DrawString(text.c_str(), static_cast<INT>(text.size()), &font, Gdiplus::PointF(0, 0),
                          Gdiplus::StringFormat::GenericTypographic(), &white);
    }
    return cutOut(canvas, width, height, margin);
  }

  // White on black to coverage, without blank edges.
  static GlyphMask cutOut(Gdiplus::Bitmap& canvas, int width, int height, int margin) {
    const Gdiplus::Rect all(0, 0, width, height);
    Gdiplus::BitmapData data{};
    if (canvas.LockBits(&all, Gdiplus::ImageLockModeRead, PixelFormat32bppARGB, &data) !=
        Gdiplus::Ok)
      return {};
    const auto coverageAt = [&](int x, int y) {
      const auto* row = static_cast<const std::uint8_t*>(data.Scan0) +
                        static_cast<std::ptrdiff_t>(y) * data.Stride;
      return row[static_cast<std::ptrdiff_t>(x) * 4 + 1];
    };
    int left = width, top = height, right = 0, bottom = 0;
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        if (coverageAt(x, y) == 0) continue;
        left = std::min(left, x);
        right = std::max(right, x + 1);
        top = std::min(top, y);
        bottom = y + 1;
      }
    }
    GlyphMask mask;
    if (left < right) {
      mask = {left - margin,
              top - margin,
              static_cast<std::uint32_t>(right - left),
              static_cast<std::uint32_t>(bottom - top),
              {}};
      mask.coverage.reserve(std::size_t{mask.width} * mask.height);
      for (int y = top; y < bottom; ++y) {
        for (int x = left; x < right; ++x) mask.coverage.push_back(coverageAt(x, y));
      }
    }
    canvas.UnlockBits(&data);
    return mask;
  }

  platform::GdiplusSession gdiplus_;  // outlives everything below
  std::unique_ptr<Gdiplus::PrivateFontCollection> privateFonts_;
};

}  // namespace

std::unique_ptr<IGlyphRasteriser> createGlyphRasteriser() {
  return std::make_unique<GdiplusGlyphRasteriser>();
}

}  // namespace korr::encoding::subtitling::burn::inline v2_1
