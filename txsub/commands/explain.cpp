// SPDX-License-Identifier: MIT
#include "txsub/commands/explain.h"

#include "readers/byte_source.h"
#include "services/service.h"

namespace korr::txsub {

std::string otherSubtitles(const IMediaReader& reader) {
  std::string text;
  for (const auto& track : reader.findings().otherSubtitles) {
    text += (text.empty() ? "" : ", ") + track;
  }
  return text;
}

std::string explainInput(const IMediaReader& reader, const InputOptions& options) {
  const std::string input = inputName(options.path);
  if (!reader.findings().hasAskedPid) {
    return "there is no PID " + pidText(*options.pid) + " in " + input +
           "; 'txsub probe' lists what there is";
  }
  const std::string others = otherSubtitles(reader);
  if (others.empty()) return "";
  return "the subtitles in " + input + " are in forms that are not converted here: " + others;
}

}  // namespace korr::txsub
