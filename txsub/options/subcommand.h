// SPDX-License-Identifier: MIT

// What the subcommands of the command line are made of.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "txsub/options/options.h"

namespace korr::txsub {

/// One subcommand: adds its options to the program and, when it was called, settles them.
class ISubcommand {
 public:
  virtual ~ISubcommand() = default;

  /// Whether the command line calls this one.
  virtual bool isCalled() const = 0;

  /// The options as typed, settled against each other. Throws CLI::ValidationError.
  virtual Command settle() = 0;
};

std::unique_ptr<ISubcommand> addConvert(CLI::App& program);
std::unique_ptr<ISubcommand> addProbe(CLI::App& program);
std::unique_ptr<ISubcommand> addExtract(CLI::App& program);
std::unique_ptr<ISubcommand> addRender(CLI::App& program);
std::unique_ptr<ISubcommand> addPreview(CLI::App& program);
std::unique_ptr<ISubcommand> addBatch(CLI::App& program);
std::unique_ptr<ISubcommand> addStream(CLI::App& program);

/// Gives a program its --version, and its name to what it says of wrong usage.
void introduce(CLI::App& program);

/// A wrong value or combination, in the words that the user reads.
CLI::ValidationError usageError(const std::string& option, const std::string& message);

/// What --stats takes: nothing, "text" or "json".
StatisticsFormat parseStatistics(const std::string& text);

/// A whole number of a base, with nothing after it.
[[nodiscard]] std::optional<std::uint32_t> parseNumber(std::string_view text, int base);

/// Only A to Z change.
std::string lowerCase(std::string text);

/// What an option's target holds.
template <class Target>
struct ValueOf {
  using type = Target;
};
template <class Value>
struct ValueOf<std::optional<Value>> {
  using type = Value;
};

/// The options that every subcommand has.
class InputArguments {
 public:
  void addTo(CLI::App& command);
  InputOptions settle() const;

 private:
  std::string path_;
  std::string pid_;
  bool reconnects_ = false;
  bool isQuiet_ = false;
  bool isVerbose_ = false;
  std::vector<std::string> logs_;
  log::Level logLevel_ = log::Level::Information;
};

/// The options that choose a service.
class ServiceArguments {
 public:
  void addTo(CLI::App& command);
  ServiceQuery settle() const;

 private:
  ServiceQuery query_;
  std::string page_;
};

/// The options of reading letters in pictures.
class OcrArguments {
 public:
  void addTo(CLI::App& command);
  OcrOptions settle() const;

 private:
  std::string languages_;
  std::string shapes_;
  std::string report_;
};

/// Adds an option that takes one of a few words, in any case.
template <class Target>
CLI::Option* addChoice(
    CLI::App& command, const std::string& name, Target& target,
    const std::vector<std::pair<std::string, typename ValueOf<Target>::type>>& choices,
    const std::string& description) {
  return command.add_option_function<std::string>(
      name,
      [&target, choices, name](const std::string& text) {
        std::string words;
        for (const auto& [word, value] : choices) {
          if (word == lowerCase(text)) return void(target = value);
          words += (words.empty() ? "" : word == choices.back().first ? " or " : ", ") + word;
        }
        throw usageError(name, "'" + text + "' is not " + words);
      },
      description);
}

/// Adds an option that takes a whole number of a range.
CLI::Option* addNumber(CLI::App& command, const std::string& name, std::uint32_t& target,
                       std::uint32_t least, std::uint32_t most, const std::string& description);

/// Adds --rules.
void addRules(CLI::App& command, RulesOption& rules);

/// The end of a subcommand's help: how inputs are told, its examples, the exit codes.
std::string footer(std::string_view examples);

/// The exit codes, as every help ends.
std::string_view exitCodes();

/// A subcommand whose options need no settling against each other.
template <class Options>
class PlainSubcommand final : public ISubcommand {
 public:
  /// `addOptions` adds the subcommand's own.
  PlainSubcommand(CLI::App& program, const char* name, const char* purpose, const char* examples,
                  void (*addOptions)(CLI::App& command, Options& options))
      : command_(program.add_subcommand(name, purpose)) {
    input_.addTo(*command_);
    addOptions(*command_, options_);
    command_->footer(footer(examples));
  }

  bool isCalled() const override { return command_->parsed(); }

  Command settle() override {
    options_.input = input_.settle();
    return options_;
  }

 private:
  CLI::App* command_;
  InputArguments input_;
  Options options_;
};

}  // namespace korr::txsub
