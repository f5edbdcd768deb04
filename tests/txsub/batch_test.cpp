// SPDX-License-Identifier: MIT

// Many recordings, as an archive converts them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/txsub/program_runner.h"

namespace korr::txsub {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

class BatchTest : public testing::Test {
 protected:
  std::string copyOf(const std::string& sample, const std::string& name) const {
    fs::copy_file("samples/" + sample, directory_.file(name));
    return directory_.file(name);
  }

  std::vector<json> results(const std::string& name = "list.results.jsonl") const {
    std::istringstream lines(directory_.read(name));
    std::vector<json> objects;
    for (std::string line; std::getline(lines, line);) {
      objects.push_back(json::parse(line, nullptr, false));
    }
    return objects;
  }

  // A batch with the options that all tests share.
  ProgramResult batch(const std::string& manifest, std::vector<std::string> more = {}) const {
    std::vector<std::string> arguments{"batch",     directory_.write("list", manifest),
                                       "-o",        directory_.file("out/${input}.vtt"),
                                       "--results", directory_.file("list.results.jsonl")};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return run(arguments);
  }

  TemporaryDirectory directory_;
};

TEST_F(BatchTest, DoesOnlyWhatIsMissingFailedOrChanged) {
  const std::string captions = copyOf("captions.ts", "captions.ts");
  const std::string teletext = copyOf("teletext.ts", "teletext.ts");
  const std::string silent =
      directory_.write("silent.scc", "Scenarist_SCC V1.0\n\n00:00:01:00\t8080\n");
  const std::string gone = directory_.file("gone.ts");
  const std::string manifest = captions + '\n' + teletext + '\n' + silent + '\n' + gone + '\n';

  auto result = batch(manifest, {"--jobs", "1"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors, AllOf(HasSubstr("gone.ts' (line 4) has failed: cannot read"),
                                   HasSubstr("4 recordings: 2 converted, 1 without subtitles, "
                                             "1 failed, 0 settled before")));
  const auto first = results();
  ASSERT_EQ(first.size(), 4U);
  EXPECT_EQ(first[0]["status"], "done");
  EXPECT_EQ(first[0]["services"][0]["cues"], 9);
  EXPECT_EQ(first[0]["services"][0]["file"], directory_.file("out/captions.vtt"));
  EXPECT_DOUBLE_EQ(first[0]["services"][0]["last"], 23.023);
  EXPECT_EQ(first[2]["exit"], 3);
  EXPECT_EQ(directory_.read("out/captions.vtt"), outputOf({"convert", captions}));

  // A line that a kill has torn counts for nothing.
  directory_.write("list.results.jsonl", directory_.read("list.results.jsonl") + "{\"input\": \"/");
  fs::remove(directory_.file("out/teletext.vtt"));
  copyOf("captions.ts", "gone.ts");
  result = batch(manifest);
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.errors, HasSubstr("2 converted, 0 without subtitles, 0 failed, 2 settled"));

  fs::last_write_time(captions, fs::file_time_type::clock::now() + std::chrono::hours(1));
  EXPECT_THAT(batch(manifest).errors, HasSubstr("1 converted, 0 without subtitles, 0 failed, 3"));
  EXPECT_THAT(batch(manifest, {"--", "--page", "CC3"}).errors, HasSubstr("0 settled before"));
}

TEST_F(BatchTest, TellsEveryMistakeBeforeAnythingStarts) {
  const std::string captions = copyOf("captions.ts", "captions.ts");
  const auto result =
      batch(captions + "\n\n# twice\n" + captions +
            "\n{\"input\": \"a.ts\", \"options\": 7}\n{\"input\n" +
            R"({"input": "a.ts", "output": ")" + captions + R"(", "options": ["--mode", "srt"]})" +
            "\n{\"input\": \"b.ts\", \"options\": [\"--page\", \"CC9\"]}\n");
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_THAT(
      result.errors,
      AllOf(HasSubstr("line 4: the output '" + directory_.file("out/captions.vtt") +
                      "' is that of line 1 too"),
            HasSubstr("line 5, column 19: \"options\" is not an array of texts"),
            HasSubstr("line 6, column 8: this is not JSON"),
            HasSubstr("line 7: the output '" + captions + "' would overwrite the input of line 1"),
            HasSubstr("line 8: --page: 'CC9' is neither"), HasSubstr("nothing has been started")));
  EXPECT_FALSE(fs::exists(directory_.file("out")));
}

TEST_F(BatchTest, SharesAreApartAndKnowOfEachOther) {
  std::string manifest;
  for (const char* name : {"a.ts", "b.ts", "c.ts", "d.ts", "e.ts"}) {
    manifest += copyOf("captions.ts", name) + '\n';
  }
  EXPECT_EQ(batch(manifest, {"--shard", "1/2"}).exitCode, 0);
  EXPECT_EQ(results("list.results-1-of-2.jsonl").size(), 3U);
  EXPECT_EQ(batch(manifest, {"--shard", "2/2"}).exitCode, 0);
  EXPECT_EQ(results("list.results-2-of-2.jsonl").size(), 2U);
  EXPECT_THAT(batch(manifest).errors, HasSubstr("0 converted, 0 without subtitles, 0 failed, 5"));
}

// An endless recording: a pipe that nobody writes to.
TEST_F(BatchTest, ARecordingHasItsLimits) {
  const std::string pipe = directory_.file("endless.ts");
  ASSERT_EQ(runShell("mkfifo '" + pipe + "'").exitCode, 0);
  EXPECT_EQ(batch(pipe + '\n', {"--time-limit", "1"}).exitCode, 1);
  EXPECT_EQ(results()[0]["messages"].back(), "it took too long and was ended (--time-limit)");
  EXPECT_FALSE(fs::exists(directory_.file("out/endless.vtt")));
}

TEST_F(BatchTest, AnInterruptedBatchLeavesWholeFilesOnly) {
  const std::string captions = copyOf("captions.ts", "captions.ts");
  const std::string pipe = directory_.file("endless.ts");
  ASSERT_EQ(runShell("mkfifo '" + pipe + "'").exitCode, 0);
  const std::string list = directory_.write("list", captions + '\n' + pipe + '\n');
  // Something to show comes before the interruption.
  const auto result = runShell(
      "(cat samples/captions.ts; sleep 5) > '" + pipe + "' & '" + TXSUB_PROGRAM "' batch '" + list +
      "' -o '" + directory_.file("${input}.vtt") + "' --jobs 2 & sleep 1; kill $!; wait $!");
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors, AllOf(HasSubstr("1 converted"), HasSubstr("1 left")));
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(directory_.file(""))) {
    names.push_back(entry.path().filename().string());
  }
  EXPECT_THAT(names, testing::UnorderedElementsAre("captions.ts", "captions.vtt", "endless.ts",
                                                   "list", "list.results.jsonl"));
}

}  // namespace
}  // namespace korr::txsub
