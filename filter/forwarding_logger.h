// SPDX-License-Identifier: MIT

// The filter's messages on their way to the host.
#pragma once

#include <oleauto.h>
#include <streams.h>
#include <wrl/client.h>

#include <memory>

#include "filter/com_boundary.h"
#include "log/logger.h"
#include "sdk/include/TXSubtitleConverter.h"
#include "util/exception.h"

namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1 {

/// Hands messages to the host's logger and to its sink of texts, to those that there are. Threads
/// may share it.
class ForwardingLogger final : public log::ILogger {
 public:
  /// Null: discard. When the call returns, the previous logger is out of use.
  void setTarget(mqs_subtitle_converter::ILogger* target) {
    const CAutoLock lock(&lock_);
    target_ = target;
  }

  /// Null: none. When the call returns, the previous sink is out of use and released.
  void setSink(ISubtitleConverterLogSink* sink) {
    Microsoft::WRL::ComPtr<ISubtitleConverterLogSink> other(sink);
    const CAutoLock lock(&lock_);
    sink_.Swap(other);
  }

  void logV(log::Level level, const char* format, std::va_list arguments) override {
    const auto number = static_cast<std::uint32_t>(level);
    std::va_list again;
    va_copy(again, arguments);
    forward([&](auto& target) { target.Log(number, format, arguments); },
            [&](auto& sink) { sink.OnMessage(number, bstr(util::vformat(format, again)).get()); });
    va_end(again);
  }

  void nameBufferCounters(const char* name) override {
    forward([&](auto& target) { target.NameBufferCounters(name); },
            [&](auto& sink) { sink.OnBufferCountersNamed(bstr(name).get()); });
  }

 private:
  struct BstrDeleter {
    void operator()(BSTR text) const { SysFreeString(text); }
  };
  static std::unique_ptr<OLECHAR, BstrDeleter> bstr(const std::string& utf8) {
    const std::wstring text = toUtf16(utf8);
    return std::unique_ptr<OLECHAR, BstrDeleter>(
        SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
  }

  template <class ToTarget, class ToSink>
  void forward(ToTarget toTarget, ToSink toSink) {
    // Against setTarget and setSink: neither must end while a message is on its way to it.
    const CAutoLock lock(&lock_);
    if (target_) call([&] { toTarget(*target_); });
    if (sink_) call([&] { toSink(*sink_.Get()); });
  }

  template <class Call>
  static void call(Call call) {
    try {
      call();
    } catch (...) {  // NOLINT(bugprone-empty-catch): nobody is left to be told
    }
  }

  CCritSec lock_;
  mqs_subtitle_converter::ILogger* target_ = nullptr;
  Microsoft::WRL::ComPtr<ISubtitleConverterLogSink> sink_;
};

}  // namespace korr::streaming::direct_show::filters::mqs_subtitle_converter::inline v2_1
