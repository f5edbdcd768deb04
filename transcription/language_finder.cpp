// SPDX-License-Identifier: MIT
#include "transcription/language_finder.h"

#include <algorithm>
#include <utility>

#include "recognition/letters.h"
#include "recognition/picture_reader.h"
#include "recognition/tesseract/engine_module.h"
#include "util/exception.h"

namespace korr::txsub {

namespace {

using encoding::subtitling::SubtitleBitmap;

constexpr std::size_t kLinesOfAll = 2;
constexpr std::size_t kLinesOfTheBest = 8;
constexpr std::size_t kBest = 4;  // languages that are tried with more lines

// Letters of words that no dictionary has count less.
constexpr double kUnknownWord = 0.4;

/// Weighs what an engine says on its way to a reader.
class Witness final : public recognition::ILineEngine {
 public:
  explicit Witness(ILineEngine& engine) : engine_(engine) {}

  std::vector<recognition::EngineSymbol> read(const recognition::LineImage& line) override {
    auto symbols = engine_.read(line);
    for (const auto& symbol : symbols) {
      ++count_;
      sum_ += symbol.confidence * (symbol.isOfDictionary ? 1 : kUnknownWord);
    }
    return symbols;
  }

  double score() const { return count_ == 0 ? 0 : sum_ / static_cast<double>(count_); }

 private:
  ILineEngine& engine_;
  std::size_t count_ = 0;
  double sum_ = 0;
};

double scoreOf(const std::string& language, const std::vector<SubtitleBitmap>& pictures,
               std::size_t lines) {
  try {
    const auto engine = recognition::loadEngine(language);
    Witness witness(*engine);
    recognition::ShapeBook book;
    recognition::PictureReader reader({.engine = &witness,
                                       .book = &book,
                                       .script = recognition::scriptOf(language),
                                       .mostEngineLines = lines});
    for (const auto& picture : pictures) reader.add(picture);
    return witness.score();
  } catch (const util::TessaryException&) {
    return 0;  // damaged data: another language
  }
}

using Candidate = std::pair<double, std::string>;

std::vector<Candidate> ranked(const std::vector<std::string>& languages,
                              const std::vector<SubtitleBitmap>& pictures, std::size_t lines) {
  std::vector<Candidate> out;
  for (const auto& language : languages)
    out.emplace_back(scoreOf(language, pictures, lines), language);
  std::ranges::stable_sort(out, std::greater{}, &Candidate::first);
  std::erase_if(out, [](const Candidate& candidate) { return candidate.first <= 0; });
  return out;
}

}  // namespace

std::string findLanguage(const std::vector<SubtitleBitmap>& pictures,
                         const std::vector<std::string>& languages) {
  auto best = ranked(languages, pictures, kLinesOfAll);
  if (best.size() > 1) {
    best.resize(std::min(best.size(), kBest));
    std::vector<std::string> names;
    for (const auto& candidate : best) names.push_back(candidate.second);
    best = ranked(names, pictures, kLinesOfTheBest);
  }
  return best.empty() ? "" : best.front().second;
}

}  // namespace korr::txsub
