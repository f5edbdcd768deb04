// SPDX-License-Identifier: MIT

// Part of every module: what the program compares when it loads it.

extern "C" {
__attribute__((visibility("default"))) extern const char tessaryBuildTag[];
const char tessaryBuildTag[] = TESSARY_BUILD_TAG;
}
