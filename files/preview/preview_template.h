// SPDX-License-Identifier: MIT

// The page around the data of a preview: preview.html, cut where the data go.
#pragma once

#include <string_view>

namespace korr::txsub {

extern const std::string_view kPreviewBeforeData;
extern const std::string_view kPreviewAfterData;

}  // namespace korr::txsub
