// SPDX-License-Identifier: MIT

// Where the program is built without an engine.
#include "recognition/tesseract/engine_module.h"
#include "util/exception.h"

namespace korr::recognition {

namespace {

constexpr const char* kNoEngine = "this program is built without an engine that reads letters";

}  // namespace

std::string engineProblem(const std::string&) {
  return kNoEngine;
}

std::vector<std::string> engineLanguagesHere() {
  return {};
}

std::unique_ptr<ILineEngine> loadEngine(const std::string&) {
  throw util::TessaryException(kNoEngine);
}

std::unique_ptr<IWordList> loadWordList(const std::string&) {
  return nullptr;
}

}  // namespace korr::recognition
