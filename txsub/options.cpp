#include "txsub/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <map>
#include <string_view>

#include "txsub/output/output_file.h"

namespace korr::txsub {

namespace {

using encoding::subtitling::ConversionMode;

constexpr const char* kVersion = "1.0.0";

constexpr const char* kExitCodes =
    "Exit codes:\n"
    "  0  done\n"
    "  1  the input could not be read or holds nothing that was asked for, or the output could not "
    "be written\n"
    "  2  wrong usage";

constexpr const char* kInputs =
    "INPUT is told by its content, not by its name: an MPEG transport stream (188, 192 or "
    "204-byte\n"
    "packets), an .scc file, recorded samples (.jsonl), or any other recording that libavformat\n"
    "opens (MP4, MOV, MKV, MXF ...). '-' reads standard input.";

constexpr const char* kProgramExamples =
    "Examples:\n"
    "  txsub probe recording.ts                  what subtitles are in it?\n"
    "  txsub convert recording.ts -o subs.vtt    write them as WebVTT\n"
    "  txsub COMMAND --help                      all about one command";

constexpr const char* kConvertExamples =
    "Without --page, --pid or --language the first service that shows text is converted.\n\n"
    "Examples:\n"
    "  txsub convert news.ts                          captions or teletext as WebVTT, to the "
    "terminal\n"
    "  txsub convert news.ts --page CC3 -o news.srt   the third caption service as SRT\n"
    "  txsub convert film.ts --page 888 -o film.vtt   teletext page 888\n"
    "  txsub convert film.ts -o film.ttml             DVB pictures in one TTML document\n"
    "  txsub convert film.ts -o pictures/             DVB pictures as PNG files\n"
    "  txsub convert mux.ts --all -o subtitles        every service, one file each\n"
    "  cat live.ts | txsub convert - -o live.vtt      Ctrl-C ends it with a complete file\n"
    "  txsub convert report.jsonl --page 1 --mode webvtt -o out.jsonl\n"
    "                                                 exactly what the filter delivers";

constexpr const char* kProbeExamples =
    "Examples:\n"
    "  txsub probe news.ts            a table for the eye\n"
    "  txsub probe news.ts --json     the same for programs\n"
    "  txsub probe news.ts --scan     also teletext pages that no descriptor names";

constexpr const char* kExtractExamples =
    "The file holds the subtitle stream and nothing of picture and sound, which makes it the best\n"
    "way to report a fault. Without --pid the first stream that carries subtitles is taken.\n\n"
    "Examples:\n"
    "  txsub extract news.ts -o report.jsonl\n"
    "  txsub extract mux.ts --pid 0x1f4 -o teletext.jsonl";

constexpr const char* kRenderExamples =
    "Any service can be drawn: captions, teletext and DVB pictures, as a receiver would. Raw "
    "frames "
    "are bytes\nR, G, B, A, transparent where nothing is shown, so that a video tool can lay them "
    "over the picture.\n\n"
    "Examples:\n"
    "  txsub render news.ts --at 1:02.5 -o frame.png             the subtitles at that moment\n"
    "  txsub render news.ts --at 62.5 --over still.png -o frame.png\n"
    "  txsub render news.ts --frames 25 --size 1920x1080 -       raw frames to standard output";

const std::map<std::string, TextMode> kModes = {
    {"webvtt", TextMode::WebVtt}, {"srt", TextMode::Srt}, {"ttml", TextMode::Ttml}};

const std::map<std::string, OutputKind> kKinds = {{"file", OutputKind::Playable},
                                                  {"samples", OutputKind::Samples},
                                                  {"pictures", OutputKind::Pictures}};

const std::map<std::string, PictureStorage> kStorages = {{"embedded", PictureStorage::Embedded},
                                                         {"files", PictureStorage::Files}};

// A wrong value or combination, in the words that the user reads.
CLI::ValidationError usageError(const std::string& option, const std::string& message) {
  return CLI::ValidationError(option, message);
}

// A whole number of a base, with nothing after it.
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

// "CC3" and "3" are caption service 3; "888" is teletext magazine 8, page 88.
std::uint32_t parsePage(const std::string& text) {
  const std::string lower = lowerCase(text);
  const bool isCaption = lower.starts_with("cc");
  const auto page = parseNumber(isCaption ? std::string_view(lower).substr(2) : lower, 16);
  if (!page || (isCaption && (*page < 1 || *page > 4))) {
    throw usageError("--page", "'" + text +
                                   "' is neither a caption service (1 to 4 or CC1 to CC4) nor a "
                                   "teletext page (100 to 8ff)");
  }
  return *page;
}

std::uint32_t parsePid(const std::string& text) {
  const std::string lower = lowerCase(text);
  const bool isHexadecimal = lower.starts_with("0x");
  const auto pid =
      isHexadecimal ? parseNumber(std::string_view(lower).substr(2), 16) : parseNumber(lower, 10);
  if (!pid) throw usageError("--pid", "'" + text + "' is not a number such as 500 or 0x1f4");
  return *pid;
}

struct Extension {
  std::string_view name;
  OutputKind kind;
  std::optional<TextMode> mode;
};

constexpr std::array<Extension, 5> kExtensions = {{
    {".vtt", OutputKind::Playable, TextMode::WebVtt},
    {".srt", OutputKind::Playable, TextMode::Srt},
    {".ttml", OutputKind::Playable, TextMode::Ttml},
    {".xml", OutputKind::Playable, TextMode::Ttml},
    {".jsonl", OutputKind::Samples, std::nullopt},
}};

const Extension* findExtension(const std::string& path) {
  const std::string extension = lowerCase(utf8FromPath(pathFromUtf8(path).extension()));
  const auto found = std::find_if(kExtensions.begin(), kExtensions.end(),
                                  [&](const Extension& known) { return known.name == extension; });
  return found == kExtensions.end() ? nullptr : &*found;
}

// The options as they were typed, before they are settled against each other.
struct ConvertArguments {
  ConvertOptions options;
  std::string output;
  std::string page;
  std::string pid;
  std::optional<TextMode> mode;
  std::optional<OutputKind> kind;
};

bool namesDirectory(const std::string& path) {
  std::error_code none;
  return path.ends_with('/') || std::filesystem::is_directory(pathFromUtf8(path), none);
}

// Pictures are files; standard output cannot take them.
void checkPictures(const ConvertOptions& options) {
  if (options.output != "-") return;
  if (options.kind == OutputKind::Pictures) {
    throw usageError("--as", "name the directory for the pictures with -o DIR");
  }
  if (options.pictures == PictureStorage::Files) {
    throw usageError("--images", "name the document with -o FILE; its pictures are put beside it");
  }
}

// What --as, --mode and the output's name say together.
void settleOutput(ConvertArguments& arguments) {
  auto& options = arguments.options;
  if (!arguments.output.empty()) options.output = arguments.output;
  if (!options.all && !arguments.mode && !arguments.kind && namesDirectory(options.output)) {
    arguments.kind = OutputKind::Pictures;
  }
  while (options.output.size() > 1 && options.output.ends_with('/')) options.output.pop_back();
  const Extension* extension = options.all ? nullptr : findExtension(options.output);
  const bool isFile = !arguments.output.empty() && options.output != "-" && !options.all;

  if (arguments.kind) {
    options.kind = *arguments.kind;
  } else if (extension) {
    options.kind = extension->kind;
  }
  const bool isNameHeeded = extension && extension->kind == options.kind && extension->mode;
  if (isNameHeeded && arguments.mode && *arguments.mode != *extension->mode) {
    throw usageError("--mode", "the output's name '" + options.output +
                                   "' stands for another format; change one of the two");
  }
  if (isFile && !extension && !arguments.mode && !arguments.kind) {
    throw usageError("--output", "the name '" + options.output +
                                     "' does not say which format to write; end it in .vtt, .srt, "
                                     ".ttml or .jsonl, or give --mode");
  }
  options.isModeGiven = arguments.mode || isNameHeeded;
  if (arguments.mode) {
    options.mode = *arguments.mode;
  } else if (isNameHeeded) {
    options.mode = *extension->mode;
  } else if (options.kind == OutputKind::Samples) {
    options.mode = TextMode::Ttml;  // the configuration interface's default
  }
  checkPictures(options);
}

ConvertOptions settle(ConvertArguments arguments) {
  auto& options = arguments.options;
  if (!arguments.page.empty()) options.page = parsePage(arguments.page);
  if (!arguments.pid.empty()) options.input.pid = parsePid(arguments.pid);
  if (options.all && arguments.output.empty()) {
    throw usageError("--all", "name the directory for the files with -o DIR");
  }
  settleOutput(arguments);
  return options;
}

struct Flags {
  bool quiet = false;
  bool verbose = false;

  Verbosity verbosity() const {
    if (quiet) return Verbosity::Quiet;
    return verbose ? Verbosity::Verbose : Verbosity::Normal;
  }
};

void addCommon(CLI::App& command, std::string& path, std::string& pid, Flags& flags) {
  command.add_option("INPUT", path, "The recording; '-' for standard input")->required();
  command
      .add_option("--pid", pid,
                  "Only the stream of this PID (track number outside transport streams), also "
                  "where no table names it")
      ->type_name("PID");
  auto* quiet = command.add_flag("-q,--quiet", flags.quiet, "Only errors, no progress");
  command.add_flag("-v,--verbose", flags.verbose, "Also say what is found and chosen")
      ->excludes(quiet);
}

CLI::App* addConvert(CLI::App& program, ConvertArguments& arguments, Flags& flags) {
  auto& options = arguments.options;
  auto* command = program.add_subcommand("convert", "Convert the subtitles of a recording");
  addCommon(*command, options.input.path, arguments.pid, flags);
  command
      ->add_option("-o,--output", arguments.output,
                   "Where to write (default: standard output, WebVTT). The extension chooses the "
                   "format: .vtt, .srt, .ttml or .xml; .jsonl is what the filter would deliver; a "
                   "directory takes pictures")
      ->type_name("OUTPUT");
  command->add_option("--mode", arguments.mode, "Format: webvtt, srt or ttml")
      ->transform(CLI::CheckedTransformer(kModes, CLI::ignore_case).description(""))
      ->type_name("MODE");
  command
      ->add_option("--as", arguments.kind,
                   "file: one that players show; samples: exactly what the filter would deliver; "
                   "pictures: a directory of PNG files with their times in index.json")
      ->transform(CLI::CheckedTransformer(kKinds, CLI::ignore_case).description(""))
      ->type_name("KIND");
  command
      ->add_option("--page", arguments.page,
                   "Caption service (1 to 4 or CC1 to CC4) or teletext page (100 to 8ff)")
      ->type_name("PAGE");
  command
      ->add_option("--duration", options.durationMs,
                   "Segment duration in milliseconds: an unchanged document is repeated after it; "
                   "0 never repeats")
      ->type_name("MS")
      ->capture_default_str();
  command
      ->add_option("--language", options.language,
                   "Follow the teletext page of this language (ISO 639-2, such as swe)")
      ->type_name("CODE");
  command->add_flag("--hearing-impaired", options.hearingImpaired,
                    "With --language: the page for hearing-impaired viewers");
  command
      ->add_option("--page-option", options.pageOption,
                   "Default character-set group of teletext (0 to 10; default: by language)")
      ->type_name("N");
  command->add_flag("--ebu-tt", options.ebuTt,
                    "Write TTML as EBU-TT (files that players show: EBU-TT-D)");
  command
      ->add_option("--images", options.pictures,
                   "Pictures in TTML. embedded: within the document (SMPTE-TT); files: PNG files "
                   "beside it (IMSC 1)")
      ->transform(CLI::CheckedTransformer(kStorages, CLI::ignore_case).description(""))
      ->type_name("WHERE");
  command->add_flag("--absolute", options.absolute,
                    "Keep the stream's own times; otherwise files start at the recording's start");
  command->add_flag("--all", options.all,
                    "Every service of the recording, one file each into the directory OUTPUT");
  command->footer(std::string(kInputs) + "\n\n" + kConvertExamples + "\n\n" + kExitCodes);
  return command;
}

struct RenderArguments {
  RenderOptions options;
  std::string pid;
  std::string page;
  std::string at;
  std::string size;
};

CLI::App* addRender(CLI::App& program, RenderArguments& arguments, Flags& flags) {
  auto& options = arguments.options;
  auto* command = program.add_subcommand("render", "Draw the subtitles of a recording");
  addCommon(*command, options.input.path, arguments.pid, flags);
  command
      ->add_option("-o,--output,OUTPUT", options.output,
                   "The PNG file or the raw frames; '-' for standard output")
      ->type_name("FILE");
  auto* at = command
                 ->add_option("--at", arguments.at,
                              "Draw what is shown at this time, from the recording's start: "
                              "seconds or [H:]M:S, with a fraction")
                 ->type_name("TIME");
  auto* frames = command
                     ->add_option("--frames", options.framesPerSecond,
                                  "Draw raw frames of the whole recording, so many a second")
                     ->check(CLI::Range(0.1, 240.0))
                     ->type_name("RATE")
                     ->excludes(at);
  auto* size =
      command->add_option("--size", arguments.size, "Pixels of a frame (default 1920x1080)")
          ->type_name("WxH");
  command
      ->add_option("--over", options.over,
                   "Draw over this picture, a PNG file, in its size instead of --size")
      ->type_name("PICTURE")
      ->excludes(frames)
      ->excludes(size);
  command
      ->add_option("--page", arguments.page,
                   "Caption service (1 to 4 or CC1 to CC4) or teletext page (100 to 8ff)")
      ->type_name("PAGE");
  command->add_option("--language", options.query.language, "Teletext: the page of this language")
      ->type_name("CODE");
  command->add_flag("--hearing-impaired", options.query.hearingImpaired,
                    "With --language: the page for hearing-impaired viewers");
  command
      ->add_option("--page-option", options.query.pageOption,
                   "Default character-set group of teletext (0 to 10; default: by language)")
      ->type_name("N");
  command->footer(std::string(kInputs) + "\n\n" + kRenderExamples + "\n\n" + kExitCodes);
  return command;
}

// "62.5", "1:02.5", "0:01:02.5"
MediaTime parseTime(const std::string& text) {
  double seconds = 0;
  std::size_t begin = 0;
  for (int part = 0; part < 3; ++part) {
    const std::size_t end = std::min(text.find(':', begin), text.size());
    double value = 0;
    const auto [stop, error] = std::from_chars(text.data() + begin, text.data() + end, value);
    if (error != std::errc() || stop != text.data() + end || !(value >= 0) || value > 1e6) break;
    seconds = seconds * 60 + value;
    if (end == text.size())
      return static_cast<MediaTime>(seconds * static_cast<double>(encoding::subtitling::kSecond));
    begin = end + 1;
  }
  throw usageError("--at", "'" + text + "' is no time such as 62.5 or 1:02.5");
}

FrameSize parseSize(const std::string& text) {
  constexpr std::uint64_t kMaximumPixels = 64'000'000;
  const auto cross = text.find('x');
  if (cross != std::string::npos) {
    const auto width = parseNumber(std::string_view(text).substr(0, cross), 10);
    const auto height = parseNumber(std::string_view(text).substr(cross + 1), 10);
    if (width && height && *width > 0 && *height > 0 &&
        std::uint64_t{*width} * *height <= kMaximumPixels)
      return {*width, *height};
  }
  throw usageError("--size", "'" + text + "' is no frame size such as 1920x1080");
}

RenderOptions settle(RenderArguments arguments) {
  auto& options = arguments.options;
  if (!arguments.pid.empty()) options.input.pid = parsePid(arguments.pid);
  if (!arguments.page.empty()) options.query.page = parsePage(arguments.page);
  if (!arguments.size.empty()) options.size = parseSize(arguments.size);
  if (!arguments.at.empty()) {
    options.at = parseTime(arguments.at);
  } else if (!options.framesPerSecond) {
    throw usageError("--at", "name the moment with --at TIME, or a rate with --frames RATE");
  }
  return options;
}

CLI::App* addProbe(CLI::App& program, ProbeOptions& options, std::string& pid, Flags& flags) {
  auto* command = program.add_subcommand("probe", "List the subtitle services of a recording");
  addCommon(*command, options.input.path, pid, flags);
  command->add_flag("--json", options.json, "Write JSON");
  command->add_flag("--scan", options.scan, "Also list teletext pages that no descriptor names");
  command->footer(std::string(kInputs) + "\n\n" + kProbeExamples + "\n\n" + kExitCodes);
  return command;
}

CLI::App* addExtract(CLI::App& program, ExtractOptions& options, std::string& pid, Flags& flags) {
  auto* command =
      program.add_subcommand("extract", "Record what the filter's input pin would receive");
  addCommon(*command, options.input.path, pid, flags);
  command
      ->add_option("-o,--output", options.output,
                   "The .jsonl file to write; '-' for standard output")
      ->type_name("FILE")
      ->required();
  command->footer(std::string(kInputs) + "\n\n" + kExtractExamples + "\n\n" + kExitCodes);
  return command;
}

std::optional<std::uint32_t> optionalPid(const std::string& text) {
  if (text.empty()) return std::nullopt;
  return parsePid(text);
}

}  // namespace

std::variant<Command, NoCommand> parseCommandLine(const std::vector<std::string>& arguments) {
  CLI::App program{"Subtitles of broadcast recordings as WebVTT, SRT and TTML.", "txsub"};
  program.set_version_flag("--version", std::string("txsub ") + kVersion);
  program.require_subcommand(1);
  program.footer(std::string(kProgramExamples) + "\n\n" + kExitCodes);
  program.failure_message([](const CLI::App*, const CLI::Error& error) {
    return "txsub: " + std::string(error.what()) + "\nSee 'txsub --help'.\n";
  });

  Flags flags;
  ConvertArguments convert;
  ProbeOptions probe;
  ExtractOptions extract;
  RenderArguments render;
  std::string probePid;
  std::string extractPid;
  const auto* convertCommand = addConvert(program, convert, flags);
  const auto* probeCommand = addProbe(program, probe, probePid, flags);
  const auto* extractCommand = addExtract(program, extract, extractPid, flags);
  const auto* renderCommand = addRender(program, render, flags);

  try {
    // CLI11 takes the arguments last first, without the program's name.
    program.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend() - 1));
    if (convertCommand->parsed()) {
      convert.options.input.verbosity = flags.verbosity();
      return Command{settle(std::move(convert))};
    }
    if (renderCommand->parsed()) {
      render.options.input.verbosity = flags.verbosity();
      return Command{settle(std::move(render))};
    }
    if (probeCommand->parsed()) {
      probe.input.pid = optionalPid(probePid);
      probe.input.verbosity = flags.verbosity();
      return Command{probe};
    }
    if (extractCommand->parsed()) {
      extract.input.pid = optionalPid(extractPid);
      extract.input.verbosity = flags.verbosity();
    }
    return Command{extract};
  } catch (const CLI::ParseError& error) {
    std::ostringstream out;
    std::ostringstream errors;
    const bool isResult = program.exit(error, out, errors) == 0;
    return NoCommand{.text = isResult ? out.str() : errors.str(),
                     .exitCode = isResult ? kDone : kUsage};
  }
}

ConversionMode chainMode(TextMode mode) {
  switch (mode) {
    case TextMode::WebVtt:
      return ConversionMode::WebVtt;
    case TextMode::Srt:
      return ConversionMode::YoutubeSrt;
    case TextMode::Ttml:
      break;
  }
  return ConversionMode::Ttml;
}

PlayableFormat playableFormat(TextMode mode) {
  switch (mode) {
    case TextMode::WebVtt:
      return PlayableFormat::WebVtt;
    case TextMode::Srt:
      return PlayableFormat::Srt;
    case TextMode::Ttml:
      break;
  }
  return PlayableFormat::Ttml;
}

}  // namespace korr::txsub
