// Looking out for another thread before falling asleep.
#pragma once

#include <windows.h>

#include <algorithm>

namespace korr::platform::inline v2_1 {

/// Looks some tens of microseconds long whether `condition` has come true, which what another
/// thread is about to do mostly has by then; a thread that falls asleep costs both more. It looks
/// more and more seldom, so that it does not keep from the other thread what that has to write.
/// `condition` must not throw, and must see other threads' writes.
template <typename Condition>
bool spinUntil(Condition condition) {
  constexpr int kPauses = 2000;
  constexpr int kLongest = 64;  // pauses between two looks
  int length = 1;
  for (int pauses = 0; pauses < kPauses; pauses += length) {
    if (condition()) return true;
    length = std::min(2 * length, kLongest);
    for (int i = 0; i < length; ++i) YieldProcessor();
  }
  return false;
}

}  // namespace korr::platform::inline v2_1
