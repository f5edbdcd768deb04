// SPDX-License-Identifier: MIT

#include "txsub/version.h"

#include "txsub/commit.h"

namespace korr::txsub {

std::string version() {
  const std::string commit = TESSARY_COMMIT;
  return commit.empty() ? TESSARY_VERSION : TESSARY_VERSION " (" + commit + ')';
}

}  // namespace korr::txsub
