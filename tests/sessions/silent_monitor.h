// SPDX-License-Identifier: MIT

// A monitor that lets everything pass.
#pragma once

#include "sessions/session_monitor.h"

namespace korr::txsub {

class SilentMonitor final : public ISessionMonitor {
 public:
  void report(log::Level, const Place&, const std::string&) override {}
  void chainError(const Place&, const char*) override {}
  void detail(const std::string&) override {}
  void showProgress(const ReadProgress&) override {}
  void endProgress() override {}
  bool isStopWanted() const override { return false; }
  void logV(log::Level, const char*, std::va_list) override {}
  void nameBufferCounters(const char*) override {}
};

}  // namespace korr::txsub
