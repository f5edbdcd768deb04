#include "teletext/row_decoder.h"

#include <utility>

#include "teletext/hamming.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {
namespace {

constexpr std::uint8_t kAlphaRed = 0x01;
constexpr std::uint8_t kAlphaWhite = 0x07;
constexpr std::uint8_t kFlash = 0x08;
constexpr std::uint8_t kEndBox = 0x0A;
constexpr std::uint8_t kStartBox = 0x0B;
constexpr std::uint8_t kNormalSize = 0x0C;
constexpr std::uint8_t kDoubleSize = 0x0F;
constexpr std::uint8_t kFirstPrintable = 0x20;

class RowDecoder {
 public:
  explicit RowDecoder(const RowContext& context) : context_(context) {}

  void take(std::uint8_t code, std::uint32_t column) {
    std::optional<GlyphText> glyph;
    if (code < kFirstPrintable) {
      act(code);
      glyph = GlyphText(' ');
    } else if (boxOn_) {
      glyph = context_.characters.g0(code);
    }
    if (boxOn_) append(glyph, column);
    if (code != kStartBox) prevStart_ = false;
    if (code != kEndBox) prevEnd_ = false;
  }

  std::vector<TeletextText::Run> finish() {
    endRun();
    return std::move(runs_);
  }

 private:
  // Spacing attributes act before their own cell is shown.
  void act(std::uint8_t code) {
    if (code >= kAlphaRed && code <= kAlphaWhite) {
      const auto colour = static_cast<TeletextColour>(code);
      if (colour == run_.colour) return;
      endRun();
      run_.colour = colour;
    } else if (code >= kNormalSize && code <= kDoubleSize) {
      const auto size = static_cast<TeletextSize>(code);
      if (size == run_.size) return;
      endRun();
      run_.size = size;
    } else if (code == kStartBox) {
      // A box opens at the second of two codes; a single one closes it, deliberately.
      boxOn_ = std::exchange(prevStart_, true);
    } else if (code >= kFlash && code <= kEndBox) {
      // A box closes when one of flash, steady and end box follows an end box, deliberately.
      if (std::exchange(prevEnd_, true)) boxOn_ = false;
    }
  }

  void append(std::optional<GlyphText> glyph, std::uint32_t column) {
    if (!glyph) return;  // the page's set has no such character
    if (const auto enhanced = context_.enhancements.at(context_.row, column)) glyph = enhanced;
    if (run_.glyphs.empty()) run_.column = column;
    run_.glyphs.push_back(*glyph);
  }

  // Keeps the run if it received a cell; the next one starts with its colour and size.
  void endRun() {
    if (run_.glyphs.empty()) return;
    runs_.push_back(run_);
    run_.glyphs.clear();
  }

  const RowContext& context_;
  std::vector<TeletextText::Run> runs_;
  TeletextText::Run run_;
  bool boxOn_ = false;
  bool prevStart_ = false;
  bool prevEnd_ = false;
};

}  // namespace

std::vector<TeletextText::Run> decodeRow(std::span<const std::uint8_t> bytes,
                                         const RowContext& context) {
  RowDecoder decoder(context);
  auto column = context.firstColumn;
  for (const auto byte : bytes) decoder.take(kCharacterCode[byte], column++);
  return decoder.finish();
}

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
