// SPDX-License-Identifier: MIT

// Where the filter's teletext parser and a receiver differ.
#pragma once

#include <array>
#include <cstdint>

#include "teletext/page_header.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

/// The points at which the code that both share (packets, headers, rows) goes one way for a
/// receiver and another for the filter. The defaults are the filter's; clauses are those of ETSI EN
/// 300 706. When a page is whole differs as a whole and lives in two classes instead:
///
/// | what | TeletextParser (filter) | TeletextDisplayDecoder over PageMemory (receiver) |
/// |---|---|---|
/// | a row is decoded | as it comes, with what came before | when the page is whole |
/// | a page is shown | with every change to its rows | whole, from its header's time |
/// | X/28/0 and M/29/0 | are passed over | name the character sets |
/// | pages without C5 and C6 | never show | show if they were asked for |
/// | the row below double height | shows | is hidden |
struct TeletextRules {
  // Protection (8):
  /// An address with two wrong bits loses its packet; else it reads as 15 (8.2).
  bool dropsDamagedAddresses = false;
  /// A byte with wrong parity leaves what its cell held; else it shows as a block (8.1).
  bool keepsCellsOnWrongParity = false;

  // Pages (9.3.1.3):
  /// Only C4 erases; else every header of the page.
  bool erasesWithC4Only = false;
  /// C5 shows boxes as C6 does; else only C6 makes a subtitle.
  bool showsNewsflashes = false;
  /// C10 hides the page.
  bool obeysInhibitDisplay = false;

  // Spacing attributes (12.2):
  /// A box opens and closes at two equal codes in a row; else a third code closes what two opened,
  /// a single one closes too, and flash or steady count as the second of two end codes.
  bool opensBoxesAtPairs = false;
  /// Letters after a mosaic colour are pictures: cells without a letter, in that colour.
  bool blanksMosaics = false;
  /// Conceal hides letters until the next colour.
  bool conceals = false;
  /// ESC switches between the default and the second G0 set.
  bool switchesSets = false;
  /// A letter of double width covers the cell to its right, whose letter is not shown.
  bool coversCells = false;
  /// Rows 0, 23 and 24 have no double height: there is no room below.
  bool limitsDoubleHeight = false;

  // Character sets (15):
  /// Where a group has no national option the letters of the basic set stand; else nothing.
  bool showsBasicLetters = false;

  bool erases(const PageHeader& header) const { return !erasesWithC4Only || header.erasePage; }

  bool shows(const PageHeader& header) const {
    if (obeysInhibitDisplay && header.inhibitDisplay) return false;
    return header.subtitle || (showsNewsflashes && header.newsflash);
  }
};

/// The character codes of raw bytes.
constexpr const std::array<std::uint8_t, 256>& characterCodes(const TeletextRules& rules) {
  return rules.keepsCellsOnWrongParity ? kCharacterCodeOrUnknown : kCharacterCode;
}

/// The filter's documents, recorded samples, and files written by its rules.
inline constexpr TeletextRules kFilter{};

/// What a receiver at presentation level 1.5 shows, with the letters of level 2.5.
inline constexpr TeletextRules kReceiver{.dropsDamagedAddresses = true,
                                         .keepsCellsOnWrongParity = true,
                                         .erasesWithC4Only = true,
                                         .showsNewsflashes = true,
                                         .obeysInhibitDisplay = true,
                                         .opensBoxesAtPairs = true,
                                         .blanksMosaics = true,
                                         .conceals = true,
                                         .switchesSets = true,
                                         .coversCells = true,
                                         .limitsDoubleHeight = true,
                                         .showsBasicLetters = true};

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
