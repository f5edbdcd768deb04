// SPDX-License-Identifier: MIT

// Words of a language by Hunspell.
#pragma once

#include <memory>
#include <string>

#include "recognition/line_engine.h"

namespace korr::recognition {

/// The dictionaries installed for a language such as "fra" or "deu+eng"; null when there is none.
std::unique_ptr<IWordList> openHunspell(const std::string& language);

}  // namespace korr::recognition
