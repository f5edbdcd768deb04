// SPDX-License-Identifier: MIT

// Where C++ ends and COM begins.
#pragma once

#include <windows.h>

#include <exception>
#include <new>
#include <string>

#include "log/logger.h"
#include "util/exception.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

/// The system's message for a result code, UTF-8, without a line feed.
std::string systemMessage(HRESULT result);

/// UTF-8 in the platform's own form. Throws std::bad_alloc.
std::wstring toUtf16(const std::string& utf8);

/// A failing result code on its way to the boundary.
class HResultError final : public util::TessaryException {
 public:
  explicit HResultError(HRESULT result)
      : util::TessaryException(systemMessage(result)), result_(result) {}

  HRESULT result() const { return result_; }

 private:
  HRESULT result_;
};

/// Calls `body`, which returns a result code. What it throws is logged and becomes one: nothing is
/// thrown at a COM caller.
template <class Body>
HRESULT atComBoundary(log::ILogger& logger, Body body) noexcept {
  try {
    return body();
  } catch (const HResultError& error) {
    log::write(&logger, log::Level::Error, "Error: %s", error.what());
    return error.result();
  } catch (const std::bad_alloc& error) {
    log::write(&logger, log::Level::Error, "Error: %s", error.what());
    return E_OUTOFMEMORY;
  } catch (const std::exception& error) {
    log::write(&logger, log::Level::Error, "Error: %s", error.what());
    return E_FAIL;
  }
}

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
