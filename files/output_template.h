// SPDX-License-Identifier: MIT

// Names of the output files of several services, from one template.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "util/variable_expander.h"

namespace korr::txsub {

/// What the variables of a template stand for.
struct TemplateValues {
  std::uint32_t feedIndex = 0;  ///< running number of the service in the recording, from 1
  std::string serviceName{};    ///< from the recording, so it may hold anything
  std::string customName{};     ///< what the user gave with --name
};

/// Whether an output is a template and not a plain path.
inline bool isTemplate(std::string_view output) {
  return output.find('$') != std::string_view::npos;
}

/// The path for one service. Only the template itself can name directories: in values, whatever
/// separates or means directories becomes '-'.
util::ExpansionResult expandTemplate(std::string_view output, const TemplateValues& values);

/// The message, the template and a caret under the place, on three lines.
std::string explain(const util::ExpansionError& error, std::string_view output);

}  // namespace korr::txsub
