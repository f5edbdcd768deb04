// SPDX-License-Identifier: MIT

// Reads the pictures of one service.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "recognition/alignment.h"
#include "recognition/letter_sizes.h"
#include "recognition/line_engine.h"
#include "recognition/recognised_text.h"
#include "recognition/seen_picture.h"
#include "recognition/word_gaps.h"

namespace korr::recognition {

/// Of a language (ISO 639-2), or of several as in "ara+eng".
Script scriptOf(const std::string& languages);

/// About half an hour of an engine's time.
inline constexpr std::size_t kMostEngineLines = 20'000;

struct ReaderSetup {
  ILineEngine* engine = nullptr;  ///< may be null: then only known shapes are read; not owned
  IWordList* words = nullptr;     ///< may be null; not owned
  ShapeBook* book = nullptr;      ///< never null; not owned
  Script script = Script::Separate;
  std::size_t mostEngineLines = kMostEngineLines;  ///< then the engine is not asked any more
};

/// How the pictures of a reader were read.
struct ReaderCounters {
  std::size_t pictures = 0;
  std::size_t lines = 0;
  std::size_t engineLines = 0;
  std::size_t glyphs = 0;
  std::size_t unreadable = 0;  ///< pictures with more parts than letters have
};

/// Takes pictures in the order of time; what they say is asked for after the last one, because what
/// later pictures teach corrects earlier ones. Keeps a few bytes per letter and no picture. Not
/// thread-safe.
class PictureReader {
 public:
  explicit PictureReader(ReaderSetup setup);

  /// Takes a picture. Its number counts from 0.
  std::size_t add(const SubtitleBitmap& bitmap);

  /// What a picture says, as far as it is known by now.
  RecognisedPicture text(std::size_t picture) const;

  /// Drops what is kept of a picture whose text has been asked for the last time.
  void forget(std::size_t picture) { pictures_[picture] = {}; }

  /// The letters of a picture as they were drawn, cut to them, in their own colours on black.
  SubtitleBitmap draw(std::size_t picture) const;

  /// Asked from now on when text is asked for; may be null, not owned.
  void setWords(IWordList* words) { setup_.words = words; }

  /// Between words, in heights of a tall letter; what a file of shapes keeps.
  double wordGap() const { return gaps_.threshold(); }
  void setWordGap(double gap) { gaps_.setKnown(gap); }

  const ReaderCounters& counters() const { return counters_; }

 private:
  SeenLine see(const IndexedPicture& picture, const PaletteRoles& roles, const LetterMask& mask,
               const LetterParts& parts, const GlyphLine& line);
  bool isWorthAsking(const SeenLine& line) const;
  void ask(SeenLine& seen, const LetterMask& mask, const LetterParts& parts, const GlyphLine& line);
  Alignment askOnce(const SeenLine& seen, const LetterMask& mask, const LetterParts& parts,
                    const GlyphLine& line, double zoom);
  void learn(SeenLine& seen, const GlyphLine& line, const std::vector<GlyphReading>& readings);
  std::uint32_t textNumber(const std::string& text);
  std::uint16_t colourNumber(const Colour& colour);

  ReaderSetup setup_;
  ReaderCounters counters_;
  std::vector<SeenPicture> pictures_;
  std::vector<std::string> texts_{""};
  std::unordered_map<std::string, std::uint32_t> textNumbers_{{"", 0}};
  std::vector<Colour> colours_;
  LetterSizes sizes_;
  WordGaps gaps_;
};

}  // namespace korr::recognition
