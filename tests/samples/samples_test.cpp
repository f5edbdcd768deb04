// SPDX-License-Identifier: MIT
#include "samples/samples.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace korr::samples {
namespace {

TEST(Samples, AreWhatTheGeneratorMakes) {
  for (const SampleFile& sample : sampleFiles()) {
    std::ifstream file("samples/" + sample.name, std::ios::binary);
    const std::vector<std::uint8_t> shipped(std::istreambuf_iterator<char>(file), {});
    EXPECT_TRUE(shipped == sample.bytes)
        << sample.name << " differs; after a change that is meant: make_samples samples";
  }
}

}  // namespace
}  // namespace korr::samples
