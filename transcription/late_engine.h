// SPDX-License-Identifier: MIT

// The engine of a language, opened when the first unknown letter comes.
#pragma once

#include <memory>
#include <string>

#include "log/logger.h"
#include "recognition/line_engine.h"

namespace korr::txsub {

/// Says once what is missing, and reads nothing from then on. Not thread-safe.
class LateEngine final : public recognition::ILineEngine {
 public:
  /// `language` as Tesseract names it; `logger` is not owned.
  LateEngine(std::string language, log::ILogger& logger)
      : language_(std::move(language)), logger_(logger) {}

  std::vector<recognition::EngineSymbol> read(const recognition::LineImage& line) override;

 private:
  std::string language_;
  log::ILogger& logger_;
  bool isOpened_ = false;
  std::unique_ptr<recognition::ILineEngine> engine_;  // null when it cannot be had
};

}  // namespace korr::txsub
