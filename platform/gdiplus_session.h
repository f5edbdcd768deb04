// SPDX-License-Identifier: MIT

// GDI+, started.
#pragma once

#include <windows.h>
// GDI+ uses PROPID, which the lean windows.h leaves out.
#include <objidl.h>

#include <gdiplus.h>

namespace korr::platform::inline v2_1 {

/// Runs GDI+ for as long as it lives. Where that fails, every call of GDI+ fails in its turn.
class GdiplusSession {
 public:
  GdiplusSession() {
    const Gdiplus::GdiplusStartupInput input;
    isStarted_ = Gdiplus::GdiplusStartup(&token_, &input, nullptr) == Gdiplus::Ok;
  }
  ~GdiplusSession() {
    if (isStarted_) Gdiplus::GdiplusShutdown(token_);
  }
  GdiplusSession(const GdiplusSession&) = delete;
  GdiplusSession& operator=(const GdiplusSession&) = delete;

  bool isStarted() const { return isStarted_; }

 private:
  ULONG_PTR token_ = 0;
  bool isStarted_ = false;
};

}  // namespace korr::platform::inline v2_1
