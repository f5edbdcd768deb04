// SPDX-License-Identifier: MIT

// Lines read by Tesseract.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "recognition/line_engine.h"

namespace korr::recognition {

/// Opens Tesseract's data of a language such as "fra" or "deu+eng". Throws util::TessaryException
/// that names the package to install when the data is missing, or says that it is damaged.
std::unique_ptr<ILineEngine> openTesseract(const std::string& language);

/// Languages whose data is there, in order of their names.
std::vector<std::string> installedLanguages();

/// "no data to read letters of 'fra': install tesseract-ocr-fra"; empty when all of it is there.
std::string missingData(const std::string& language);

/// All lines of a picture at once, as Tesseract reads a page by itself: `--psm 6`, rows parted by
/// '\n'. For comparison.
std::string readBlock(ILineEngine& engine, const LineImage& picture);

}  // namespace korr::recognition
