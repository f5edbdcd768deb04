// SPDX-License-Identifier: MIT

// What EBU-TT-D asks of a document.
#pragma once

#include <string>

namespace korr::txsub {

/// The faults of a document against EBU Tech 3380 (elements, their order, attributes, values and
/// references), a line each; empty when there are none.
std::string ebuTtDFaults(const std::string& document);

}  // namespace korr::txsub
