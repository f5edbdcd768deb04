// SPDX-License-Identifier: MIT

// PNG by libpng, for pictures of few colours above all: subtitles have a dozen. The image data is
// compressed here: libpng takes it row by row, which costs as much again where most rows are blank.
#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <utility>
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
  std::vector<png_color> colours;  // with a palette only
  std::vector<png_byte> alphas;    // one per colour
  PixelBuffer::RowRange painted;   // all bytes of the other rows are zero
  std::size_t rowBytes = 0;        // the filter type's byte included
  ByteBuffer rows;                 // the painted ones
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

// Two pixels a byte, the left one in the upper half (ISO/IEC 15948, 7.2).
void packNibbles(const std::uint8_t* indices, std::uint32_t width, std::uint8_t* out) {
  for (std::uint32_t x = 0; x + 1 < width; x += 2)
    *out++ = static_cast<std::uint8_t>(indices[x] << 4 | indices[x + 1]);
  if (width % 2 != 0) *out = static_cast<std::uint8_t>(indices[width - 1] << 4);
}

// Room for the painted rows; their first byte says that no filter is used.
void makeRows(PackedImage& packed, std::size_t bitsPerPixel) {
  packed.rowBytes = 1 + (packed.width * bitsPerPixel + 7) / 8;
  packed.rows.assign((packed.painted.end - packed.painted.first) * packed.rowBytes, 0);
}

// Only the painted rows are looked at.
bool packWithPalette(const RgbaImage& image, PackedImage& packed) {
  Palette palette;
  if (packed.painted.end - packed.painted.first < image.height) {
    palette.indexOf(kTransparentBlack);  // number 0, of which blank rows consist
  }
  ByteBuffer indices((packed.painted.end - packed.painted.first) * std::size_t{image.width});
  std::uint8_t* row = indices.data();
  for (std::uint32_t y = packed.painted.first; y < packed.painted.end; ++y, row += image.width) {
    if (!indexRow(image.row(y), image.width, palette, row)) return false;
  }
  setPalette(packed, palette);
  makeRows(packed, static_cast<std::size_t>(packed.bitDepth));
  std::uint8_t* out = packed.rows.data();
  row = indices.data();
  for (std::uint32_t y = packed.painted.first; y < packed.painted.end; ++y, row += image.width) {
    if (packed.bitDepth == 4) {
      packNibbles(row, image.width, out + 1);
    } else {
      std::copy_n(row, image.width, out + 1);
    }
    out += packed.rowBytes;
  }
  return true;
}

PackedImage pack(const RgbaImage& image) {
  PackedImage packed;
  packed.width = image.width;
  packed.height = image.height;
  packed.painted = image.paintedRows;
  if (packWithPalette(image, packed)) return packed;
  makeRows(packed, kBytesPerPixel * 8);
  std::uint8_t* out = packed.rows.data();
  for (std::uint32_t y = packed.painted.first; y < packed.painted.end; ++y) {
    std::copy_n(image.row(y), image.width * kBytesPerPixel, out + 1);
    out += packed.rowBytes;
  }
  return packed;
}

// A zlib stream into a buffer that grows.
class Deflater {
 public:
  Deflater() : out_(kFirstSize) {
    if (deflateInit(&stream_, kCompressionLevel) != Z_OK) throw std::bad_alloc();
    offerRoom();
  }
  ~Deflater() { deflateEnd(&stream_); }
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;

  // How to look for matches in what is written from now on.
  void setStrategy(int strategy) {
    while (deflateParams(&stream_, kCompressionLevel, strategy) == Z_BUF_ERROR) grow();
  }

  void write(std::span<const std::uint8_t> bytes) {
    stream_.next_in = const_cast<std::uint8_t*>(bytes.data());  // zlib only reads
    stream_.avail_in = static_cast<uInt>(bytes.size());
    while (deflate(&stream_, Z_NO_FLUSH), stream_.avail_in != 0) grow();
  }

  ByteBuffer finish() {
    while (deflate(&stream_, Z_FINISH) != Z_STREAM_END) grow();
    out_.resize(stream_.total_out);
    return std::move(out_);
  }

 private:
  static constexpr std::size_t kFirstSize = 16 * 1024;

  void grow() {
    out_.resize(2 * out_.size());
    offerRoom();
  }

  void offerRoom() {
    stream_.next_out = out_.data() + stream_.total_out;
    stream_.avail_out = static_cast<uInt>(out_.size() - stream_.total_out);
  }

  ByteBuffer out_;
  z_stream stream_{};
};

// Blank rows need no search for matches: what repeats there is the byte before. That halves the
// time of a usual subtitle, and codes of their own for the blank rows make it smaller, too.
ByteBuffer compress(const PackedImage& image) {
  static constexpr std::array<std::uint8_t, 16 * 1024> kBlank{};
  Deflater deflater;
  const auto writeBlankRows = [&](std::uint32_t count) {
    if (count == 0) return;
    deflater.setStrategy(Z_RLE);
    for (std::size_t left = count * image.rowBytes; left > 0;) {
      const auto part = std::span(kBlank).first(std::min(left, kBlank.size()));
      deflater.write(part);
      left -= part.size();
    }
  };
  writeBlankRows(image.painted.first);
  deflater.setStrategy(Z_DEFAULT_STRATEGY);
  deflater.write(image.rows);
  writeBlankRows(image.height - image.painted.end);
  return deflater.finish();
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
bool write(png_structp png, png_infop info, const PackedImage& image, const ByteBuffer& compressed,
           ByteBuffer& out) {
  constexpr const png_byte kImageData[] = "IDAT";
  constexpr const png_byte kImageEnd[] = "IEND";
  if (setjmp(png_jmpbuf(png))) return false;
  png_set_write_fn(png, &out, appendToBuffer, flushNothing);
  png_set_IHDR(png, info, image.width, image.height, image.bitDepth, image.colourType,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (image.colourType == PNG_COLOR_TYPE_PALETTE) {
    const int colours = static_cast<int>(image.colours.size());
    png_set_PLTE(png, info, image.colours.data(), colours);
    png_set_tRNS(png, info, image.alphas.data(), colours, nullptr);
  }
  png_write_info(png, info);
  png_write_chunk(png, kImageData, compressed.data(), compressed.size());
  png_write_chunk(png, kImageEnd, nullptr, 0);
  return true;
}

class LibpngEncoder final : public IPngEncoder {
 public:
  std::optional<ByteBuffer> encode(const RgbaImage& image) override {
    if (image.width == 0 || image.height == 0) return std::nullopt;
    const PackedImage packed = pack(image);
    const ByteBuffer compressed = compress(packed);
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, onError, onWarning);
    if (!png) throw std::bad_alloc();
    png_infop info = png_create_info_struct(png);
    ByteBuffer out;
    const bool isWritten = info && write(png, info, packed, compressed, out);
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
