// SPDX-License-Identifier: MIT
#include "readers/network_source.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "platform/module_loader.h"
#include "platform/terminal.h"
#include "readers/libav/av_module.h"
#include "util/exception.h"

namespace korr::txsub {

namespace {

using std::chrono::milliseconds;

constexpr std::size_t kLargestMessage = 64 * 1024;
constexpr milliseconds kFirstPause{500};
constexpr milliseconds kLongestPause{30'000};

}  // namespace

NetworkSource::NetworkSource(const NetworkProtocol& protocol, Connect connect, Settings settings)
    : protocol_(protocol),
      connect_(std::move(connect)),
      settings_(std::move(settings)),
      message_(kLargestMessage) {
  try {
    source_ = connect_();
  } catch (const util::TessaryException& error) {
    if (!settings_.reconnects || !connectAgain(error.what())) throw;
  }
}

std::size_t NetworkSource::read(std::span<std::uint8_t> buffer) {
  for (;;) {
    if (const std::size_t count = takeOut(buffer)) return count;
    if (!source_) return 0;
    std::string why = "the sender has ended it";
    try {
      if (receive() != 0) {
        pause_ = milliseconds(0);
        continue;
      }
    } catch (const util::TessaryException& error) {
      if (!settings_.reconnects) throw;
      why = error.what();
    }
    source_.reset();
    bytes_.clear();
    used_ = 0;
    order_.flush(bytes_);
    const bool isOver = settings_.isStopped() || !settings_.reconnects || !connectAgain(why);
    if (isOver && bytes_.empty()) return 0;
  }
}

// One message; 0 at the end.
std::size_t NetworkSource::receive() {
  const std::size_t count = source_->read(message_.data(), message_.size());
  const auto message = std::span<const std::uint8_t>(message_).first(count);
  bytes_.clear();
  used_ = 0;
  if (protocol_.isRtp && count != 0) {
    order_.take(message, bytes_);
  } else {
    bytes_.assign(message.begin(), message.end());
  }
  return count;
}

std::size_t NetworkSource::takeOut(std::span<std::uint8_t> buffer) {
  const std::size_t count = std::min(buffer.size(), bytes_.size() - used_);
  std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(used_), count, buffer.begin());
  used_ += count;
  return count;
}

// False when the user interrupts first.
bool NetworkSource::connectAgain(const std::string& why) {
  log::write(settings_.logger, log::Level::Warning, "the input is gone: %s; trying again",
             why.c_str());
  while (!settings_.isStopped()) {
    settings_.wait(pause_);
    pause_ = std::clamp(pause_ * 2, kFirstPause, kLongestPause);
    if (settings_.isStopped()) break;
    try {
      source_ = connect_();
      log::write(settings_.logger, log::Level::Warning, "the input is there again");
      return true;
    } catch (const util::TessaryException&) {
    }
  }
  return false;
}

std::unique_ptr<platform::IByteFile> openAddress(const std::string& url,
                                                 const NetworkProtocol& protocol,
                                                 const ReaderOptions& options) {
#ifdef TESSARY_AVFORMAT
  // Transport streams send something many times a second.
  constexpr milliseconds kStall{10'000};
  auto* const open = reinterpret_cast<OpenAddressWithAvformat*>(
      platform::moduleFunction(kAvModule, kAddressFunction));
  AddressRequest request{.url = url,
                         .protocols = std::string(protocol.opens),
                         .isStopped = platform::isInterrupted,
                         .stall = kStall};
  if (protocol.isRtp) request.url.replace(0, protocol.scheme.size(), "udp");
  return std::make_unique<NetworkSource>(
      protocol, [open, request] { return std::unique_ptr<IByteSource>(open(request)); },
      NetworkSource::Settings{.reconnects = options.reconnects,
                              .logger = options.logger,
                              .isStopped = platform::isInterrupted,
                              .wait = [](milliseconds pause) {
                                constexpr milliseconds kStep{50};
                                for (; pause.count() > 0 && !platform::isInterrupted();
                                     pause -= kStep) {
                                  std::this_thread::sleep_for(std::min(pause, kStep));
                                }
                              }});
#else
  (void)protocol, (void)options;
  throw util::TessaryException("this build reads nothing from the network: " + url);
#endif
}

}  // namespace korr::txsub
