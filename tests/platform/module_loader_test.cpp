// SPDX-License-Identifier: MIT
#include "platform/module_loader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "util/exception.h"

namespace korr::platform {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;

std::string refusalOf(const char* module) {
  try {
    moduleFunction(module, "answer");
  } catch (const util::TessaryException& error) {
    return error.what();
  }
  return "";
}

TEST(ModuleLoader, TakesNoModuleOfAnotherBuild) {
  EXPECT_THAT(refusalOf("test-foreign.so"),
              AllOf(HasSubstr("test-foreign.so is of another build (0.9.0-another) than this "
                              "program ("),
                    EndsWith("); install both together")));
  EXPECT_THAT(refusalOf("test-untagged.so"), HasSubstr("is of another build (unknown)"));
  EXPECT_THAT(refusalOf("no-such.so"), HasSubstr("no-such.so is not installed beside "));
}

}  // namespace
}  // namespace korr::platform
