// SPDX-License-Identifier: MIT

// Lines of Hebrew and Arabic as players want them.
#pragma once

#include <vector>

#include "cues/logical_order.h"
#include "cues/text_span.h"

namespace korr::txsub {

/// Turns the spans of a line, which stand from left to right as on a screen, into the order in
/// which they are read, and letters of Arabic in their contextual forms into plain ones: players
/// shape and place them again, and people can search for them. Where a line begins with letters of
/// the other direction a mark (U+200E, U+200F) goes before it. Lines without Hebrew and Arabic stay
/// as they are.
TextDirection toReadingOrder(std::vector<TextSpan>& spans);

}  // namespace korr::txsub
