// SPDX-License-Identifier: MIT
#include "dvb_subtitle/painting_budget.h"

#include "dvb_subtitle/errors.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {

void PaintingBudget::spend(std::uint64_t work) {
  if (work > left_) {
    isUsedUp_ = true;
    throw SegmentError("More to paint in one payload than any display can show");
  }
  left_ -= work;
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
