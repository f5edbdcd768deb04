// SPDX-License-Identifier: MIT

// The module's two functions, called by engine_loader.cpp.
#include "recognition/tesseract/engine_module.h"

#include "recognition/tesseract/hunspell_words.h"
#include "recognition/tesseract/tesseract_engine.h"

using namespace korr::recognition;

extern "C" __attribute__((visibility("default"))) ILineEngine* txsubOpenTesseract(
    const std::string& language) {
  return openTesseract(language).release();
}

extern "C" __attribute__((visibility("default"))) void txsubExplainTesseract(
    const std::string& language, std::string& problem) {
  problem += missingData(language);
}

extern "C" __attribute__((visibility("default"))) void txsubListTesseract(
    std::vector<std::string>& languages) {
  for (auto& language : installedLanguages()) languages.push_back(std::move(language));
}

extern "C" __attribute__((visibility("default"))) IWordList* txsubOpenWordList(
    const std::string& language) {
  return openHunspell(language).release();
}

static_assert(std::is_same_v<decltype(txsubOpenTesseract), OpenEngine>);
static_assert(std::is_same_v<decltype(txsubExplainTesseract), ExplainEngine>);
static_assert(std::is_same_v<decltype(txsubListTesseract), ListLanguages>);
static_assert(std::is_same_v<decltype(txsubOpenWordList), OpenWordList>);
