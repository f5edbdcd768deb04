// SPDX-License-Identifier: MIT
#include "files/output_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testkit/temporary_directory.h"

namespace korr::txsub {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::IsEmpty;

class OutputFileTest : public testing::Test {
 protected:
  void write(const std::string& name, std::string_view text) const {
    OutputFile file(directory_.file(name));
    file.write(text);
    file.commit();
  }

  /// Whether the platform lets a test make one.
  bool link(const std::string& name, const std::string& target) const {
    std::error_code error;
    fs::create_symlink(pathFromUtf8(target), pathFromUtf8(directory_.file(name)), error);
    return !error;
  }

  const test_support::TemporaryDirectory directory_;
};

TEST_F(OutputFileTest, TheOldFileStaysUntilTheNewOneIsWhole) {
  directory_.write("out", "old");
  {
    OutputFile file(directory_.file("out"));
    file.write("new");
    file.flush();
    EXPECT_EQ(directory_.read("out"), "old");
  }
  EXPECT_EQ(directory_.read("out"), "old");
  EXPECT_THAT(directory_.names(), ElementsAre("out")) << "what is not committed leaves no trace";
  write("out", "new");
  EXPECT_EQ(directory_.read("out"), "new");
  EXPECT_THAT(directory_.names(), ElementsAre("out"));
}

TEST_F(OutputFileTest, ALinkStaysALinkAndItsFileIsReplaced) {
  directory_.write("target", "old");
  if (!link("link", "target")) GTEST_SKIP() << "no symbolic links here";
  write("link", "new");
  EXPECT_TRUE(fs::is_symlink(pathFromUtf8(directory_.file("link"))));
  EXPECT_FALSE(fs::is_symlink(pathFromUtf8(directory_.file("target"))));
  EXPECT_EQ(directory_.read("target"), "new");

  ASSERT_TRUE(link("dangling", "made"));
  write("dangling", "new");
  EXPECT_EQ(directory_.read("made"), "new");

  ASSERT_TRUE(link("ring", "ring"));
  EXPECT_THROW(write("ring", "new"), OutputError);
  EXPECT_THAT(directory_.names(), ElementsAre("dangling", "link", "made", "ring", "target"));
}

TEST_F(OutputFileTest, SaysWhyItCannotWrite) {
  const auto reason = [](const std::string& path) -> std::string {
    try {
      OutputFile file(path);
    } catch (const OutputError& error) {
      return error.what();
    }
    return "";
  };
  const std::string folder = directory_.file("");
  EXPECT_EQ(reason(folder), "cannot write '" + folder + "': it is a directory");
  const std::string lost = directory_.file("no/such");
  EXPECT_EQ(reason(lost), "cannot write '" + lost + "': No such file or directory");
  EXPECT_THAT(directory_.names(), IsEmpty());
}

#ifndef _WIN32
TEST_F(OutputFileTest, ADeviceIsWrittenDirectly) {
  OutputFile file("/dev/null");
  file.write("gone");
  file.commit();
  EXPECT_TRUE(fs::exists("/dev/null"));
}
#endif

}  // namespace
}  // namespace korr::txsub
