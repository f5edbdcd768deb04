// SPDX-License-Identifier: MIT

// Where the two readings of DVB subtitles part.
#pragma once

#include <cstdint>

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

/// The points at which the code that all decoders share (segments, CLUTs, code strings, painting)
/// goes one way for a receiver and another for the filter. What a page is made of, and when it is
/// shown, differs as a whole and lives in two classes instead:
///
/// | what | DVBSubtitleRenderer (filter) | DvbDisplayDecoder over PageMemory (receiver) |
/// |---|---|---|
/// | a page is composed | when all that it names is known | when its display set ends |
/// | regions keep | the objects that they name | their pixels (EN 300 743, clause 4) |
/// | a region's fill | does not follow the display window | does |
/// | the time-out | ends a page when somebody asks later | clears the screen |
/// | pages before the first acquisition point | never | when nothing that they name is missing |
struct DvbRules {
  /// In pixels; a longer run is left out. A 2-bit string can ask for 284 (EN 300 743, table 22).
  std::uint32_t longestRun = 0;

  /// A zero byte where a data_type should be is stuffing; else no data_type.
  bool passesOverStuffing = false;

  /// A string without its end code, or with half of one, ends where its row is full and the end of
  /// the line follows; else its pixels go on.
  bool endsFullRows = false;

  /// Reduced Y, Cr and Cb are the upper bits of the full value (EN 300 743, 7.2.4); else they are
  /// taken as they stand.
  bool widensReducedRange = false;

  /// ITU-R BT.601 without rounded factors, and no colour where nothing is seen; else the filter's
  /// formula in single precision.
  bool usesExactColours = false;

  /// A CLUT entry goes into each table that it is flagged for; else into the first with room.
  bool fillsAllFlaggedTables = false;

  /// A CLUT definition keeps the entries that it does not name; else they become the default ones.
  bool keepsUnnamedEntries = false;

  /// An object of characters has its two pixel codes in the list of a region (EN 300 743, 7.2.3);
  /// else the list is read as if there were none.
  bool readsCharacterColours = false;

  /// An object that is not in the stream is passed over; else the rest of its list is lost.
  bool passesOverProvidedObjects = false;
};

/// Documents of the filter: comparable, byte for byte, with those of systems in the field.
inline constexpr DvbRules kFilter{.longestRun = 280};

/// Files for people: EN 300 743, and what receivers forgive.
inline constexpr DvbRules kReceiver{
    .longestRun = 284,
    .passesOverStuffing = true,
    .endsFullRows = true,
    .widensReducedRange = true,
    .usesExactColours = true,
    .fillsAllFlaggedTables = true,
    .keepsUnnamedEntries = true,
    .readsCharacterColours = true,
    .passesOverProvidedObjects = true,
};

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
