// SPDX-License-Identifier: MIT
#include "files/output_template.h"

#include <algorithm>

namespace korr::txsub {

namespace {

// A value as a part of a file's name on any system.
std::string fileNamePart(std::string value) {
  constexpr std::string_view kReserved = R"(/\:*?"<>|)";
  for (char& c : value) {
    const bool isControl = static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    if (isControl || kReserved.find(c) != std::string_view::npos) c = '-';
  }
  if (value.starts_with('.')) value.front() = '-';
  return value.empty() ? "N-A" : value;  // what the expander says, without its separator
}

bool beginsCharacter(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
}

}  // namespace

util::ExpansionResult expandTemplate(std::string_view output, const TemplateValues& values) {
  const util::MosaicVariables variables(std::to_string(values.feedIndex),
                                        fileNamePart(values.serviceName),
                                        fileNamePart(values.customName));
  return util::expandVariables(output, variables);
}

std::string explain(const util::ExpansionError& error, std::string_view output) {
  std::string line(output);
  std::replace_if(
      line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
  const auto place = line.begin() + static_cast<std::ptrdiff_t>(error.offset);
  const auto column = std::count_if(line.begin(), place, beginsCharacter);
  return error.message + "\n  " + line + "\n  " +
         std::string(static_cast<std::size_t>(column), ' ') + '^';
}

}  // namespace korr::txsub
