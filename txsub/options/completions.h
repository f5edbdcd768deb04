// SPDX-License-Identifier: MIT

// What shells complete a command line with.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace korr::txsub {

enum class Shell { Bash, Zsh, Fish };

/// A script of that shell which completes the program's commands and options; words that are
/// neither are files.
std::string completionScript(const CLI::App& program, Shell shell);

}  // namespace korr::txsub
