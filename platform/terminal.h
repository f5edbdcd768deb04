// SPDX-License-Identifier: MIT

// What a command-line program asks of the system it runs on.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace korr::platform {

/// The program's arguments in UTF-8, whatever the system hands to `main`; the program's own name
/// comes first.
std::vector<std::string> utf8Arguments(int argc, char** argv);

/// Whether standard error is a terminal that understands a carriage return.
bool isErrorTerminal();

/// Columns of the terminal behind standard error; 80 when it does not say.
unsigned errorTerminalWidth();

/// Keeps the system from translating line ends, and lets a closed pipe be an error of writing
/// instead of the end of the program.
void prepareStandardStreams();

/// From now on the first Ctrl-C, polite request to end or closing of the terminal only sets a flag;
/// a second one ends the program as usual. What the caller of the program has it ignore (nohup)
/// stays ignored.
void catchInterrupts();

/// Whether the user has asked to stop. Any thread.
bool isInterrupted();

/// fopen for any path; `mode` as there.
std::FILE* openFile(const std::filesystem::path& path, const char* mode);

}  // namespace korr::platform
