// SPDX-License-Identifier: MIT

// What a signal wakes.
#pragma once

namespace korr::platform {

/// Becomes readable with the first interruption, for good; -1 before `catchInterrupts`. Whoever
/// waits for something else waits for this too: a signal that comes just before the waiting begins
/// interrupts nothing.
int interruptDescriptor();

}  // namespace korr::platform
