// SPDX-License-Identifier: MIT

// From the module's name, or its registration, to a filter.
#pragma once

#include <dshow.h>
#include <wrl/client.h>

#include <string>

namespace korr::streaming::direct_show::host::inline v2_1 {

/// Creates the converter: of the module at `path` (UTF-8), or of the registered one when `path` is
/// empty. Throws util::TessaryException that says what to do. The module stays loaded.
Microsoft::WRL::ComPtr<IBaseFilter> createConverter(const std::string& path);

/// Throws util::TessaryException with what was tried and the system's message when `result` is a
/// failure.
void require(HRESULT result, const char* what);

}  // namespace korr::streaming::direct_show::host::inline v2_1
