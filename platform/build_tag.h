// SPDX-License-Identifier: MIT

// What a program and its modules must have in common.
#pragma once

namespace korr::platform {

/// What each module exports under this name, a string: the version, and a hash over the compiler
/// and the headers whose classes pass between program and module.
inline constexpr const char* kBuildTagName = "tessaryBuildTag";

}  // namespace korr::platform
