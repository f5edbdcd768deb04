// A kernel object.
#pragma once

#include <windows.h>

#include "filter/com_boundary.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

/// Owns a kernel object. Throws HResultError when it was not created.
class Handle {
 public:
  explicit Handle(HANDLE handle) : handle_(handle) {
    if (!handle_) throwLastError();
  }
  ~Handle() { CloseHandle(handle_); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  HANDLE get() const { return handle_; }

 private:
  HANDLE handle_;
};

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
