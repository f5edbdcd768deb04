// SPDX-License-Identifier: MIT

// Styles of text: from the codes of the subtitle systems to TTML's attributes.
#pragma once

#include <map>
#include <string>

#include "model/subtitle.h"
#include "timed_text/element_stack.h"

namespace korr::encoding::subtitling::ttml::inline v2_1 {

/// "#RRGGBB". Black and unknown teletext colours are white, deliberately.
const char* colourOf(TeletextColour colour);
const char* colourOf(CaptionColour colour);

/// What a `style` element says; an empty string is an attribute that is not set.
struct TtmlStyle {
  std::string color;
  std::string backgroundColor;
  std::string fontSize;
  std::string textDecoration;
  std::string fontStyle;
  std::string id;  ///< the `xml:id`
};

/// The style of a run in plain TTML or, with `ebuTt`, in EBU-TT; it has no id yet.
TtmlStyle styleOf(const TeletextText::Run& run, bool ebuTt);
TtmlStyle styleOf(const CaptionText::TextRun& run, bool ebuTt);

/// The styles that one document has so far.
class TtmlStyleTable {
 public:
  void clear() { ids_.clear(); }

  /// Sets the id of `style`: the one under which the same style was written before or, for a new
  /// one, "Style" and `number`. A new style is written under the open element of `styling`.
  void registerStyle(TtmlStyle& style, std::size_t number, bool ebuTt, ElementStack& styling);

 private:
  struct ByAttributes {
    bool operator()(const TtmlStyle& left, const TtmlStyle& right) const;
  };

  std::map<TtmlStyle, std::string, ByAttributes> ids_;
};

}  // namespace korr::encoding::subtitling::ttml::inline v2_1
