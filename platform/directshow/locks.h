// SPDX-License-Identifier: MIT

// A critical section and its guard.
#pragma once

#include <windows.h>

/// A lock that its owning thread may take again.
class CCritSec {
 public:
  CCritSec() { InitializeCriticalSectionAndSpinCount(&section_, kSpins); }
  ~CCritSec() { DeleteCriticalSection(&section_); }
  CCritSec(const CCritSec&) = delete;
  CCritSec& operator=(const CCritSec&) = delete;

  void Lock() { EnterCriticalSection(&section_); }
  void Unlock() { LeaveCriticalSection(&section_); }

 private:
  // Streaming threads hold locks for a few microseconds, less than falling asleep costs.
  static constexpr DWORD kSpins = 1000;

  CRITICAL_SECTION section_;
};

/// Holds a lock for the length of a scope.
class CAutoLock {
 public:
  explicit CAutoLock(CCritSec* lock) : lock_(lock) { lock_->Lock(); }
  ~CAutoLock() { lock_->Unlock(); }
  CAutoLock(const CAutoLock&) = delete;
  CAutoLock& operator=(const CAutoLock&) = delete;

 private:
  CCritSec* lock_;
};
