// SPDX-License-Identifier: MIT
#include "readers/open_input.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <future>
#include <string>

#include "readers/mpegts/ts_framing.h"
#include "testkit/temporary_directory.h"
#include "tests/readers/mpegts/ts_reading.h"

namespace korr::txsub {
namespace {

using namespace ts_test;
using testing::SizeIs;

std::string text(const Bytes& bytes) {
  return {bytes.begin(), bytes.end()};
}

std::string refusalOf(const std::string& path) {
  try {
    openInput(path, {});
  } catch (const util::TessaryException& error) {
    return error.what();
  }
  return "";
}

TEST(TransportStream, IsToldByFivePacketsInARow) {
  TsBuilder stream = beginning();
  for (int i = 0; i < 5; ++i) stream.nullPacket();
  const std::span<const std::uint8_t> all = stream.bytes();
  EXPECT_TRUE(looksLikeTransportStream(all.first(5 * TsBuilder::kPacketBytes), false));
  EXPECT_FALSE(looksLikeTransportStream(all.first(4 * TsBuilder::kPacketBytes), false));
  EXPECT_TRUE(looksLikeTransportStream(all.first(2 * TsBuilder::kPacketBytes), true));

  // Bytes that only look so where what has been read ends.
  Bytes other(kTsProbeSize, 0x10);
  other[other.size() - 200] = other[other.size() - 12] = 0x47;
  EXPECT_FALSE(looksLikeTransportStream(other, false));
}

class OpenInputTest : public testing::Test {
 protected:
  const test_support::TemporaryDirectory directory_;
};

TEST_F(OpenInputTest, ContainersAreToldByTheirFirstBytes) {
  Bytes stream = beginning().bytes();
  for (int i = 0; i < 4; ++i) stream = join({stream, stream});
  const auto isTransportStream = [&](const std::string& before) {
    try {
      const std::string path = directory_.write("film", before + text(stream));
      return openInput(path, {}).format == InputFormat::TransportStream;
    } catch (const util::TessaryException&) {
      return false;
    }
  };
  using namespace std::string_literals;
  EXPECT_TRUE(isTransportStream(""));
  EXPECT_TRUE(isTransportStream("some bytes that are none"));
  // A film may well carry packets in it.
  for (const std::string& magic : {"\0\0\0\x08"s + "free", "\x1A\x45\xDF\xA3"s, "RIFF"s}) {
    EXPECT_FALSE(isTransportStream(magic)) << magic;
  }
}

TEST_F(OpenInputTest, APipeStartsWithItsFirstPackets) {
  const std::string path = directory_.file("pipe");
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  const int pipe = ::open(path.c_str(), O_RDWR | O_CLOEXEC);  // both ends: nobody has to wait
  TsBuilder stream = beginning();
  stream.pes(kTeletextPid, teletextPes(kTicks));
  ASSERT_LE(stream.size(), 5U * TsBuilder::kPacketBytes);
  const Bytes bytes = stream.bytes();
  ASSERT_EQ(::write(pipe, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));

  test_support::RecordingListener listener;
  auto reading = std::async(std::launch::async, [&] {
    const OpenedInput input = openInput(path, {});
    static_cast<void>(input.reader->read(listener));
  });
  const bool isDone = reading.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
  ::close(pipe);  // the end of the pipe, should it still be waited for
  reading.get();
  EXPECT_TRUE(isDone);
  EXPECT_THAT(listener.samples, SizeIs(1));
}

TEST_F(OpenInputTest, SaysWhatCannotBeRead) {
  const std::string folder = directory_.file("");
  EXPECT_EQ(refusalOf(folder), "cannot read '" + folder + "': Is a directory");
  const std::string empty = directory_.write("empty", "");
  EXPECT_EQ(refusalOf(empty), "cannot read '" + empty + "': it is empty");
}

}  // namespace
}  // namespace korr::txsub
