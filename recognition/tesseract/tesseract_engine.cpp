// SPDX-License-Identifier: MIT
#include "recognition/tesseract/tesseract_engine.h"

#include <tesseract/baseapi.h>
#include <tesseract/resultiterator.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "util/exception.h"

namespace korr::recognition {

namespace {

constexpr const char* kDataFolder = "/usr/share/tesseract-ocr/5/tessdata";

// TESSDATA_PREFIX is Tesseract's own.
std::string dataFolder() {
  const char* const prefix = std::getenv("TESSDATA_PREFIX");
  return prefix && *prefix ? prefix : kDataFolder;
}

class TesseractEngine final : public ILineEngine {
 public:
  explicit TesseractEngine(const std::string& language) {
    // Tesseract prints its own complaints; ours name the package.
    if (api_.Init(nullptr, language.c_str(), tesseract::OEM_LSTM_ONLY) != 0) {
      const auto problem = missingData(language);
      throw util::TessaryException(
          problem.empty() ? "the data to read letters of '" + language + "' is damaged" : problem);
    }
    api_.SetVariable("debug_file", "/dev/null");
  }

  std::vector<EngineSymbol> read(const LineImage& line) override {
    auto symbols = readAs(tesseract::PSM_SINGLE_LINE, line);
    // A line that it does not take for one.
    if (symbols.empty()) symbols = readAs(tesseract::PSM_RAW_LINE, line);
    return symbols;
  }

  std::string readBlock(const LineImage& picture) {
    api_.SetPageSegMode(tesseract::PSM_SINGLE_BLOCK);
    setImage(picture);
    const std::unique_ptr<char[]> text(api_.GetUTF8Text());
    return text ? text.get() : "";
  }

 private:
  std::vector<EngineSymbol> readAs(tesseract::PageSegMode mode, const LineImage& line) {
    api_.SetPageSegMode(mode);
    setImage(line);
    std::vector<EngineSymbol> out;
    if (api_.Recognize(nullptr) != 0) return out;
    const std::unique_ptr<tesseract::ResultIterator> it(api_.GetIterator());
    if (!it) return out;
    do {
      const std::unique_ptr<char[]> text(it->GetUTF8Text(tesseract::RIL_SYMBOL));
      if (!text || *text.get() == 0 || *text.get() == ' ') continue;
      int left = 0, top = 0, right = 0, bottom = 0;
      it->BoundingBox(tesseract::RIL_SYMBOL, &left, &top, &right, &bottom);
      out.push_back({.text = text.get(),
                     .left = double(left),
                     .right = double(right),
                     .confidence = it->Confidence(tesseract::RIL_SYMBOL) / 100,
                     .startsWord = it->IsAtBeginningOf(tesseract::RIL_WORD),
                     .isOfDictionary = it->WordIsFromDictionary()});
    } while (it->Next(tesseract::RIL_SYMBOL));
    return out;
  }

  void setImage(const LineImage& line) {
    api_.SetImage(line.grey.data(), line.width, line.height, 1, line.width);
    api_.SetSourceResolution(300);
  }

  tesseract::TessBaseAPI api_;
};

}  // namespace

std::vector<std::string> installedLanguages() {
  std::vector<std::string> languages;
  std::error_code none;
  for (const auto& entry : std::filesystem::directory_iterator(dataFolder(), none)) {
    const auto name = entry.path().stem().string();
    const bool isLanguage =
        entry.path().extension() == ".traineddata" && name != "osd" && name != "equ";
    if (isLanguage) languages.push_back(name);
  }
  std::sort(languages.begin(), languages.end());
  return languages;
}

std::string missingData(const std::string& language) {
  std::string packages;
  for (std::size_t first = 0; first <= language.size();) {
    const auto end = std::min(language.find('+', first), language.size());
    std::string name = language.substr(first, end - first);
    if (!std::filesystem::exists(dataFolder() + '/' + name + ".traineddata")) {
      std::replace(name.begin(), name.end(), '_', '-');
      packages += " tesseract-ocr-" + name;
    }
    first = end + 1;
  }
  if (packages.empty()) return {};
  return "no data to read letters of '" + language + "': install" + packages;
}

std::unique_ptr<ILineEngine> openTesseract(const std::string& language) {
  return std::make_unique<TesseractEngine>(language);
}

std::string readBlock(ILineEngine& engine, const LineImage& picture) {
  return static_cast<TesseractEngine&>(engine).readBlock(picture);
}

}  // namespace korr::recognition
