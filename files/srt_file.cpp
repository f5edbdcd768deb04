#include "files/srt_file.h"

#include "cues/cue_time.h"
#include "cues/text_layout.h"

namespace korr::txsub {

void SrtFile::write(const Cue& cue) {
  const std::string text = srtText(*cue.subtitle);
  if (text.empty()) return;
  const auto [start, stop] = cueMilliseconds(cue);
  file_.write(std::to_string(++entries_) + '\n' + cueTimeText(start, ',') + " --> " +
              cueTimeText(stop, ',') + '\n' + text + '\n');
}

std::string srtText(const encoding::subtitling::Subtitle& subtitle) {
  const auto screen = layOut(subtitle);
  if (!screen) return {};
  std::string out;
  for (const auto& line : screen->lines) {
    for (const auto& span : line.spans) {
      if (span.underline) out += "<u>";
      if (span.italic) out += "<i>";
      out += span.text;
      if (span.italic) out += "</i>";
      if (span.underline) out += "</u>";
    }
    out += '\n';
  }
  return out;
}

}  // namespace korr::txsub
