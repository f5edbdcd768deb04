// SPDX-License-Identifier: MIT
#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "burn/glyph_rasteriser.h"
#include "util/exception.h"

namespace korr::encoding::subtitling::burn::inline v2_1 {
namespace {

class PangoGlyphRasteriser;
using RasteriserError = util::ExceptionTemplate<PangoGlyphRasteriser>;

struct Unref {
  void operator()(void* object) const { g_object_unref(object); }
};
struct Free {
  void operator()(PangoFontDescription* font) const { pango_font_description_free(font); }
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
  void operator()(cairo_t* context) const { cairo_destroy(context); }
  void operator()(char* text) const { g_free(text); }
};

constexpr double kPixelsPerPoint = 4.0 / 3.0;
// Larger letters than any frame needs are left out.
constexpr double kMaximumPixels = 4096;

class PangoGlyphRasteriser final : public IGlyphRasteriser {
 public:
  PangoGlyphRasteriser()
      : fonts_(pango_cairo_font_map_new()), context_(pango_font_map_create_context(fonts_.get())) {
    int families = 0;
    PangoFontFamily** list = nullptr;
    if (context_) pango_font_map_list_families(fonts_.get(), &list, &families);
    g_free(list);
    if (families == 0) {
      throw RasteriserError(
          "no letters can be drawn: no fonts are installed (Debian's fonts-dejavu-core has some)");
    }
  }

  GlyphMask rasterise(std::u16string_view letter, const FontFace& face) override {
    const double pixels = face.size * kPixelsPerPoint;
    const double largest = pixels * std::max({face.widthScale, face.heightScale, 1.0});
    const double smallest = pixels * std::min({face.widthScale, face.heightScale, 1.0});
    if (!(smallest > 0) || !(largest <= kMaximumPixels)) return {};

    const auto layout = layOut(letter, face, pixels);
    PangoRectangle ink;
    pango_layout_get_pixel_extents(layout.get(), &ink, nullptr);
    if (ink.width <= 0 || ink.height <= 0) return {};
    return draw(*layout, ink, face);
  }

 private:
  using Layout = std::unique_ptr<PangoLayout, Unref>;

  Layout layOut(std::u16string_view letter, const FontFace& face, double pixels) {
    const std::unique_ptr<PangoFontDescription, Free> font(pango_font_description_new());
    // A list: the first family that there is.
    pango_font_description_set_family(font.get(), (face.family + ",monospace").c_str());
    pango_font_description_set_absolute_size(font.get(), pixels * PANGO_SCALE);
    if (face.isItalic) pango_font_description_set_style(font.get(), PANGO_STYLE_ITALIC);

    static_assert(sizeof(gunichar2) == sizeof(char16_t));
    const std::unique_ptr<char, Free> utf8(
        g_utf16_to_utf8(reinterpret_cast<const gunichar2*>(letter.data()),
                        static_cast<glong>(letter.size()), nullptr, nullptr, nullptr));
    Layout layout(pango_layout_new(context_.get()));
    pango_layout_set_font_description(layout.get(), font.get());
    pango_layout_set_text(layout.get(), utf8 ? utf8.get() : "\xEF\xBF\xBD", -1);
    return layout;
  }

  // `ink` is in pixels before the face's scales.
  static GlyphMask draw(PangoLayout& layout, const PangoRectangle& ink, const FontFace& face) {
    GlyphMask mask;
    mask.left = static_cast<std::int32_t>(std::floor(ink.x * face.widthScale)) - 1;
    mask.top = static_cast<std::int32_t>(std::floor(ink.y * face.heightScale)) - 1;
    mask.width = static_cast<std::uint32_t>(std::ceil(ink.width * face.widthScale)) + 3;
    mask.height = static_cast<std::uint32_t>(std::ceil(ink.height * face.heightScale)) + 3;

    const std::unique_ptr<cairo_surface_t, Free> surface(cairo_image_surface_create(
        CAIRO_FORMAT_A8, static_cast<int>(mask.width), static_cast<int>(mask.height)));
    const std::unique_ptr<cairo_t, Free> context(cairo_create(surface.get()));
    cairo_translate(context.get(), -mask.left, -mask.top);
    cairo_scale(context.get(), face.widthScale, face.heightScale);
    pango_cairo_show_layout(context.get(), &layout);
    cairo_surface_flush(surface.get());
    if (cairo_status(context.get()) != CAIRO_STATUS_SUCCESS) return {};

    const auto* rows = cairo_image_surface_get_data(surface.get());
    const auto stride = cairo_image_surface_get_stride(surface.get());
    mask.coverage.reserve(std::size_t{mask.width} * mask.height);
    for (std::uint32_t y = 0; y < mask.height; ++y) {
      const auto* row = rows + static_cast<std::ptrdiff_t>(y) * stride;
      mask.coverage.insert(mask.coverage.end(), row, row + mask.width);
    }
    return mask;
  }

  std::unique_ptr<PangoFontMap, Unref> fonts_;
  std::unique_ptr<PangoContext, Unref> context_;
};

}  // namespace

std::unique_ptr<IGlyphRasteriser> createGlyphRasteriser() {
  return std::make_unique<PangoGlyphRasteriser>();
}

}  // namespace korr::encoding::subtitling::burn::inline v2_1
