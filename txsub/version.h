// SPDX-License-Identifier: MIT

// Which program this is.
#pragma once

#include <string>

namespace korr::txsub {

/// "1.1.0", or "1.1.0 (f8b10046d5)" when it was built in a checkout that stood at that commit.
std::string version();

}  // namespace korr::txsub
