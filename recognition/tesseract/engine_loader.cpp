// SPDX-License-Identifier: MIT
#include <cstdlib>

#include "platform/module_loader.h"
#include "recognition/tesseract/engine_module.h"
#include "util/exception.h"

namespace korr::recognition {

std::string engineProblem(const std::string& language) {
  std::string problem;
  try {
    auto* const explain =
        reinterpret_cast<ExplainEngine*>(platform::moduleFunction(kEngineModule, kExplainEngine));
    explain(language, problem);
  } catch (const util::TessaryException& error) {
    problem = error.what();
  }
  return problem;
}

std::vector<std::string> engineLanguagesHere() {
  std::vector<std::string> languages;
  try {
    auto* const list =
        reinterpret_cast<ListLanguages*>(platform::moduleFunction(kEngineModule, kListLanguages));
    list(languages);
  } catch (const util::TessaryException&) {
    // No module, no language.
  }
  return languages;
}

std::unique_ptr<ILineEngine> loadEngine(const std::string& language) {
  // Read once, when the library is loaded.
  setenv("OMP_THREAD_LIMIT", "1", 0);
  auto* const open =
      reinterpret_cast<OpenEngine*>(platform::moduleFunction(kEngineModule, kOpenEngine));
  return std::unique_ptr<ILineEngine>(open(language));
}

std::unique_ptr<IWordList> loadWordList(const std::string& language) {
  auto* const open =
      reinterpret_cast<OpenWordList*>(platform::moduleFunction(kEngineModule, kOpenWordList));
  return std::unique_ptr<IWordList>(open(language));
}

}  // namespace korr::recognition
