// SPDX-License-Identifier: MIT

// Who and where this process is.
#pragma once

#include <filesystem>
#include <string>

namespace korr::platform::inline v2_1 {

/// The machine's name as the network knows it, "-" when it has none. ASCII without blanks.
std::string hostName();

/// Tells the processes of a machine apart.
unsigned long processId();

/// The file of the program that runs. Throws std::system_error when the system does not say.
std::filesystem::path programFile();

}  // namespace korr::platform::inline v2_1
