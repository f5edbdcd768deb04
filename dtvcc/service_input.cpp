// SPDX-License-Identifier: MIT
#include "dtvcc/service_input.h"

#include <utility>

#include "dtvcc/codes.h"

namespace korr::encoding::subtitling::dtvcc {
namespace {

constexpr MediaTime kTenth = kSecond / 10;

}  // namespace

void ServiceInput::add(std::span<const std::uint8_t> bytes, MediaTime time) {
  if (bytes_.empty() && !delayEnd_) {
    const std::size_t executed = executeCodes(bytes, time);
    bytes = bytes.subspan(executed);
    bytes_.assign(bytes.begin(), bytes.end());
    scanned_ = 0;
  } else {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  }
  if (delayEnd_) {
    scan(time);
  } else {
    run(time);
  }
}

void ServiceInput::resume() {
  const auto end = std::exchange(delayEnd_, {});
  if (end) run(*end);
}

void ServiceInput::dropPart() {
  if (!delayEnd_) scanned_ = 0;
  bytes_.resize(scanned_);
}

// Executes what waits, until a delay begins.
void ServiceInput::run(MediaTime time) {
  while (!bytes_.empty() && !delayEnd_) {
    const std::size_t executed = executeCodes(bytes_, time);
    bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(executed));
    scanned_ = 0;
    if (!delayEnd_) return;  // what is left is the beginning of a code
    scan(time);
  }
}

// Looks for what ends the delay. RST takes back what waits before it, DLC lets it happen now
// (8.10.5.12).
void ServiceInput::scan(MediaTime time) {
  const std::span<const std::uint8_t> bytes = bytes_;
  while (scanned_ < bytes.size()) {
    const auto rest = bytes.subspan(scanned_);
    const std::size_t length = codeLength(rest);
    if (length > rest.size()) break;
    if (rest[0] == kDelayCancel || rest[0] == kReset) {
      if (rest[0] == kReset) {
        bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(scanned_));
      }
      delayEnd_.reset();
      return run(time);
    }
    scanned_ += length;
  }
  if (bytes_.size() < kCapacity) return;
  delayEnd_.reset();
  run(time);
}

// Returns how many bytes have been executed: all whole codes, or those up to a delay.
std::size_t ServiceInput::executeCodes(std::span<const std::uint8_t> bytes, MediaTime time) {
  std::size_t at = 0;
  while (at < bytes.size() && !delayEnd_) {
    const auto rest = bytes.subspan(at);
    const std::size_t length = codeLength(rest);
    if (length > rest.size()) break;
    at += length;
    const CodeResult result = execute_(rest.first(length));
    if (result.delayTenths != 0) delayEnd_ = time + result.delayTenths * kTenth;
  }
  return at;
}

}  // namespace korr::encoding::subtitling::dtvcc
