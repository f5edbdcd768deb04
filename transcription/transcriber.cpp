// SPDX-License-Identifier: MIT
#include "transcription/transcriber.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>

#include "cues/language_tag.h"
#include "recognition/tesseract/engine_module.h"
#include "util/utf8_path.h"

namespace korr::txsub {

namespace {

// Codes that are withdrawn or that the engine has under another name.
constexpr std::array<std::pair<std::string_view, std::string_view>, 9> kEngineNames = {{
    {"mol", "ron"},
    {"nno", "nor"},
    {"nob", "nor"},
    {"scc", "srp"},
    {"scr", "hrv"},
    {"zho", "chi_sim"},
    {"kur", "kmr"},
    {"gsw", "deu"},
    {"ltg", "lav"},
}};

// "und", "mul", "zxx" and the local ones, of which "qaa" is the original sound (EN 300 468, annex
// F).
bool namesNoLanguage(const std::string& code) {
  return code.size() != 3 || code == "und" || code == "mul" || code == "mis" || code == "zxx" ||
         (code[0] == 'q' && code[1] <= 't');
}

std::string engineLanguage(const std::string& iso639) {
  const bool isOwnName = iso639.size() > 4 && iso639[3] == '_';
  if (isOwnName) return iso639;
  const std::string code = terminologicalCode(iso639);
  if (namesNoLanguage(code)) return {};
  const auto* found = std::ranges::find(kEngineNames, std::string_view(code),
                                        &std::pair<std::string_view, std::string_view>::first);
  return found == kEngineNames.end() ? code : std::string(found->second);
}

// "shapes-deu.txt" for "shapes.txt"
std::string withLanguage(const std::string& path, const std::string& language) {
  auto out = pathFromUtf8(path);
  auto name = out.stem();
  name += "-" + language;
  name += out.extension();
  return utf8FromPath(out.replace_filename(name));
}

}  // namespace

std::string engineLanguages(const std::string& iso639) {
  std::string out;
  for (std::size_t first = 0; first <= iso639.size();) {
    const auto end = std::min(iso639.find('+', first), iso639.size());
    const auto language = engineLanguage(iso639.substr(first, end - first));
    if (language.empty()) return {};
    out += (out.empty() ? "" : "+") + language;
    first = end + 1;
  }
  return out;
}

Transcriber::Transcriber(TranscriberSetup setup, log::ILogger& logger)
    : setup_(std::move(setup)), logger_(logger) {
  if (!setup_.reportPath.empty()) report_.emplace();
}

// Empty where nothing says it.
std::string Transcriber::languageOf(const Service& service) const {
  return setup_.languages.empty() ? engineLanguages(service.language) : setup_.languages;
}

std::string Transcriber::problemOf(const Service& service) {
  const auto language = languageOf(service);
  std::string problem;
  if (!language.empty()) {
    problem = recognition::engineProblem(language);
  } else if (recognition::engineLanguagesHere().empty()) {
    problem = recognition::engineProblem("eng");
  }
  if (problem.empty() || !shapesOf(language)->isKnown()) return problem;
  log::write(&logger_, log::Level::Warning, "%s; only the letters of '%s' are read",
             problem.c_str(), setup_.shapesPath.c_str());
  return {};
}

std::unique_ptr<Transcript> Transcriber::transcribe(const Service& service,
                                                    std::unique_ptr<ICueOutput> output,
                                                    std::function<MediaTime()> origin,
                                                    std::optional<MediaTime> delay) {
  return std::make_unique<Transcript>(TranscriptWiring{
      .service = service,
      .language = languageOf(service),
      .output = std::move(output),
      .shapesOf = [this](const std::string& language) { return shapesOf(language); },
      .origin = std::move(origin),
      .delay = delay,
      .report = report_ ? &*report_ : nullptr,
      .logger = &logger_});
}

// Without a file each service has a book of its own: what looks alike in two alphabets is not one
// letter.
std::shared_ptr<ShapesStore> Transcriber::shapesOf(const std::string& language) {
  if (setup_.shapesPath.empty()) return std::make_shared<ShapesStore>("", logger_);
  const auto path =
      setup_.hasFilePerLanguage ? withLanguage(setup_.shapesPath, language) : setup_.shapesPath;
  auto& store = stores_[path];
  if (!store) store = std::make_shared<ShapesStore>(path, logger_);
  return store;
}

void Transcriber::finish() {
  if (report_) report_->write(setup_.reportPath, setup_.title);
}

}  // namespace korr::txsub
