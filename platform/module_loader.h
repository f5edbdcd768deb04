// SPDX-License-Identifier: MIT

// Parts of the program that are loaded only when they are needed.
#pragma once

namespace korr::platform {

/// A function of a shared module that lies beside the program, or the library that this is part
/// of, or in lib/txsub or txsub beside its folder.
/// The module stays loaded. Throws util::TessaryException when there is no such module or function,
/// or when the module was not built together with the program: C++ classes pass between them.
void* moduleFunction(const char* module, const char* function);

}  // namespace korr::platform
