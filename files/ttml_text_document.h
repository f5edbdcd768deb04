// SPDX-License-Identifier: MIT

// TTML of text, for a file or for a segment.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "cues/text_group.h"
#include "files/ttml_markup.h"

namespace korr::txsub {

/// One TTML document in the text profile of W3C IMSC 1 or, on request, in EBU-TT-D (EBU Tech 3380):
/// a paragraph per interval and group of rows that stand together, in a region where they stood on
/// screen. Styles and regions come first in a document, so that its text is there only at the end;
/// until then it is held in memory, a few hundred bytes per cue.
class TtmlTextDocument {
 public:
  /// `language`: ISO 639-2; empty when unknown.
  explicit TtmlTextDocument(std::string_view language, bool isEbuTtD = false);

  /// Adds a cue whose times are those of the document. Cues come in order of their start.
  void add(const Cue& cue);

  /// The whole document. Nothing may be added afterwards.
  std::string text();

 private:
  void writeParagraph(const TextScreen& screen, const TextGroup& group, const Attributes& times);
  void writeLines(ElementStack& paragraph, const TextGroup& group);
  std::string head() const;

  std::string language_;
  bool isEbuTtD_;
  ReferenceTable styles_{"style", "Style"};
  ReferenceTable regions_{"region", "Region"};
  std::string body_;
  std::uint64_t paragraphs_ = 0;
};

}  // namespace korr::txsub
