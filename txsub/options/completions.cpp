// SPDX-License-Identifier: MIT

#include "txsub/options/completions.h"

#include <vector>

namespace korr::txsub {

namespace {

struct OptionWords {
  std::string longName;  // without dashes; empty: there is none
  std::string shortName;
  std::string description;
  bool takesValue = false;
};

std::vector<OptionWords> optionsOf(const CLI::App& command) {
  std::vector<OptionWords> options;
  for (const auto* option : command.get_options()) {
    if (!option->nonpositional()) continue;
    const auto& longNames = option->get_lnames();
    const auto& shortNames = option->get_snames();
    options.push_back({.longName = longNames.empty() ? "" : longNames.front(),
                       .shortName = shortNames.empty() ? "" : shortNames.front(),
                       .description = option->get_description(),
                       .takesValue = option->get_items_expected_max() > 0});
  }
  return options;
}

std::vector<const CLI::App*> commandsOf(const CLI::App& program) {
  return program.get_subcommands(
      [](const CLI::App* command) { return !command->get_group().empty(); });
}

std::string dashed(const OptionWords& option) {
  std::string words = option.longName.empty() ? "" : "--" + option.longName;
  if (!option.shortName.empty()) words += (words.empty() ? "-" : " -") + option.shortName;
  return words;
}

std::string wordsOf(const CLI::App& command) {
  std::string words;
  for (const auto& option : optionsOf(command)) words += ' ' + dashed(option);
  return words;
}

std::string namesOf(const CLI::App& program, std::string_view separator) {
  std::string names;
  for (const auto* command : commandsOf(program)) {
    if (!names.empty()) names += separator;
    names += command->get_name();
  }
  return names;
}

// `text` within single quotation marks, with a backslash before each of `special`.
std::string quoted(std::string_view text, std::string_view special, std::string_view mark) {
  std::string result = "'";
  for (const char character : text) {
    if (character == '\'') {
      result += mark;
    } else {
      if (special.find(character) != std::string_view::npos) result += '\\';
      result += character;
    }
  }
  return result + '\'';
}

std::string bashScript(const CLI::App& program) {
  std::string script =
      "# bash completion of txsub\n"
      "_txsub() {\n"
      "  local current=${COMP_WORDS[COMP_CWORD]} command= word words=\n"
      "  for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
      "    case $word in\n"
      "      " +
      namesOf(program, "|") +
      ")\n"
      "        command=$word\n"
      "        break\n"
      "        ;;\n"
      "    esac\n"
      "  done\n"
      "  case $command in\n";
  for (const auto* command : commandsOf(program)) {
    script += "    " + command->get_name() + ") words='" + wordsOf(*command) + "' ;;\n";
  }
  return script + "    *) words='" + namesOf(program, " ") + wordsOf(program) +
         "' ;;\n"
         "  esac\n"
         "  if [ -z \"$command\" ] || [[ $current == -* ]]; then\n"
         "    mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n"
         "  else\n"
         "    COMPREPLY=()\n"
         "  fi\n"
         "}\n"
         "complete -o bashdefault -o default -F _txsub txsub\n";
}

// Brackets end a description for zsh, colons part what an option takes.
std::string forZsh(std::string_view description) {
  std::string text;
  for (const char character : description) {
    if (std::string_view("[]:\\").find(character) != std::string_view::npos) text += '\\';
    text += character;
  }
  return text;
}

std::string zshOptions(const CLI::App& command) {
  std::string lines;
  for (const auto& option : optionsOf(command)) {
    const std::string rest =
        '[' + forZsh(option.description) + ']' + (option.takesValue ? ":value:_files" : "");
    if (!option.longName.empty())
      lines += " \\\n      " + quoted("--" + option.longName + rest, "", "'\\''");
    if (!option.shortName.empty())
      lines += " \\\n      " + quoted("-" + option.shortName + rest, "", "'\\''");
  }
  return lines;
}

std::string zshScript(const CLI::App& program) {
  std::string script =
      "#compdef txsub\n"
      "local context state line\n"
      "_arguments -C" +
      zshOptions(program) + " \\\n      '1:command:(" + namesOf(program, " ") +
      ")' '*::argument:->argument'\n"
      "[ \"$state\" = argument ] || return\n"
      "case $line[1] in\n";
  for (const auto* command : commandsOf(program)) {
    script += "  " + command->get_name() + ")\n    _arguments" + zshOptions(*command) +
              " \\\n      '*:file:_files' ;;\n";
  }
  return script + "esac\n";
}

std::string fishOptions(const CLI::App& command, const std::string& condition) {
  std::string lines;
  for (const auto& option : optionsOf(command)) {
    lines += "complete -c txsub -n '" + condition + '\'';
    if (!option.longName.empty()) lines += " -l " + option.longName;
    if (!option.shortName.empty()) lines += " -s " + option.shortName;
    if (option.takesValue) lines += " -r";
    lines += " -d " + quoted(option.description, "\\", "\\'") + '\n';
  }
  return lines;
}

std::string fishScript(const CLI::App& program) {
  std::string script =
      "# fish completion of txsub\n" + fishOptions(program, "__fish_use_subcommand");
  for (const auto* command : commandsOf(program)) {
    script += "complete -c txsub -f -n '__fish_use_subcommand' -a " + command->get_name() + " -d " +
              quoted(command->get_description(), "\\", "\\'") + '\n' +
              fishOptions(*command, "__fish_seen_subcommand_from " + command->get_name());
  }
  return script;
}

}  // namespace

std::string completionScript(const CLI::App& program, Shell shell) {
  switch (shell) {
    case Shell::Bash:
      return bashScript(program);
    case Shell::Zsh:
      return zshScript(program);
    case Shell::Fish:
      break;
  }
  return fishScript(program);
}

}  // namespace korr::txsub
