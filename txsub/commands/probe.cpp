// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>

#include "cues/cue_tally.h"
#include "cues/cue_time.h"
#include "files/output_file.h"
#include "readers/byte_source.h"
#include "readers/open_input.h"
#include "readers/record_format.h"
#include "services/teletext_survey.h"
#include "sessions/cue_sessions.h"
#include "sessions/service_pass.h"
#include "sessions/service_session.h"
#include "txsub/commands/commands.h"
#include "txsub/commands/explain.h"

namespace korr::txsub {

namespace {

// More than its kind.
bool hasName(const Service& service) {
  return service.type != SubtitleInputType::DvbSubtitle || service.dvbPages.has_value();
}

class TallyOutput final : public ICueOutput {
 public:
  explicit TallyOutput(CueTally& tally) : tally_(tally) {}

  void onCue(const Cue& cue) override { tally_.add(cue); }
  void open() override {}
  void flush() override {}
  void commit() override {}

 private:
  CueTally& tally_;
};

struct Finding {
  Service service;
  CueTally tally;
  MediaTime start = 0;  // of its program
};

struct Findings {
  std::vector<Finding> services;
  std::optional<MediaTime> duration;  // of the longest program
  std::string others;                 // subtitles in forms that are not converted
  std::string explanation;            // of finding nothing, where there is one
};

// Caption services that say nothing are not worth a line; what the recording declares is.
bool isWorthListing(const Finding& finding) {
  return finding.tally.cues != 0 ||
         (finding.service.isDeclared && finding.service.type != SubtitleInputType::ClosedCaption);
}

using Surveys = std::map<std::uint32_t, TeletextSurvey>;  // by PID

// Pages that no descriptor names and that are no subtitles may be what somebody looks for.
void tellPagesWithText(const Surveys& surveys, const Findings& findings, Console& console) {
  for (const auto& [pid, survey] : surveys) {
    auto pages = survey.pagesWithText();
    for (const auto& finding : findings.services) {
      if (finding.service.pid == pid) std::erase(pages, finding.service.page);
    }
    if (pages.empty()) continue;
    console.note("PID " + pidText(pid) +
                 ": other teletext pages with text, for --page: " + pageList(pages));
  }
}

Findings probe(const ProbeOptions& options, Console& console) {
  const auto input = openInput(options.input.path, readerOptions(options.input, console));
  std::map<const ServiceSession*, std::unique_ptr<CueTally>> tallies;
  Surveys surveys;
  ServicePass pass(
      *input.reader, ServicePass::Wanted::All,
      [&](const StreamInfo& stream) {
        ServiceQuery everything;
        everything.scan = options.scan;
        auto finder = createServiceFinder(stream, everything, &console);
        const bool isTeletext = stream.type == SubtitleInputType::Teletext;
        return isTeletext ? withSurvey(std::move(finder), surveys[stream.pid]) : std::move(finder);
      },
      [&](const Service& service, const StreamInfo&) {
        auto tally = std::make_unique<CueTally>();
        auto session = createCueSession(service, cueSettings(service, options.rules, input.format),
                                        std::make_unique<TallyOutput>(*tally), console);
        tallies[session.get()] = std::move(tally);
        return session;
      },
      console);
  pass.run();

  Findings findings{.services = {},
                    .duration = {},
                    .others = otherSubtitles(*input.reader),
                    .explanation = explainInput(*input.reader, options.input)};
  for (const auto* session : pass.sessions()) {
    const Service& service = session->service();
    const auto start = input.reader->startTime(service.program);
    const auto end = input.reader->endTime(service.program);
    if (start && end && *end > *start) {
      findings.duration = std::max(findings.duration.value_or(0), *end - *start);
    }
    Finding finding{.service = service, .tally = *tallies.at(session), .start = start.value_or(0)};
    if (isWorthListing(finding)) findings.services.push_back(std::move(finding));
  }
  tellPagesWithText(surveys, findings, console);
  return findings;
}

double seconds(MediaTime time) {
  return static_cast<double>(time) / encoding::subtitling::kSecond;
}

// Times count from the start of the recording, as in playable files.
MediaTime since(MediaTime start, MediaTime time) {
  return time > start ? time - start : 0;
}

std::string timeText(MediaTime time) {
  return cueTimeText(toMilliseconds(time), '.');
}

using Row = std::vector<std::string>;

Row tableRow(const Finding& finding) {
  const auto& service = finding.service;
  const auto& tally = finding.tally;
  const bool hasCues = tally.cues != 0;
  return {pidText(service.pid),
          std::string(kindOf(service)),
          hasName(service) ? displayName(service) : "-",
          (service.language.empty() ? "-" : service.language) +
              std::string(service.hearingImpaired ? " (hearing impaired)" : "") +
              (service.isEasyReader ? " (easy reader)" : ""),
          std::to_string(tally.cues),
          hasCues ? timeText(since(finding.start, tally.first)) : "-",
          hasCues ? timeText(since(finding.start, tally.last)) : "-"};
}

void printTable(const Findings& findings) {
  std::vector<Row> rows{{"PID", "kind", "service", "language", "cues", "first", "last"}};
  for (const auto& finding : findings.services) rows.push_back(tableRow(finding));
  std::vector<std::size_t> widths(rows.front().size());
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  for (const auto& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      line += row[i] + std::string(widths[i] - row[i].size() + 2, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    std::printf("%s\n", line.c_str());
  }
}

nlohmann::ordered_json jsonOf(const Finding& finding) {
  const auto& service = finding.service;
  const auto& tally = finding.tally;
  nlohmann::ordered_json json{{"kind", kindOf(service)}, {"pid", service.pid}};
  if (service.program != 0) json["program"] = service.program;
  if (hasName(service)) json["service"] = displayName(service);
  if (!service.language.empty()) json["language"] = service.language;
  json["hearingImpaired"] = service.hearingImpaired;
  if (service.isEasyReader) json["easyReader"] = true;
  if (digitalService(service)) json["wide"] = service.isWide;
  json["declared"] = service.isDeclared;
  json["cues"] = tally.cues;
  if (tally.cues != 0) {
    json["first"] = seconds(since(finding.start, tally.first));
    json["last"] = seconds(since(finding.start, tally.last));
    json["shown"] = seconds(tally.shown);
  }
  return json;
}

void printJson(const ProbeOptions& options, const Findings& findings) {
  nlohmann::ordered_json json{{"input", options.input.path}};
  if (findings.duration) json["duration"] = seconds(*findings.duration);
  json["services"] = nlohmann::ordered_json::array();
  for (const auto& finding : findings.services) {
    json["services"].push_back(jsonOf(finding));
  }
  // The path and languages may hold bytes that are no UTF-8.
  const auto text = json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
  std::printf("%s\n", text.c_str());
}

// A full device shows only now.
void flushStandardOutput() {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return;
  throw OutputError(std::string("cannot write standard output: ") + std::strerror(errno));
}

}  // namespace

ExitCode run(const ProbeOptions& options, Console& console) {
  const Findings findings = probe(options, console);
  if (options.json) printJson(options, findings);
  if (findings.services.empty()) {
    flushStandardOutput();
    console.error(!findings.explanation.empty()
                      ? findings.explanation
                      : "there are no subtitles in " + inputName(options.input.path));
    return kFailed;
  }
  if (!options.json) printTable(findings);
  flushStandardOutput();
  if (!findings.others.empty()) {
    console.note("also in this recording, in forms that are not converted here: " +
                 findings.others);
  }
  return kDone;
}

}  // namespace korr::txsub
