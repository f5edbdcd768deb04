// SPDX-License-Identifier: MIT

// The rows of the page that is followed.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "model/subtitle.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

/// Rows 0 to 24; a row that was received is there even without a run.
class PageStore {
 public:
  void clear() {
    for (auto& row : rows_) row.reset();
  }

  void store(std::uint32_t row, std::vector<TeletextText::Run> runs) {
    rows_[row] = std::move(runs);
  }

  /// The rows in ascending order.
  TeletextText page() const {
    TeletextText text;
    for (std::size_t number = 0; number < rows_.size(); ++number) {
      if (rows_[number]) text.rows.push_back({static_cast<std::int32_t>(number), *rows_[number]});
    }
    return text;
  }

 private:
  std::array<std::optional<std::vector<TeletextText::Run>>, 25> rows_;
};

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
