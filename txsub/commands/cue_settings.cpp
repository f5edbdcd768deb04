// SPDX-License-Identifier: MIT
#include "txsub/commands/commands.h"

namespace korr::txsub {

CueSession::Settings cueSettings(const Service& service, const RulesOption& rules,
                                 InputFormat format, bool isAskedFor) {
  CueSession::Settings settings;
  settings.configuration.page = service.page;
  settings.configuration.pageOption = service.pageOption;
  const bool isReplay = format == InputFormat::RecordedSamples;
  settings.rules = rules.value_or(isReplay ? DisplayRules::Filter : DisplayRules::Receiver);
  settings.isAskedFor = isAskedFor;
  return settings;
}

}  // namespace korr::txsub
