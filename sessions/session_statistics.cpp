// SPDX-License-Identifier: MIT
#include "sessions/session_statistics.h"

#include <nlohmann/json.hpp>

namespace korr::txsub {

namespace {

using encoding::subtitling::ConversionMode;

// The name that the filter gives its buffer counters.
std::string counterName(ConversionMode mode) {
  return std::string("subtitle_converter_") + displayName(mode);
}

// To the millisecond.
double seconds(MediaTime time, MediaTime origin) {
  using encoding::subtitling::kMillisecond;
  const MediaTime since = time > origin ? time - origin : 0;
  return static_cast<double>((since + kMillisecond / 2) / kMillisecond) / 1000;
}

std::string counted(std::uint64_t count, const char* noun) {
  return std::to_string(count) + ' ' + noun + (count == 1 ? "" : "s");
}

}  // namespace

std::string statisticsText(const ServiceSession& session, ConversionMode mode) {
  const HostCounters counters = session.counters();
  const auto& chain = counters.chain;
  std::string text =
      counterName(mode) + ", " + describe(session.service()) + ": " +
      counted(counters.samples, "sample") + ", " + counted(chain.units, "unit") + " (" +
      counted(chain.unitBytes, "byte") + "), " + counted(chain.documents, "document") + " in " +
      counted(chain.buffers, "buffer") + " (" + counted(chain.documentBytes, "byte") + ')';
  if (chain.untimedUnits != 0) text += ", " + counted(chain.untimedUnits, "unit") + " without time";
  if (chain.droppedPages != 0) text += ", " + counted(chain.droppedPages, "page") + " dropped";
  if (chain.cutDocuments != 0)
    text += ", " + counted(chain.cutDocuments, "document") + " cut short";
  if (counters.errors != 0) text += ", " + counted(counters.errors, "error");
  return text;
}

nlohmann::ordered_json statisticsJson(const ServiceSession& session, ConversionMode mode,
                                      const std::string& file, MediaTime origin) {
  const HostCounters counters = session.counters();
  nlohmann::ordered_json json{{"name", counterName(mode)},
                              {"service", describe(session.service())},
                              {"samples", counters.samples},
                              {"errors", counters.errors},
                              {"units", counters.chain.units},
                              {"unitBytes", counters.chain.unitBytes},
                              {"untimedUnits", counters.chain.untimedUnits},
                              {"documents", counters.chain.documents},
                              {"buffers", counters.chain.buffers},
                              {"documentBytes", counters.chain.documentBytes},
                              {"droppedPages", counters.chain.droppedPages},
                              {"cutDocuments", counters.chain.cutDocuments}};
  if (!file.empty()) json["file"] = file;
  if (const auto tally = session.tally()) {
    json["cues"] = tally->cues;
    if (tally->cues != 0) {
      json["first"] = seconds(tally->first, origin);
      json["last"] = seconds(tally->last, origin);
    }
  }
  return json;
}

}  // namespace korr::txsub
