// Playable TTML of text.
#pragma once

#include <cstdint>
#include <string>

#include "cues/text_group.h"
#include "files/output_file.h"
#include "files/playable_file.h"
#include "files/ttml_markup.h"

namespace korr::txsub {

/// Writes one TTML document in the text profile of W3C IMSC 1 or, on request, in EBU-TT-D (EBU Tech
/// 3380): a paragraph per interval and group of rows that stand together, in a region where they
/// stood on screen. Styles and regions come first in a document, so that nothing is written before
/// the end; until then the text is held in memory, a few hundred bytes per cue.
class TtmlTextFile final : public IPlayableFile {
 public:
  explicit TtmlTextFile(const PlayableRequest& request);

  void write(const Cue& cue) override;
  void flush() override {}
  void finish() override;

 private:
  void writeParagraph(const TextScreen& screen, const TextGroup& group, const Attributes& times);
  void writeLines(ElementStack& paragraph, const TextGroup& group);
  std::string head() const;

  OutputFile file_;
  std::string language_;
  bool isEbuTtD_;
  ReferenceTable styles_{"style", "Style"};
  ReferenceTable regions_{"region", "Region"};
  std::string body_;
  std::uint64_t paragraphs_ = 0;
};

}  // namespace korr::txsub
