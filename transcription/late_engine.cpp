// SPDX-License-Identifier: MIT
#include "transcription/late_engine.h"

#include <utility>

#include "recognition/tesseract/engine_module.h"
#include "util/exception.h"

namespace korr::txsub {

std::vector<recognition::EngineSymbol> LateEngine::read(const recognition::LineImage& line) {
  if (!std::exchange(isOpened_, true)) {
    try {
      engine_ = recognition::loadEngine(language_);
    } catch (const util::TessaryException& error) {
      log::write(&logger_, log::Level::Warning, "%s; only letters that are known already are read",
                 error.what());
    }
  }
  if (!engine_) return {};
  return engine_->read(line);
}

}  // namespace korr::txsub
