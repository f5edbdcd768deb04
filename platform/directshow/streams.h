// SPDX-License-Identifier: MIT

// The DirectShow base classes, by the name under which the platform ships its own: code that
// includes this header builds against either set.
#pragma once

#include "platform/directshow/base_filter.h"
#include "platform/directshow/base_input_pin.h"
#include "platform/directshow/base_output_pin.h"
#include "platform/directshow/base_pin.h"
#include "platform/directshow/class_factory.h"
#include "platform/directshow/locks.h"
#include "platform/directshow/media_type.h"
#include "platform/directshow/memory_allocator.h"
#include "platform/directshow/unknown.h"
