// SPDX-License-Identifier: MIT
#include "log/sink_logger.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "log/syslog_sink.h"
#include "testkit/temporary_directory.h"

namespace korr::log {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::ThrowsMessage;

class SinkLoggerFile : public ::testing::Test {
 protected:
  std::string content() const {
    std::ifstream file(path_);  // as text: with the system's line ends
    return (std::stringstream() << file.rdbuf()).str();
  }

  test_support::TemporaryDirectory directory_;
  std::string path_ = directory_.file("log");
};

TEST_F(SinkLoggerFile, PassesOnOnlyTheLevelsAskedFor) {
  SinkLogger logger(Level::Warning);
  logger.addSink("file:" + path_);
  write(&logger, Level::Error, "error %d", 1);
  write(&logger, Level::Warning, "warning %s", "two");
  write(&logger, Level::Information, "detail");
  EXPECT_THAT(content(), AllOf(HasSubstr("[error] error 1\n"), HasSubstr("[warning] warning two\n"),
                               Not(HasSubstr("detail"))));
}

TEST_F(SinkLoggerFile, CutsLongMessagesAtACharacterAndKeepsThemOnOneLine) {
  SinkLogger logger(Level::Error);
  logger.addSink("file:" + path_);
  std::string text = "a\nb\t";
  while (text.size() < 2 * kMaximumMessageBytes) text += "é";
  write(&logger, Level::Error, "%s", text.c_str());

  const auto line = content();
  EXPECT_THAT(line, HasSubstr("] a b é"));
  EXPECT_THAT(line, EndsWith("é...\n"));
  const auto message = line.substr(line.find("a b"));
  EXPECT_LE(message.size() - 1, kMaximumMessageBytes);
  EXPECT_GT(message.size(), kMaximumMessageBytes - 4);
}

TEST(SinkLogger, RefusesWhatIsNoSink) {
  SinkLogger logger(Level::Error);
  for (const auto& [description, reason] : {
           std::pair{"paper", "the sinks are console, stdout, stderr"},
           std::pair{"syslog:", "no host"},
           std::pair{"syslog:[::1", "no ] after the address"},
           std::pair{"syslog:127.0.0.1:0", "the port is not a number from 1 to 65535"},
           std::pair{"syslog:127.0.0.1:65536", "the port is not a number from 1 to 65535"},
           std::pair{"file:", "no log to 'file:"},
       }) {
    const auto addSink = [&logger, &name = description] { logger.addSink(name); };
    EXPECT_THAT(addSink, ThrowsMessage<util::TessaryException>(HasSubstr(reason))) << description;
  }
}

TEST(SinkLogger, OutlivesAFullDiskAndADeadServer) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "needs /dev/full";
  SinkLogger logger(Level::Information);
  logger.addSink("file:/dev/full");
  logger.addSink("syslog:127.0.0.1:9");
  ::testing::internal::CaptureStderr();
  const std::string line(kMaximumMessageBytes, 'x');
  for (int i = 0; i < 100; ++i) write(&logger, Level::Error, "%s", line.c_str());
  EXPECT_THAT(::testing::internal::GetCapturedStderr(),
              MatchesRegex("log: [^\n]*/dev/full[^\n]*; messages are being lost\n"));
}

class FakeSender final : public platform::IUdpSender {
 public:
  MOCK_METHOD(bool, send, (std::string_view datagram),
              (noexcept, override));  // NOLINT(bugprone-exception-escape): of the mock
};

TEST(SyslogSink, SendsOneDatagramAMessageAsTheStandardWritesIt) {
  auto sender = std::make_unique<FakeSender>();
  const ::testing::InSequence inOrder;
  EXPECT_CALL(*sender, send(AllOf(StartsWith("<131>1 2000-02-29T12:34:56.000789Z "),
                                  HasSubstr(" txsub "), EndsWith(" - - \xEF\xBB\xBFno disk"))));
  EXPECT_CALL(*sender, send(AllOf(StartsWith("<132>1 2000"), EndsWith("torn"))));
  SyslogSink sink(std::move(sender));
  const auto time = spdlog::log_clock::time_point(std::chrono::microseconds(951'827'696'000'789));
  sink.log({time, {}, "", spdlog::level::err, "no disk"});
  sink.log({time, {}, "", spdlog::level::warn, "torn"});
}

TEST(UdpSender, TakesBothAddressFamiliesAndNeverWaits) {
  for (const char* host : {"127.0.0.1", "::1"}) {
    std::unique_ptr<platform::IUdpSender> sender;
    try {
      sender = platform::openUdpSender(host, 9);
    } catch (const util::TessaryException& error) {
      GTEST_SKIP() << error.what();
    }
    for (int i = 0; i < 1000; ++i) sender->send("dropped");
  }
}

}  // namespace
}  // namespace korr::log
