// SPDX-License-Identifier: MIT

// The interpretation layer of one service.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "dtvcc/character_sets.h"
#include "dtvcc/window.h"

namespace korr::encoding::subtitling::dtvcc {

/// Told before something that is seen changes, so that what was seen till now can be kept.
class IScreenWatcher {
 public:
  virtual ~IScreenWatcher() = default;

  /// A cell that was empty is about to be written; `line` is the same for cells of one row of one
  /// window, and differs for any two rows that are written one after the other.
  virtual void beforeGrowth(std::uint32_t line) = 0;

  /// Anything else.
  virtual void beforeChange() = 0;
};

/// What became of a code.
struct CodeResult {
  bool isKnown = true;           ///< else a code that the standard leaves open: passed over
  bool isLost = false;           ///< text or an attribute for a window that is not there
  std::uint8_t delayTenths = 0;  ///< DLY: how long the following codes wait, tenths of seconds
};

/// The eight windows of a service and the commands upon them (CEA-708-E, 8.10).
class ServiceDecoder {
 public:
  static constexpr std::size_t kWindows = 8;

  /// `watcher` is not owned; `columnsAcross` as in WindowText.
  ServiceDecoder(IScreenWatcher& watcher, std::uint32_t columnsAcross, Charset charset)
      : watcher_(watcher), columnsAcross_(columnsAcross), charset_(charset) {}

  /// Executes one whole code, as `codeLength` cuts them.
  CodeResult execute(std::span<const std::uint8_t> code);

  /// As after RST: no windows (8.9.5).
  void reset();

  /// The visible windows, those of high priority last.
  WindowText show() const;

  /// Whether a window was ever defined.
  bool hasStarted() const { return hasStarted_; }

 private:
  using Parameters = std::span<const std::uint8_t>;

  CodeResult executeC0(std::span<const std::uint8_t> code);
  CodeResult executeC1(std::uint8_t code, Parameters parameters);
  CodeResult executeOnWindow(std::uint8_t code, Parameters parameters);
  CodeResult put(CharacterCode code);
  CodeResult putTwoBytes(std::uint8_t first, std::uint8_t second);
  void define(std::size_t id, Parameters parameters);
  void setVisible(std::uint8_t windows, std::uint8_t shown);
  void clear(std::uint8_t windows);
  void destroy(std::uint8_t windows);
  Charset charset() const;
  Window* current() { return current_ ? &windows_[*current_] : nullptr; }
  void beforeChangeOf(const Window& window) {
    if (window.isVisible()) watcher_.beforeChange();
  }

  IScreenWatcher& watcher_;
  const std::uint32_t columnsAcross_;
  const Charset charset_;
  std::array<Window, kWindows> windows_;
  std::optional<std::size_t> current_;
  bool hasStarted_ = false;
  std::uint64_t pairs_ = 0;        // of P16
  std::uint64_t koreanPairs_ = 0;  // that are characters in EUC-KR
};

}  // namespace korr::encoding::subtitling::dtvcc
