// SPDX-License-Identifier: MIT
#include "txsub/options/subcommand.h"

#include <algorithm>
#include <charconv>

namespace korr::txsub {

namespace {

using encoding::subtitling::dtvcc::Charset;

constexpr const char* kExitCodes =
    "Exit codes:\n"
    "  0  done\n"
    "  1  the input could not be read, or the output not be made of it or not be written\n"
    "  2  wrong usage\n"
    "  3  the input was read, and nothing that was asked for is shown in it";

constexpr const char* kInputs =
    "INPUT is told by its content, not by its name: an MPEG transport stream (188, 192 or "
    "204-byte\n"
    "packets), an .scc or .mcc file, recorded samples (.jsonl), or any other recording that "
    "libavformat\n"
    "opens (MP4, MOV, MKV, MXF, .sup, VobSub .idx ...). '-' reads standard input; udp://, rtp://,\n"
    "srt://, rist://, http:// and https:// read from the network.";

const std::vector<std::pair<std::string, log::Level>> kLevels = {{"error", log::Level::Error},
                                                                 {"warning", log::Level::Warning},
                                                                 {"info", log::Level::Information}};

const std::vector<std::pair<std::string, Charset>> kCharsets = {
    {"auto", Charset::Automatic}, {"utf-16", Charset::Utf16}, {"euc-kr", Charset::EucKr}};

std::uint32_t parsePage(const std::string& text) {
  if (const auto page = pageFromText(text)) return *page;
  throw usageError("--page", "'" + text +
                                 "' is neither a caption service (1 to 4, CC1 to CC4, or S1 to "
                                 "S63 for digital captions) nor a teletext page (100 to 8ff)");
}

std::uint32_t parsePid(const std::string& text) {
  const std::string lower = lowerCase(text);
  const bool isHexadecimal = lower.starts_with("0x");
  const auto pid =
      isHexadecimal ? parseNumber(std::string_view(lower).substr(2), 16) : parseNumber(lower, 10);
  if (!pid) throw usageError("--pid", "'" + text + "' is not a number such as 500 or 0x1f4");
  return *pid;
}

}  // namespace

void InputArguments::addTo(CLI::App& command) {
  command.add_option("INPUT", path_, "The recording; '-' for standard input")->required();
  command
      .add_option("--pid", pid_,
                  "Only the stream of this PID (track number outside transport streams), also "
                  "where no table names it")
      ->type_name("PID");
  command.add_flag("--reconnect", reconnects_,
                   "Wait for an input from the network that has gone or stands still, and go on "
                   "when it comes again");
  auto* quiet = command.add_flag("-q,--quiet", isQuiet_, "Only errors, no progress");
  command.add_flag("-v,--verbose", isVerbose_, "Also say what is found and chosen")
      ->excludes(quiet);
  command
      .add_option("--log", logs_,
                  "Send messages there too: console, stderr, file:PATH or syslog:HOST[:PORT]; may "
                  "be given more than once")
      ->allow_extra_args(false)
      ->type_name("SINK");
  addChoice(command, "--log-level", logLevel_, kLevels,
            "The most detailed messages that logs get: error, warning or info (default)")
      ->type_name("LEVEL");
}

InputOptions InputArguments::settle() const {
  InputOptions options;
  options.path = path_;
  if (!pid_.empty()) options.pid = parsePid(pid_);
  options.reconnects = reconnects_;
  if (isQuiet_) options.verbosity = Verbosity::Quiet;
  if (isVerbose_) options.verbosity = Verbosity::Verbose;
  if (std::find(logs_.begin(), logs_.end(), "stdout") != logs_.end()) {
    throw usageError("--log", "standard output is for results; use stderr or console");
  }
  options.logs = logs_;
  options.logLevel = logLevel_;
  return options;
}

void ServiceArguments::addTo(CLI::App& command) {
  command
      .add_option("--page", page_,
                  "Caption service (1 to 4 or CC1 to CC4; S1 to S63 for digital captions) or "
                  "teletext page (100 to 8ff)")
      ->type_name("PAGE");
  command
      .add_option("--language", query_.language,
                  "Follow the teletext page of this language (ISO 639-2, such as swe)")
      ->type_name("CODE");
  command.add_flag("--hearing-impaired", query_.hearingImpaired,
                   "With --language: the page for hearing-impaired viewers");
  addChoice(command, "--charset", query_.charset, kCharsets,
            "Two-byte characters of digital captions: auto (by what they are), utf-16 or euc-kr")
      ->type_name("CHARSET");
  addChoice(
      command, "--page-option", query_.pageOption,
      {{"0", 0U}, {"1", 1U}, {"2", 2U}, {"3", 3U}, {"4", 4U}, {"6", 6U}, {"8", 8U}, {"10", 10U}},
      "Character-set group of teletext (default: by language)")
      ->type_name("N");
}

ServiceQuery ServiceArguments::settle() const {
  ServiceQuery query = query_;
  if (!page_.empty()) query.page = parsePage(page_);
  if (query.hearingImpaired && query.language.empty()) {
    throw usageError("--hearing-impaired", "goes with --language, as in --language swe");
  }
  return query;
}

void addRules(CLI::App& command, RulesOption& rules) {
  using encoding::subtitling::DisplayRules;
  addChoice(command, "--rules", rules,
            {{"receiver", DisplayRules::Receiver}, {"filter", DisplayRules::Filter}},
            "receiver: what a television shows, by the standards (default for recordings); "
            "filter: what the filter's documents show (default for recorded samples)")
      ->type_name("RULES");
}

CLI::Option* addNumber(CLI::App& command, const std::string& name, std::uint32_t& target,
                       std::uint32_t least, std::uint32_t most, const std::string& description) {
  return command.add_option_function<std::string>(
      name,
      [=, &target](const std::string& text) {
        const auto number = parseNumber(text, 10);
        if (!number || *number < least || *number > most) {
          throw usageError(name, "'" + text + "' is no whole number from " + std::to_string(least) +
                                     " to " + std::to_string(most));
        }
        target = *number;
      },
      description);
}

std::string footer(std::string_view examples) {
  return std::string(kInputs) + "\n\n" + std::string(examples) + "\n\n" + kExitCodes;
}

std::string_view exitCodes() {
  return kExitCodes;
}

CLI::ValidationError usageError(const std::string& option, const std::string& message) {
  return CLI::ValidationError(option, message);
}

StatisticsFormat parseStatistics(const std::string& text) {
  if (text.empty()) return StatisticsFormat::None;
  if (text == "text") return StatisticsFormat::Text;
  if (text == "json") return StatisticsFormat::Json;
  throw usageError("--stats", "'" + text + "' is not text or json");
}

std::optional<std::uint32_t> parseNumber(std::string_view text, int base) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) {
    return static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  });
  return text;
}

}  // namespace korr::txsub
