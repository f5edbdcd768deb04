// SPDX-License-Identifier: MIT
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
constexpr std::uint8_t kMosaicRed = 0x11;
constexpr std::uint8_t kMosaicWhite = 0x17;
constexpr std::uint8_t kConceal = 0x18;
constexpr std::uint8_t kEscape = 0x1B;
constexpr std::uint8_t kFirstPrintable = 0x20;
constexpr std::uint32_t kLastColumn = 39;
constexpr std::uint32_t kFirstRowWithoutDoubleHeight = 23;

bool isWide(TeletextSize size) {
  return size == TeletextSize::DoubleWidth || size == TeletextSize::Double;
}

/// Opens and closes boxes by the last two codes.
template <TeletextRules kRules>
class BoxState {
 public:
  bool isOpen() const { return isOpen_; }

  void take(std::uint8_t code) {
    if constexpr (kRules.opensBoxesAtPairs) {
      // The codes are sent twice against errors: one of the two may be damaged.
      if (isPair(code, kStartBox)) isOpen_ = true;
      if (isPair(code, kEndBox)) isOpen_ = false;
    } else {
      if (code == kStartBox) {
        // A box opens at the second of two codes; a single one closes it, deliberately.
        isOpen_ = last_ == kStartBox;
      } else if (code >= kFlash && code <= kEndBox && last_ == kEndBox) {
        // A box closes when one of flash, steady and end box follows an end box, deliberately.
        isOpen_ = false;
      }
    }
    last_ = code;
  }

 private:
  bool isPair(std::uint8_t code, std::uint8_t box) const {
    if (last_ == box) return code == box || code == kUnknownCharacter;
    return last_ == kUnknownCharacter && code == box;
  }

  std::uint8_t last_ = kFirstPrintable;
  bool isOpen_ = false;
};

template <TeletextRules kRules>
class RowDecoder {
 public:
  explicit RowDecoder(const RowContext& context) : context_(context) {}

  void take(std::uint8_t code, std::uint32_t column) {
    const bool wasWide = isWide(run_.size);
    if (code < kFirstPrintable) act(code);
    box_.take(code);
    // Sizes hold from the cell after their code, normal size from its own.
    const bool coversNext = !isCovered_ && wasWide && isWide(run_.size) && column < kLastColumn;
    const bool isCovered = std::exchange(isCovered_, kRules.coversCells && coversNext);
    if (!box_.isOpen() && context_.boxesOnly) return;
    if (isCovered) return append(GlyphText(), column);
    append(code < kFirstPrintable ? GlyphText(' ') : letter(code), column);
  }

  std::vector<TeletextText::Run> finish() {
    endRun();
    return std::move(runs_);
  }

 private:
  // Spacing attributes act before their own cell is shown, which has no letter.
  void act(std::uint8_t code) {
    if (code >= kAlphaRed && code <= kAlphaWhite) {
      setColour(code);
      isMosaic_ = isConcealed_ = false;
    } else if (code >= kNormalSize && code <= kDoubleSize) {
      setSize(static_cast<TeletextSize>(code));
    } else if (kRules.blanksMosaics && code >= kMosaicRed && code <= kMosaicWhite) {
      setColour(code - kMosaicRed + kAlphaRed);
      isMosaic_ = true;
      isConcealed_ = false;
    } else if (kRules.conceals && code == kConceal) {
      isConcealed_ = true;
    } else if (kRules.switchesSets && code == kEscape) {
      isSecond_ = !isSecond_;
    }
  }

  void setColour(int code) {
    const auto colour = static_cast<TeletextColour>(code);
    if (colour == run_.colour) return;
    endRun();
    run_.colour = colour;
  }

  void setSize(TeletextSize size) {
    if (kRules.limitsDoubleHeight && !hasRoomBelow()) {
      if (size == TeletextSize::DoubleHeight) size = TeletextSize::Normal;
      if (size == TeletextSize::Double) size = TeletextSize::DoubleWidth;
    }
    if (size == run_.size) return;
    endRun();
    run_.size = size;
  }

  bool hasRoomBelow() const {
    return context_.row > 0 && context_.row < kFirstRowWithoutDoubleHeight;
  }

  std::optional<GlyphText> letter(std::uint8_t code) const {
    if (code == kUnknownCharacter || isHidden(code)) return GlyphText(' ');
    const CharacterSet& set = isSecond_ && context_.second ? *context_.second : context_.characters;
    const auto glyph = set.g0(code);
    return kRules.showsBasicLetters && !glyph ? set.basicG0(code) : glyph;
  }

  // Of mosaics the codes from 0x40 on remain letters (EN 300 706, 15.7.1).
  bool isHidden(std::uint8_t code) const {
    return isConcealed_ || (isMosaic_ && (code & kFirstPrintable) != 0);
  }

  void append(std::optional<GlyphText> glyph, std::uint32_t column) {
    if (!glyph) return;  // the page's set has no such character
    const auto enhanced = context_.enhancements.at(context_.row, column);
    if (enhanced && !isConcealed_ && !glyph->view().empty()) glyph = enhanced;
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
  BoxState<kRules> box_;
  bool isMosaic_ = false;     // set by mosaic colours, ended by alpha colours
  bool isConcealed_ = false;  // set by conceal, ended by colours
  bool isSecond_ = false;     // switched by ESC
  bool isCovered_ = false;    // the next cell, by a wide one
};

template <TeletextRules kRules, class CodeOf>
std::vector<TeletextText::Run> decode(std::span<const std::uint8_t> cells,
                                      const RowContext& context, const CodeOf& codeOf) {
  RowDecoder<kRules> decoder(context);
  auto column = context.firstColumn;
  for (const auto cell : cells) decoder.take(codeOf(cell), column++);
  return decoder.finish();
}

}  // namespace

template <TeletextRules kRules>
std::vector<TeletextText::Run> decodeRow(std::span<const std::uint8_t> bytes,
                                         const RowContext& context) {
  return decode<kRules>(bytes, context,
                        [](std::uint8_t byte) { return characterCodes(kRules)[byte]; });
}

template <TeletextRules kRules>
std::vector<TeletextText::Run> decodeCodes(std::span<const std::uint8_t> codes,
                                           const RowContext& context) {
  return decode<kRules>(codes, context, [](std::uint8_t code) { return code; });
}

template std::vector<TeletextText::Run> decodeRow<kFilter>(std::span<const std::uint8_t>,
                                                           const RowContext&);
template std::vector<TeletextText::Run> decodeCodes<kReceiver>(std::span<const std::uint8_t>,
                                                               const RowContext&);

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
