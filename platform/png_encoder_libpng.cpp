// PNG by libpng, for pictures of few colours above all: subtitles have a dozen.
#include <png.h>

#include <array>
#include <csetjmp>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "timed_text/png_encoder.h"

namespace korr::encoding::subtitling::ttml::inline v2_1 {

namespace {

constexpr std::size_t kBytesPerPixel = 4;
constexpr int kCompressionLevel = 6;

// A pixel's four bytes as they lie in memory; equal values are equal pixels.
using Pixel = std::uint32_t;
constexpr Pixel kTransparentBlack = 0;

Pixel pixelAt(const std::uint8_t* bytes) {
  Pixel pixel;
  std::memcpy(&pixel, bytes, sizeof pixel);
  return pixel;
}

// Up to 256 different pixels, numbered in the order in which they came: the PNG's palette.
class Palette {
 public:
  static constexpr std::size_t kMostColours = 256;

  Palette() { slots_.fill(kFree); }

  std::size_t size() const { return size_; }
  Pixel operator[](std::size_t index) const { return pixels_[index]; }

  // The number of `pixel`, added when it is new; `kMostColours` when there is no room.
  std::size_t indexOf(Pixel pixel) {
    std::size_t slot = pixel * kHashFactor >> kHashShift;
    for (; slots_[slot] != kFree; slot = (slot + 1) % kSlots) {
      if (pixels_[slots_[slot]] == pixel) return slots_[slot];
    }
    if (size_ == kMostColours) return kMostColours;
    pixels_[size_] = pixel;
    slots_[slot] = static_cast<std::uint16_t>(size_);
    return size_++;
  }

 private:
  // Four slots a colour keep the chains short. The factor is 2^32 divided by the golden ratio.
  static constexpr std::size_t kSlots = 4 * kMostColours;
  static constexpr std::uint32_t kHashFactor = 0x9E3779B9;
  static constexpr int kHashShift = 32 - 10;
  static_assert(kSlots == 1 << (32 - kHashShift));
  static constexpr std::uint16_t kFree = 0xFFFF;

  std::array<Pixel, kMostColours> pixels_{};
  std::array<std::uint16_t, kSlots> slots_{};
  std::size_t size_ = 0;
};

// What goes into the file: the rows as the PNG format packs them, and their palette.
struct PackedImage {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  int bitDepth = 8;
  int colourType = PNG_COLOR_TYPE_RGBA;
  std::vector<png_color> colours;   // with a palette only
  std::vector<png_byte> alphas;     // one per colour
  std::vector<std::uint8_t> bytes;  // what `rows` points into; not used for RGBA
  std::vector<const std::uint8_t*> rows;
};

// One byte a pixel, the pixel's number in `palette`. False when 256 colours are not enough.
bool indexRow(const std::uint8_t* row, std::uint32_t width, Palette& palette, std::uint8_t* out) {
  Pixel last = pixelAt(row);
  std::size_t index = palette.indexOf(last);
  for (std::uint32_t x = 0; x < width; ++x) {
    const Pixel pixel = pixelAt(row + x * kBytesPerPixel);
    if (pixel != last) {
      index = palette.indexOf(pixel);
      last = pixel;
    }
    if (index == Palette::kMostColours) return false;
    out[x] = static_cast<std::uint8_t>(index);
  }
  return true;
}

// Two pixels a byte, the left one in the upper half (ISO/IEC 15948, 7.2). In place.
void packNibbles(std::uint8_t* row, std::uint32_t width) {
  for (std::uint32_t x = 0; x < width; x += 2) {
    const int right = x + 1 < width ? row[x + 1] : 0;
    row[x / 2] = static_cast<std::uint8_t>(row[x] << 4 | right);
  }
}

void setPalette(PackedImage& packed, const Palette& palette) {
  packed.colourType = PNG_COLOR_TYPE_PALETTE;
  packed.bitDepth = palette.size() <= 16 ? 4 : 8;
  for (std::size_t i = 0; i < palette.size(); ++i) {
    const Pixel pixel = palette[i];
    std::array<png_byte, kBytesPerPixel> rgba;
    std::memcpy(rgba.data(), &pixel, rgba.size());
    packed.colours.push_back({rgba[0], rgba[1], rgba[2]});
    packed.alphas.push_back(rgba[3]);
  }
}

// Only the painted rows are looked at; all others share one transparent row.
bool packWithPalette(const RgbaImage& image, PackedImage& packed) {
  Palette palette;
  const auto painted = image.paintedRows;
  const std::size_t paintedCount = painted.end - painted.first;
  packed.bytes.resize((paintedCount + 1) * image.width);
  std::uint8_t* const blankRow = packed.bytes.data() + paintedCount * image.width;
  packed.rows.assign(image.height, blankRow);
  if (paintedCount < image.height) {
    static_assert(kTransparentBlack == 0);
    palette.indexOf(kTransparentBlack);  // takes number 0, which fills the blank row already
  }
  for (std::uint32_t y = painted.first; y < painted.end; ++y) {
    std::uint8_t* const row = packed.bytes.data() + std::size_t{y - painted.first} * image.width;
    if (!indexRow(image.row(y), image.width, palette, row)) return false;
    packed.rows[y] = row;
  }
  setPalette(packed, palette);
  if (packed.bitDepth == 4) {
    for (std::uint32_t y = painted.first; y < painted.end; ++y) {
      packNibbles(packed.bytes.data() + std::size_t{y - painted.first} * image.width, image.width);
    }
  }
  return true;
}

PackedImage pack(const RgbaImage& image) {
  PackedImage packed;
  packed.width = image.width;
  packed.height = image.height;
  if (packWithPalette(image, packed)) return packed;
  packed.bytes.clear();
  for (std::uint32_t y = 0; y < image.height; ++y) packed.rows[y] = image.row(y);
  return packed;
}

// libpng is C: an exception must not pass through it, so memory that runs out is its error.
void appendToBuffer(png_structp png, png_bytep data, png_size_t size) {
  bool isTaken = true;
  try {
    auto& buffer = *static_cast<ByteBuffer*>(png_get_io_ptr(png));
    buffer.insert(buffer.end(), data, data + size);
  } catch (const std::bad_alloc&) {
    isTaken = false;
  }
  if (!isTaken) png_error(png, "out of memory");
}

void flushNothing(png_structp) {
}

[[noreturn]] void onError(png_structp png, png_const_charp) {
  png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp) {
}

// Comes back twice where libpng fails, so nothing here may need a destructor.
bool write(png_structp png, png_infop info, const PackedImage& image, ByteBuffer& out) {
  if (setjmp(png_jmpbuf(png))) return false;
  png_set_write_fn(png, &out, appendToBuffer, flushNothing);
  png_set_compression_level(png, kCompressionLevel);
  png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
  png_set_IHDR(png, info, image.width, image.height, image.bitDepth, image.colourType,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (image.colourType == PNG_COLOR_TYPE_PALETTE) {
    const int colours = static_cast<int>(image.colours.size());
    png_set_PLTE(png, info, image.colours.data(), colours);
    png_set_tRNS(png, info, image.alphas.data(), colours, nullptr);
  }
  png_write_info(png, info);
  for (const std::uint8_t* row : image.rows) png_write_row(png, row);
  png_write_end(png, nullptr);
  return true;
}

class LibpngEncoder final : public IPngEncoder {
 public:
  std::optional<ByteBuffer> encode(const RgbaImage& image) override {
    if (image.width == 0 || image.height == 0) return std::nullopt;
    const PackedImage packed = pack(image);
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, onError, onWarning);
    if (!png) throw std::bad_alloc();
    png_infop info = png_create_info_struct(png);
    ByteBuffer out;
    const bool isWritten = info && write(png, info, packed, out);
    png_destroy_write_struct(&png, &info);
    if (!isWritten) return std::nullopt;
    return out;
  }
};

}  // namespace

std::unique_ptr<IPngEncoder> createPngEncoder() {
  return std::make_unique<LibpngEncoder>();
}

}  // namespace korr::encoding::subtitling::ttml::inline v2_1
