// Looking out for another thread before falling asleep.
#pragma once

#include <windows.h>

namespace korr::platform::inline v2_1 {

/// Looks some microseconds long whether `condition` has come true, which what another thread is
/// about to do mostly has by then; a thread that falls asleep costs both more. `condition` is
/// called a thousand times at most, must not throw, and must see other threads' writes.
template <typename Condition>
bool spinUntil(Condition condition) {
  constexpr int kLooks = 1000;
  for (int i = 0; i < kLooks; ++i) {
    if (condition()) return true;
    YieldProcessor();
  }
  return false;
}

}  // namespace korr::platform::inline v2_1
