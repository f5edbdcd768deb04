// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <filesystem>

#include "files/output_file.h"
#include "files/output_template.h"
#include "txsub/options/subcommand.h"

namespace korr::txsub {

namespace {

using encoding::subtitling::ChainConfiguration;
using encoding::subtitling::ConversionMode;

constexpr const char* kConvertExamples =
    "Without --page, --pid or --language the first service that shows text is converted.\n\n"
    "Examples:\n"
    "  txsub convert news.ts                          captions or teletext as WebVTT, to the "
    "terminal\n"
    "  txsub convert news.ts --page CC3 -o news.srt   the third caption service as SRT\n"
    "  txsub convert film.ts --page 888 -o film.vtt   teletext page 888\n"
    "  txsub convert film.ts -o film.ttml             DVB pictures in one TTML document\n"
    "  txsub convert film.ts -o film.srt              the same, read: DVB pictures as text\n"
    "  txsub convert film.sup -o film.srt             subtitles of a Blu-ray, or .idx of a DVD\n"
    "  txsub convert film.ts -o pictures/             DVB pictures as PNG files with a page\n"
    "  txsub convert mux.ts --all -o subtitles        every service, one file each\n"
    "  txsub convert mux.ts --all -o 'subs/${serviceName}-${feedIndex}.vtt'\n"
    "                                                 the same under names of your own\n"
    "  cat live.ts | txsub convert - -o live.vtt      Ctrl-C ends it with a complete file\n"
    "  txsub convert news.ts --page S1 -o news.vtt    digital captions, service 1\n"
    "  txsub convert news.ts -o news.mcc              all captions as they were sent\n"
    "  txsub convert report.jsonl --page 1 --mode webvtt -o out.jsonl\n"
    "                                                 exactly what the filter delivers";

const std::vector<std::pair<std::string, TextMode>> kModes = {
    {"webvtt", TextMode::WebVtt}, {"srt", TextMode::Srt}, {"ttml", TextMode::Ttml}};

const std::vector<std::pair<std::string, OutputKind>> kKinds = {{"file", OutputKind::Playable},
                                                                {"samples", OutputKind::Samples},
                                                                {"pictures", OutputKind::Pictures}};

const std::vector<std::pair<std::string, PictureStorage>> kStorages = {
    {"embedded", PictureStorage::Embedded}, {"files", PictureStorage::Files}};

struct Extension {
  std::string_view name;
  OutputKind kind;
  std::optional<TextMode> mode;
};

constexpr std::array<Extension, 7> kExtensions = {{
    {".vtt", OutputKind::Playable, TextMode::WebVtt},
    {".srt", OutputKind::Playable, TextMode::Srt},
    {".ttml", OutputKind::Playable, TextMode::Ttml},
    {".xml", OutputKind::Playable, TextMode::Ttml},
    {".jsonl", OutputKind::Samples, std::nullopt},
    {".scc", OutputKind::Captions, std::nullopt},
    {".mcc", OutputKind::Captions, std::nullopt},
}};

const Extension* findExtension(const std::string& path) {
  const std::string extension = lowerCase(utf8FromPath(pathFromUtf8(path).extension()));
  const auto found = std::find_if(kExtensions.begin(), kExtensions.end(),
                                  [&](const Extension& known) { return known.name == extension; });
  return found == kExtensions.end() ? nullptr : &*found;
}

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

class ConvertSubcommand final : public ISubcommand {
 public:
  explicit ConvertSubcommand(CLI::App& program);

  bool isCalled() const override { return command_->parsed(); }
  Command settle() override;

 private:
  void checkTemplate() const;
  void settleOutput();
  void settleDirectory();
  void checkOcr() const;

  CLI::App* command_;
  InputArguments input_;
  ServiceArguments service_;
  ConvertOptions options_;
  // As typed; the options say what they come to.
  std::string output_;
  std::optional<TextMode> mode_;
  std::optional<OutputKind> kind_;
  std::string statistics_;
  OcrArguments ocr_;
};

ConvertSubcommand::ConvertSubcommand(CLI::App& program)
    : command_(program.add_subcommand("convert", "Convert the subtitles of a recording")) {
  input_.addTo(*command_);
  command_
      ->add_option("-o,--output", output_,
                   "Where to write (default: standard output, WebVTT). The extension chooses the "
                   "format: .vtt, .srt, .ttml or .xml; .jsonl is what the filter would deliver; a "
                   "directory takes pictures")
      ->type_name("OUTPUT");
  addChoice(*command_, "--mode", mode_, kModes, "Format: webvtt, srt or ttml")->type_name("MODE");
  addChoice(*command_, "--as", kind_, kKinds,
            "file: one that players show; samples: exactly what the filter would deliver; "
            "pictures: a directory of PNG files with their times in index.json and a page "
            "that shows them, index.html")
      ->type_name("KIND");
  service_.addTo(*command_);
  addRules(*command_, options_.rules);
  addNumber(*command_, "--duration", options_.durationMs, 0, 86'400'000,
            "Segment duration of samples in milliseconds: an unchanged document is repeated "
            "after it, with 0 at every unit of the stream")
      ->type_name("MS")
      ->default_str("2000");
  command_->add_flag("--ebu-tt", options_.ebuTt,
                     "Write TTML as EBU-TT (files that players show: EBU-TT-D)");
  addChoice(*command_, "--images", options_.pictures, kStorages,
            "Pictures in TTML. embedded: within the document (SMPTE-TT); files: PNG files "
            "beside it (IMSC 1)")
      ->type_name("WHERE");
  ocr_.addTo(*command_);
  command_->add_flag("--plain", options_.plain, "Write SRT without colours, italics and places");
  command_->add_flag("--absolute", options_.absolute,
                     "Keep the stream's own times; otherwise files start at the recording's start");
  command_->add_flag("--non-drop", options_.nonDrop,
                     "Time codes of .scc and .mcc files count every frame; else those of 29.97 and "
                     "59.94 frames a second are drop-frame");
  command_->add_flag("--all", options_.all,
                     "Every service of the recording, one file each into the directory OUTPUT; "
                     "or OUTPUT is a template of their names with ${feedIndex} (a running number), "
                     "${serviceName} and ${customName}");
  command_
      ->add_option("--name", options_.customName, "With a template: what ${customName} stands for")
      ->type_name("NAME");
  command_->add_flag("--stats{text}", statistics_,
                     "At the end print what passed through each conversion, to standard error; "
                     "--stats=json for programs");
  command_->add_flag("--complete-only", options_.completeOnly,
                     "An interrupted run leaves no output, instead of one that is complete up to "
                     "there");
  command_->footer(footer(kConvertExamples));
}

Command ConvertSubcommand::settle() {
  options_.input = input_.settle();
  options_.query = service_.settle();
  if (command_->count("--output") != 0 && output_.empty()) {
    throw usageError("--output", "name a file, or '-' for standard output");
  }
  if (options_.all && output_.empty()) {
    throw usageError("--all", "name the directory for the files with -o DIR");
  }
  options_.statistics = parseStatistics(statistics_);
  options_.ocr = ocr_.settle();
  checkTemplate();
  settleOutput();
  checkOcr();
  return options_;
}

// A mistake in a template is found before anything is read.
void ConvertSubcommand::checkTemplate() const {
  const bool hasTemplate = options_.all && isTemplate(output_);
  if (!options_.customName.empty() && !hasTemplate) {
    throw usageError("--name",
                     "goes with --all and a template such as -o 'DIR/${customName}-"
                     "${feedIndex}.vtt'");
  }
  if (!hasTemplate) return;
  const auto expanded = expandTemplate(output_, {.feedIndex = 1});
  if (const auto* error = std::get_if<util::ExpansionError>(&expanded)) {
    throw usageError("--output", explain(*error, output_));
  }
}

// Of all that is written for one service, only pictures fill a directory.
void ConvertSubcommand::settleDirectory() {
  if (!kind_ && mode_.value_or(TextMode::Ttml) == TextMode::Ttml) kind_ = OutputKind::Pictures;
  if (kind_ == OutputKind::Pictures) return;
  throw usageError("--output", "'" + options_.output +
                                   "' is a directory, which takes pictures only; name a file, or "
                                   "give --all for one file per service");
}

void ConvertSubcommand::checkOcr() const {
  if (options_.kind == OutputKind::Playable) return;
  for (const char* option : {"--ocr", "--ocr-shapes", "--ocr-report"}) {
    if (command_->count(option) == 0) continue;
    throw usageError(option, "goes with text; name a .srt, .vtt or .ttml file");
  }
}

// What --as, --mode and the output's name say together.
void ConvertSubcommand::settleOutput() {
  if (!output_.empty()) options_.output = output_;
  if (!options_.all && namesDirectory(options_.output)) settleDirectory();
  while (options_.output.size() > 1 && options_.output.ends_with('/')) options_.output.pop_back();
  const bool isDirectory = options_.all && !isTemplate(options_.output);
  const Extension* extension = isDirectory ? nullptr : findExtension(options_.output);
  const bool isFile = !output_.empty() && options_.output != "-" && !options_.all;

  if (kind_) {
    options_.kind = *kind_;
  } else if (extension) {
    options_.kind = extension->kind;
  }
  const bool isNameHeeded = extension && extension->kind == options_.kind && extension->mode;
  if (isNameHeeded && mode_ && *mode_ != *extension->mode) {
    throw usageError("--mode", "the output's name '" + options_.output +
                                   "' stands for another format; change one of the two");
  }
  if (isFile && !extension && !mode_ && !kind_) {
    throw usageError("--output", "the name '" + options_.output +
                                     "' does not say which format to write; end it in .vtt, .srt, "
                                     ".ttml, .scc, .mcc or .jsonl, or give --mode");
  }
  if (options_.kind == OutputKind::Captions && (options_.all || options_.query.page)) {
    throw usageError(
        options_.all ? "--all" : "--page",
        "caption files hold every service of a stream; name a .vtt, .srt or .ttml file "
        "for one of them");
  }
  options_.isModeGiven = mode_ || isNameHeeded;
  if (mode_) {
    options_.mode = *mode_;
  } else if (isNameHeeded) {
    options_.mode = *extension->mode;
  } else if (options_.kind == OutputKind::Samples) {
    options_.mode = TextMode::Ttml;  // the configuration interface's default
  }
  checkPictures(options_);
  if (options_.plain && options_.mode != TextMode::Srt) {
    throw usageError("--plain", "goes with SRT; name the output FILE.srt, or give --mode srt");
  }
}

}  // namespace

std::unique_ptr<ISubcommand> addConvert(CLI::App& program) {
  return std::make_unique<ConvertSubcommand>(program);
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

ChainConfiguration configurationOf(const ConvertOptions& options) {
  return {.mode = chainMode(options.mode),
          .page = options.query.page.value_or(0),
          .durationMs = options.durationMs,
          .language = options.query.language,
          .hearingImpaired = options.query.hearingImpaired,
          .pageOption = options.query.pageOption.value_or(0),
          .ttmlOption = options.ebuTt};
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
