// SPDX-License-Identifier: MIT
#include "dtvcc/service_decoder.h"

#include <algorithm>

#include "dtvcc/codes.h"

namespace korr::encoding::subtitling::dtvcc {
namespace {

constexpr CodeResult kDone{};
constexpr CodeResult kUnknown{.isKnown = false};
constexpr CodeResult kLost{.isLost = true};

bool isCharacter(std::uint8_t code) {
  return (code & 0x60) != 0;  // G0 to G3; without these bits C0 to C3
}

bool isNamed(std::uint8_t windows, std::size_t id) {
  return (windows >> id & 1) != 0;
}

}  // namespace

CodeResult ServiceDecoder::execute(std::span<const std::uint8_t> code) {
  if (isCharacter(code[0])) return put(code[0]);
  if (code[0] >= kSetCurrentWindow) return executeC1(code[0], code.subspan(1));
  return executeC0(code);
}

CodeResult ServiceDecoder::executeC0(std::span<const std::uint8_t> code) {
  switch (code[0]) {
    case kNul:
    case kEndOfText:
      return kDone;
    case kTwoByteCharacter:
      return putTwoBytes(code[1], code[2]);
    case kExtend:
      return code.size() == 2 && isCharacter(code[1]) ? put(kExtendedSet | code[1]) : kUnknown;
    case kBackspace:
    case kFormFeed:
    case kCarriageReturn:
    case kHorizontalCarriageReturn:
      return executeOnWindow(code[0], {});
    default:
      return kUnknown;
  }
}

CodeResult ServiceDecoder::executeC1(std::uint8_t code, Parameters parameters) {
  if (code >= kDefineWindow) {
    define(code - kDefineWindow, parameters);
    return kDone;
  }
  if (code < kClearWindows) {
    // 8.10.5.1: a window that is not defined cannot become the current one.
    const std::size_t id = code - kSetCurrentWindow;
    if (!windows_[id].isDefined()) return kLost;
    current_ = id;
    return kDone;
  }
  switch (code) {
    case kClearWindows:
      clear(parameters[0]);
      return kDone;
    case kDisplayWindows:
      setVisible(parameters[0], 0xFF);
      return kDone;
    case kHideWindows:
      setVisible(parameters[0], 0);
      return kDone;
    case kToggleWindows: {
      std::uint8_t hidden = 0;
      for (std::size_t id = 0; id < kWindows; ++id) {
        if (!windows_[id].isVisible()) hidden |= static_cast<std::uint8_t>(1u << id);
      }
      setVisible(parameters[0], hidden);
      return kDone;
    }
    case kDeleteWindows:
      destroy(parameters[0]);
      return kDone;
    case kDelay:
      return {.delayTenths = parameters[0]};
    case kDelayCancel:
      return kDone;
    case kReset:
      reset();
      return kDone;
    default:
      return executeOnWindow(code, parameters);
  }
}

// What the current window's pen does.
CodeResult ServiceDecoder::executeOnWindow(std::uint8_t code, Parameters parameters) {
  const bool isReserved = code > kSetPenLocation && code < kSetWindowAttributes;
  if (isReserved) return kUnknown;
  Window* const window = current();
  if (!window) return kLost;
  switch (code) {
    case kBackspace:
      beforeChangeOf(*window);
      window->backspace();
      break;
    case kFormFeed:
      clear(static_cast<std::uint8_t>(1u << *current_));
      window->formFeed();
      break;
    case kCarriageReturn:
      if (window->isOnLastLine()) beforeChangeOf(*window);
      window->carriageReturn();
      break;
    case kHorizontalCarriageReturn:
      beforeChangeOf(*window);
      window->horizontalCarriageReturn();
      break;
    case kSetPenAttributes:
      window->setPenAttributes(parameters.first<2>());
      break;
    case kSetPenColour:
      window->setPenColour(parameters.first<3>());
      break;
    case kSetPenLocation:
      window->setPenLocation(parameters[0] & 0x0F, parameters[1] & 0x3F);
      break;
    case kSetWindowAttributes:
      if (window->hasAttributes(parameters.first<4>())) break;
      beforeChangeOf(*window);
      window->setAttributes(parameters.first<4>());
      break;
    default:
      return kUnknown;
  }
  return kDone;
}

CodeResult ServiceDecoder::put(CharacterCode code) {
  Window* const window = current();
  if (!window) return kLost;
  if (window->isVisible()) {
    switch (window->changeOfPut()) {
      case CellChange::None:
        break;
      case CellChange::Growth:
        watcher_.beforeGrowth(static_cast<std::uint32_t>(*current_) << 16 |
                              static_cast<std::uint32_t>(window->penLine()));
        break;
      case CellChange::Other:
        watcher_.beforeChange();
        break;
    }
  }
  window->put(code);
  return kDone;
}

CodeResult ServiceDecoder::putTwoBytes(std::uint8_t first, std::uint8_t second) {
  if (first >= 0x80) {
    ++pairs_;
    if (isEucKr(first, second)) ++koreanPairs_;
  }
  return put(kTwoBytes | static_cast<CharacterCode>(first << 8 | second));
}

// Nearly all pairs of EUC-KR are Korean in it, but only a third of those that UTF-16 has for Korean
// syllables, and hardly any of other scripts.
Charset ServiceDecoder::charset() const {
  if (charset_ != Charset::Automatic) return charset_;
  return pairs_ > 0 && koreanPairs_ >= pairs_ - pairs_ / 4 ? Charset::EucKr : Charset::Utf16;
}

// 8.10.5.2: a definition that says nothing new is only a chance to join in late.
void ServiceDecoder::define(std::size_t id, Parameters parameters) {
  Window::Definition definition{};
  std::copy(parameters.begin(), parameters.end(), definition.begin());
  hasStarted_ = true;
  current_ = id;
  Window& window = windows_[id];
  if (window.isDefinedAs(definition)) return;
  constexpr std::uint8_t kVisible = 0x20;
  if (window.isVisible() || (definition[0] & kVisible) != 0) watcher_.beforeChange();
  window.define(definition);
}

// Those of `windows` become visible or hidden as the bits of `shown` say.
void ServiceDecoder::setVisible(std::uint8_t windows, std::uint8_t shown) {
  for (std::size_t id = 0; id < kWindows; ++id) {
    Window& window = windows_[id];
    const bool isVisible = isNamed(shown, id);
    if (!isNamed(windows, id) || !window.isDefined() || window.isVisible() == isVisible) continue;
    watcher_.beforeChange();
    window.setVisible(isVisible);
  }
}

void ServiceDecoder::clear(std::uint8_t windows) {
  for (std::size_t id = 0; id < kWindows; ++id) {
    if (!isNamed(windows, id) || windows_[id].isEmpty()) continue;
    beforeChangeOf(windows_[id]);
    windows_[id].clear();
  }
}

void ServiceDecoder::destroy(std::uint8_t windows) {
  for (std::size_t id = 0; id < kWindows; ++id) {
    if (!isNamed(windows, id)) continue;
    beforeChangeOf(windows_[id]);
    windows_[id].destroy();
    if (current_ == id) current_.reset();
  }
}

void ServiceDecoder::reset() {
  destroy(0xFF);
}

WindowText ServiceDecoder::show() const {
  WindowText text{.columnsAcross = columnsAcross_, .windows = {}};
  std::array<std::uint8_t, kWindows> order{};
  std::size_t count = 0;
  for (std::uint8_t id = 0; id < kWindows; ++id) {
    if (windows_[id].isVisible()) order[count++] = id;
  }
  const auto painted = std::span(order).first(count);
  std::ranges::stable_sort(painted, std::ranges::greater{},
                           [this](std::uint8_t id) { return windows_[id].priority(); });
  for (const std::uint8_t id : painted) {
    auto window = windows_[id].show(id, columnsAcross_, charset());
    const bool isSeen = !window.rows.empty() || window.border != WindowText::Edge::None ||
                        window.fillOpacity != WindowText::Opacity::Transparent;
    if (isSeen) text.windows.push_back(std::move(window));
  }
  return text;
}

}  // namespace korr::encoding::subtitling::dtvcc
