// SPDX-License-Identifier: MIT
#include "recognition/picture_reader.h"

#include <algorithm>
#include <cmath>

#include "recognition/alignment.h"
#include "recognition/letters.h"
#include "recognition/line_decoder.h"
#include "recognition/line_image.h"
#include "recognition/writing_order.h"

namespace korr::recognition {

using encoding::subtitling::PixelBuffer;

namespace {

// A kind of shapes is settled by so many votes; more do not change it.
constexpr double kEnoughVotes = 6;
constexpr double kMostVotes = 24;
constexpr double kSharpShare = 0.8;

constexpr double kSecondZoom = 0.75;

// Characters without a shape, which engines add to text that runs to the left.
bool isInvisible(const std::string& text) {
  const auto letter = firstLetter(text);
  return letter == 0 || letter == 0x200E || letter == 0x200F || letter == 0x200C ||
         letter == 0x200D;
}

// Each word in one alphabet.
void unifyAlphabets(std::vector<EngineSymbol>& symbols) {
  for (std::size_t first = 0; first < symbols.size();) {
    std::size_t end = first + 1;
    while (end < symbols.size() && !symbols[end].startsWord) ++end;
    std::string word;
    for (std::size_t i = first; i < end; ++i) word += symbols[i].text;
    const auto before = lettersOf(word), after = lettersOf(inOneAlphabet(word));
    std::size_t letter = 0;
    for (std::size_t i = first; i < end && before != after; ++i) {
      std::string text;
      for (std::size_t count = lettersOf(symbols[i].text).size(); count > 0; --count)
        text += utf8Of(after[letter++]);
      symbols[i].text = text;
    }
    first = end;
  }
}

}  // namespace

Script scriptOf(const std::string& languages) {
  return isJoinedLanguage(languages) ? Script::Joined : Script::Separate;
}

PictureReader::PictureReader(ReaderSetup setup) : setup_(setup) {
}

std::size_t PictureReader::add(const SubtitleBitmap& bitmap) {
  ++counters_.pictures;
  auto& seen = pictures_.emplace_back();
  seen.width = static_cast<std::int32_t>(bitmap.width);
  seen.height = static_cast<std::int32_t>(bitmap.height);
  const auto picture = indexPicture(bitmap);
  if (!picture) return pictures_.size() - 1;
  const auto roles = findRoles(*picture);
  const auto mask = maskOf(*picture, roles);
  const auto parts = findParts(mask);
  if (parts.isTooMany) {
    seen.isUnreadable = true;
    ++counters_.unreadable;
    return pictures_.size() - 1;
  }
  for (const auto& line : findLines(mask, parts, setup_.script)) {
    auto seenLine = see(*picture, roles, mask, parts, line);
    ++counters_.lines;
    if (setup_.engine && counters_.engineLines < setup_.mostEngineLines &&
        isWorthAsking(seenLine)) {
      ask(seenLine, mask, parts, line);
    }
    seenLine.baseline += picture->top;
    for (auto& glyph : seenLine.glyphs)
      glyph.left = static_cast<std::int16_t>(glyph.left + picture->left);
    seenLine.box.left += picture->left;
    seenLine.box.right += picture->left;
    seenLine.box.top += picture->top;
    seenLine.box.bottom += picture->top;
    seen.lines.push_back(std::move(seenLine));
  }
  return pictures_.size() - 1;
}

SeenLine PictureReader::see(const IndexedPicture& picture, const PaletteRoles& roles,
                            const LetterMask& mask, const LetterParts& parts,
                            const GlyphLine& line) {
  SeenLine seen;
  seen.height = line.height;
  seen.baseline = line.baseline;
  seen.slant = static_cast<float>(line.slant);
  seen.box = line.glyphs.front().box;
  double right = 0;
  for (const auto& glyph : line.glyphs) {
    seen.box.include(glyph.box);
    SeenGlyph out;
    out.left = static_cast<std::int16_t>(glyph.box.left);
    out.gapBefore = seen.glyphs.empty() ? 0 : static_cast<float>(glyph.left - right);
    right = seen.glyphs.empty() ? glyph.right : std::max(right, glyph.right);
    out.shape = setup_.book->add(shapeOf(mask, parts, line, glyph));
    if (out.shape != kNoShape)
      setup_.book->countSeen(setup_.book->kindOf(out.shape), line.slant != 0);
    std::vector<std::uint32_t> counts(roles.fills.size());
    for (std::int32_t y = glyph.box.top; y < glyph.box.bottom; ++y) {
      for (std::int32_t x = glyph.box.left; x < glyph.box.right; ++x) {
        if (mask.at(x, y) >= 200) ++counts[roles.fillOf[picture.at(x, y)]];
      }
    }
    const auto most = std::max_element(counts.begin(), counts.end()) - counts.begin();
    out.colour = colourNumber(picture.palette[roles.fills[static_cast<std::size_t>(most)]]);
    if (!seen.glyphs.empty()) gaps_.count(double(out.gapBefore) / line.height);
    seen.glyphs.push_back(out);
    ++counters_.glyphs;
  }
  return seen;
}

bool PictureReader::isWorthAsking(const SeenLine& line) const {
  return std::any_of(line.glyphs.begin(), line.glyphs.end(), [this](const SeenGlyph& glyph) {
    if (glyph.shape == kNoShape) return true;
    const auto& kind = setup_.book->kind(setup_.book->kindOf(glyph.shape));
    if (kind.isCorrected) return false;
    return kind.weight < kEnoughVotes || (kind.share() < kSharpShare && kind.weight < kMostVotes);
  });
}

void PictureReader::ask(SeenLine& seen, const LetterMask& mask, const LetterParts& parts,
                        const GlyphLine& line) {
  auto answer = askOnce(seen, mask, parts, line, 1);
  // Engines lose a letter now and then; in another size they mostly find it.
  if (answer.unmatched > 0) {
    auto second = askOnce(seen, mask, parts, line, kSecondZoom);
    if (second.unmatched < answer.unmatched ||
        (second.unmatched == answer.unmatched && second.cost < answer.cost)) {
      answer = std::move(second);
    }
  }
  learn(seen, line, answer.readings);
}

Alignment PictureReader::askOnce(const SeenLine& seen, const LetterMask& mask,
                                 const LetterParts& parts, const GlyphLine& line, double zoom) {
  ++counters_.engineLines;
  const auto drawn = drawLine(mask, parts, line, setup_.script, zoom);
  auto symbols = setup_.engine->read(drawn.image);
  std::erase_if(symbols, [](const EngineSymbol& symbol) { return isInvisible(symbol.text); });
  for (auto& symbol : symbols) {
    if (symbol.text == "…") symbol.text = "...";
    symbol.left = symbol.left / drawn.scale + drawn.left;
    symbol.right = symbol.right / drawn.scale + drawn.left;
  }
  unifyAlphabets(symbols);
  const auto& book = *setup_.book;
  const auto prior = [&](std::size_t glyph, const std::string& text) {
    const ShapeId shape = seen.glyphs[glyph].shape;
    if (shape == kNoShape) return 0.0;
    const auto& kind = book.kind(book.kindOf(shape));
    if (kind.isCorrected) return kind.corrected == text ? 1.0 : -1.0;
    if (kind.weight < 1.5) return 0.0;
    for (const auto& vote : kind.votes) {
      if (vote.text == text) return vote.weight / kind.weight;
    }
    return -0.7 * std::min(1.0, kind.weight / kEnoughVotes);
  };
  return align(line, std::move(symbols), prior, sizes_);
}

void PictureReader::learn(SeenLine& seen, const GlyphLine& line,
                          const std::vector<GlyphReading>& readings) {
  const auto& book = *setup_.book;
  for (std::size_t i = 0; i < readings.size(); ++i) {
    auto& glyph = seen.glyphs[i];
    const auto& reading = readings[i];
    glyph.isRead = true;
    glyph.reading = textNumber(reading.text);
    glyph.confidence = static_cast<std::uint8_t>(std::lround(reading.confidence * 100));
    glyph.joined = static_cast<std::int8_t>(reading.glyphs);
    if (reading.isKnown && i > 0 && readings[i - 1].isKnown && reading.glyphs != 0) {
      glyph.space = reading.spaceBefore ? 1 : 0;
      gaps_.learn(double(glyph.gapBefore) / line.height, reading.spaceBefore);
    }
    if (!reading.isKnown || glyph.shape == kNoShape) continue;
    const KindId kind = book.kindOf(glyph.shape);
    const double weight = std::max(0.05, reading.confidence * reading.confidence);
    if (reading.glyphs == 1) {
      setup_.book->vote(kind, reading.text, weight);
      if (lettersOf(reading.text).size() == 1)
        sizes_.learn(reading.text, sizeOf(line.glyphs[i], line), weight);
      if (i > 0 && readings[i - 1].glyphs == 1 && seen.glyphs[i - 1].shape != kNoShape) {
        setup_.book->voteApart(book.kindOf(seen.glyphs[i - 1].shape), kind, weight);
      }
    } else if (reading.glyphs == 2 && seen.glyphs[i + 1].shape != kNoShape) {
      setup_.book->voteTogether(kind, book.kindOf(seen.glyphs[i + 1].shape), reading.text, weight);
    }
  }
}

std::uint32_t PictureReader::textNumber(const std::string& text) {
  const auto [it, isNew] =
      textNumbers_.try_emplace(text, static_cast<std::uint32_t>(texts_.size()));
  if (isNew) texts_.push_back(text);
  return it->second;
}

std::uint16_t PictureReader::colourNumber(const Colour& colour) {
  const auto found = std::find(colours_.begin(), colours_.end(), colour);
  if (found != colours_.end()) return static_cast<std::uint16_t>(found - colours_.begin());
  if (colours_.size() == 60'000) return 0;
  colours_.push_back(colour);
  return static_cast<std::uint16_t>(colours_.size() - 1);
}

RecognisedPicture PictureReader::text(std::size_t picture) const {
  const auto& seen = pictures_[picture];
  RecognisedPicture out;
  out.displayWidth = seen.width;
  out.displayHeight = seen.height;
  if (seen.isUnreadable) {
    out.confidence = 0;
    out.doubts.push_back("no letters: the picture has more parts than text has");
    out.lines.push_back(
        {.runs = {{.text = "\uFFFD", .colour = {255, 255, 255, 255}, .italic = false}},
         .box = {.left = 0, .top = 0, .right = seen.width, .bottom = seen.height},
         .baseline = seen.height,
         .height = seen.height / 20,
         .confidence = 0});
    return out;
  }
  const Learnt learnt{.book = *setup_.book,
                      .gaps = gaps_,
                      .sizes = sizes_,
                      .texts = texts_,
                      .colours = colours_,
                      .words = setup_.words};
  for (const auto& line : seen.lines) {
    auto decoded = decodeLine(line, learnt, out.doubts);
    out.confidence = std::min(out.confidence, decoded.confidence);
    if (!decoded.text().empty()) out.lines.push_back(std::move(decoded));
  }
  return out;
}

SubtitleBitmap PictureReader::draw(std::size_t picture) const {
  constexpr std::int32_t kMargin = 6;
  const auto& seen = pictures_[picture];
  SubtitleBitmap out;
  if (seen.lines.empty()) return out;
  Box box = seen.lines.front().box;
  for (const auto& line : seen.lines) box.include(line.box);
  box = {.left = box.left - kMargin,
         .top = box.top - kMargin,
         .right = box.right + kMargin,
         .bottom = box.bottom + kMargin};
  out.width = static_cast<std::uint32_t>(box.width());
  out.height = static_cast<std::uint32_t>(box.height());
  auto pixels = std::make_shared<PixelBuffer>(out.width, out.height);
  pixels->addPaintedRows({0, out.height});
  for (std::size_t i = 3; i < pixels->size(); i += 4) pixels->data()[i] = 255;
  for (const auto& line : seen.lines) {
    for (const auto& glyph : line.glyphs) {
      if (glyph.shape == kNoShape) continue;
      const auto& shape = setup_.book->shape(glyph.shape);
      const auto& colour = colours_[glyph.colour];
      for (std::int32_t y = 0; y < shape.height; ++y) {
        for (std::int32_t x = 0; x < shape.width; ++x) {
          const auto px = glyph.left - 1 + x - box.left,
                     py = line.baseline - shape.rise + y - box.top;
          if (shape.at(x, y) == 0 || px < 0 || py < 0 || px >= box.width() || py >= box.height())
            continue;
          auto* to = pixels->data() +
                     (static_cast<std::size_t>(py) * out.width + static_cast<std::size_t>(px)) * 4;
          to[0] = static_cast<std::uint8_t>(colour.red * shape.at(x, y) / 3);
          to[1] = static_cast<std::uint8_t>(colour.green * shape.at(x, y) / 3);
          to[2] = static_cast<std::uint8_t>(colour.blue * shape.at(x, y) / 3);
        }
      }
    }
  }
  out.visible = 1;
  out.pixels = std::move(pixels);
  return out;
}

}  // namespace korr::recognition
