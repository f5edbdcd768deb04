// SPDX-License-Identifier: MIT
#include "dtvcc/dtvcc_display_decoder.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "dtvcc/service_blocks.h"

namespace korr::encoding::subtitling::dtvcc {
namespace {

constexpr std::size_t kTripletBytes = 3;
constexpr std::uint32_t kWideColumns = 42;
constexpr std::uint32_t kNarrowColumns = 32;

// A row that stops growing for longer is shown as far as it has come.
constexpr MediaTime kLongestPause = 2 * kSecond;

// Text that follows a change within two pictures came with it.
constexpr MediaTime kTwoPictures = kSecond / 15;

DtvccOptions checked(const DtvccOptions& options) {
  if (options.service < 1 || options.service > kServices) {
    throw std::invalid_argument("digital caption services are numbered 1 to 63");
  }
  return options;
}

double seconds(MediaTime time) {
  return static_cast<double>(time) / kSecond;
}

}  // namespace

DtvccDisplayDecoder::DtvccDisplayDecoder(const DtvccOptions& options, IDisplayListener& listener,
                                         log::ILogger* logger)
    : options_(checked(options)),
      listener_(listener),
      logger_(logger),
      packets_(logger),
      decoder_(*this, options.isWide ? kWideColumns : kNarrowColumns, options.charset),
      input_([this](std::span<const std::uint8_t> code) { return execute(code); }) {
}

void DtvccDisplayDecoder::decode(std::span<const std::uint8_t> unit, MediaTime time) {
  advance(time);
  for (; unit.size() >= kTripletBytes; unit = unit.subspan(kTripletBytes)) {
    const auto packet = packets_.take(unit.first<kTripletBytes>(), now_);
    if (packet) takePacket(*packet);
  }
  endUnit();
}

void DtvccDisplayDecoder::finish(MediaTime end) {
  advance(end);
  if (changedAt_) show();
}

void DtvccDisplayDecoder::takePacket(std::span<const std::uint8_t> data) {
  if (packets_.takeLoss()) input_.dropPart();
  ServiceBlocks blocks(data);
  while (const auto block = blocks.next()) {
    if (block->service == options_.service) input_.add(block->data, now_);
  }
  if (blocks.isCut() && !std::exchange(isCutReported_, true)) {
    log::write(logger_, log::Level::Warning,
               "digital captions at %.3f s: a service block is longer than its packet; it is taken "
               "as far as it goes, further ones without a message",
               seconds(now_));
  }
}

CodeResult DtvccDisplayDecoder::execute(std::span<const std::uint8_t> code) {
  const CodeResult result = decoder_.execute(code);
  if (!result.isKnown || result.isLost) report(result, code.front());
  return result;
}

// Text before the first window is that of a recording which begins amid a caption.
void DtvccDisplayDecoder::report(const CodeResult& result, std::uint8_t code) {
  if (!result.isKnown && !std::exchange(isUnknownReported_, true)) {
    log::write(
        logger_, log::Level::Warning,
        "708 service %u at %.3f s: undefined code 0x%02X; it and further ones are passed over",
        options_.service, seconds(now_), static_cast<unsigned>(code));
  }
  if (result.isLost && decoder_.hasStarted() && !std::exchange(isLostReported_, true)) {
    log::write(logger_, log::Level::Warning,
               "708 service %u at %.3f s: text or commands for a window that is not defined; they "
               "and further ones are dropped",
               options_.service, seconds(now_));
  }
}

// Lets happen what waits for a time until `time`.
void DtvccDisplayDecoder::advance(MediaTime time) {
  while (input_.delayEnd() && *input_.delayEnd() <= time) {
    now_ = std::max(now_, *input_.delayEnd());
    input_.resume();
    endUnit();
  }
  now_ = std::max(now_, time);
  if (!changedAt_) return;
  const bool isOver =
      growingLine_ ? now_ - lastGrowth_ > kLongestPause : now_ - *changedAt_ > kTwoPictures;
  if (isOver) show();
}

void DtvccDisplayDecoder::endUnit() {
  if (changedAt_ && !options_.wholeRows) show();
}

void DtvccDisplayDecoder::beforeGrowth(std::uint32_t line) {
  lastGrowth_ = now_;
  if (changedAt_ && (!growingLine_ || growingLine_ == line || *changedAt_ == now_)) {
    growingLine_ = line;
    return;
  }
  if (changedAt_) show();
  changedAt_ = now_;
  growingLine_ = line;
}

void DtvccDisplayDecoder::beforeChange() {
  if (changedAt_ && *changedAt_ != now_) show();
  changedAt_ = now_;
  growingLine_.reset();
}

void DtvccDisplayDecoder::show() {
  const MediaTime time = *changedAt_;
  changedAt_.reset();
  growingLine_.reset();
  listener_.onDisplay(time, Subtitle(decoder_.show()));
}

}  // namespace korr::encoding::subtitling::dtvcc
