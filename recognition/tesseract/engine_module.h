// SPDX-License-Identifier: MIT

// The engine as a module of its own: loading it, and its data, takes longer than reading a
// recording whose letters are known.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "recognition/line_engine.h"

namespace korr::recognition {

inline constexpr const char* kEngineModule = "txsub-tesseract.so";
inline constexpr const char* kOpenEngine = "txsubOpenTesseract";
inline constexpr const char* kExplainEngine = "txsubExplainTesseract";
inline constexpr const char* kListLanguages = "txsubListTesseract";
inline constexpr const char* kOpenWordList = "txsubOpenWordList";

/// What the module exports; the caller owns what is returned.
using OpenEngine = ILineEngine*(const std::string& language);
/// Adds why a language cannot be read to `problem`, or nothing.
using ExplainEngine = void(const std::string& language, std::string& problem);
/// Adds the languages that can be read.
using ListLanguages = void(std::vector<std::string>& languages);
using OpenWordList = IWordList*(const std::string& language);

/// Why lines of a language cannot be read here: the module or its data is missing, and which
/// package to install. Empty when they can, as far as can be told without opening the data.
std::string engineProblem(const std::string& language);

/// Languages that can be read here; none where there is no module.
std::vector<std::string> engineLanguagesHere();

/// Tesseract with the data of a language, or of several as in "deu+eng" (ISO 639-2, terminological
/// codes). Throws util::TessaryException that names the package to install. The first call sets
/// OMP_THREAD_LIMIT, where it is not set, so that one line does not take four threads.
std::unique_ptr<ILineEngine> loadEngine(const std::string& language);

/// Hunspell's words of the languages; null where none is installed.
std::unique_ptr<IWordList> loadWordList(const std::string& language);

}  // namespace korr::recognition
