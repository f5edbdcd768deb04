// SPDX-License-Identifier: MIT
#include "readers/network_source.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <string>

#include "testkit/reader_support.h"
#include "util/exception.h"

namespace korr::txsub {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;

// RFC 3550, 5.1.
std::string rtp(unsigned sequence, const std::string& payload, std::uint8_t first = 0x80,
                const std::string& beforePayload = {}) {
  std::string datagram(12, '\x11');
  datagram[0] = static_cast<char>(first);
  datagram[2] = static_cast<char>(sequence >> 8 & 0xFF);
  datagram[3] = static_cast<char>(sequence & 0xFF);
  return datagram + beforePayload + payload;
}

std::string ordered(const std::vector<std::string>& datagrams) {
  RtpOrder order;
  std::vector<std::uint8_t> out;
  for (const auto& datagram : datagrams) {
    order.take({reinterpret_cast<const std::uint8_t*>(datagram.data()), datagram.size()}, out);
  }
  order.flush(out);
  return {out.begin(), out.end()};
}

TEST(RtpOrder, PutsDatagramsInOrderOnceOverTheWrap) {
  EXPECT_EQ(ordered({rtp(65534, "a"), rtp(0, "c"), rtp(65535, "b"), rtp(0, "c"), rtp(65534, "a"),
                     rtp(1, "d")}),
            "abcd");
}

TEST(RtpOrder, WaitsForAMissingOneNoLongerThanItHolds) {
  std::vector<std::string> datagrams{rtp(1, "a")};
  std::string expected = "a";
  for (unsigned i = 3; i < 4 + RtpOrder::kMostHeld; ++i) {
    datagrams.push_back(rtp(i, "x"));
    expected += 'x';
  }
  datagrams.push_back(rtp(2, "late"));
  EXPECT_EQ(ordered(datagrams), expected);
}

TEST(RtpOrder, BeginsAnewWithASenderThatDoes) {
  EXPECT_EQ(ordered({rtp(7, "a"), rtp(9, "c"), rtp(20'000, "d"), rtp(20'001, "e")}), "acde");
}

TEST(RtpOrder, ReadsHeadersOfEveryLength) {
  EXPECT_EQ(ordered({rtp(1, "a", 0x82, std::string(8, 's'))}), "a");           // contributors
  EXPECT_EQ(ordered({rtp(1, "a", 0x90, std::string("xx\0\1extn", 8))}), "a");  // an extension
  EXPECT_EQ(ordered({rtp(1, "ap\2", 0xA0)}), "a");                             // padding
  EXPECT_EQ(ordered({"G and a packet"}), "G and a packet");                    // no RTP
  for (const auto* torn : {"\x9F", "\x8F", "\xA0"}) {  // headers that claim more than there is
    std::string datagram = rtp(1, "", static_cast<std::uint8_t>(*torn));
    datagram.back() = '\xFF';
    ordered({datagram});
  }
}

/// What each connection brings: messages, then its end, or a failure for "!"; "-" refuses it.
using Connections = std::deque<std::vector<std::string>>;

class Sender {
 public:
  explicit Sender(Connections connections) : connections_(std::move(connections)) {}

  std::unique_ptr<IByteSource> connect() {
    if (connections_.empty()) {
      isStopped = true;
      throw util::TessaryException("nobody there");
    }
    auto messages = std::move(connections_.front());
    connections_.pop_front();
    if (messages.front() == "-") throw util::TessaryException("refused");
    return std::make_unique<Connection>(std::move(messages));
  }

  bool isStopped = false;
  std::vector<long> pauses;

 private:
  class Connection final : public IByteSource {
   public:
    explicit Connection(std::vector<std::string> messages) : messages_(std::move(messages)) {}
    std::size_t read(std::uint8_t* buffer, std::size_t) override {
      if (at_ == messages_.size()) return 0;
      const std::string& message = messages_[at_++];
      if (message == "!") throw util::TessaryException("torn");
      std::ranges::copy(message, buffer);
      return message.size();
    }
    std::optional<std::uint64_t> size() const override { return {}; }

   private:
    std::vector<std::string> messages_;
    std::size_t at_ = 0;
  };

  Connections connections_;
};

std::string readAll(Sender& sender, bool reconnects, log::ILogger* logger = nullptr) {
  NetworkSource source(
      *networkProtocol("srt://x"), [&] { return sender.connect(); },
      {.reconnects = reconnects,
       .logger = logger,
       .isStopped = [&] { return sender.isStopped; },
       .wait = [&](milliseconds pause) { sender.pauses.push_back(pause.count()); }});
  std::string text;
  std::array<std::uint8_t, 3> buffer{};
  while (const std::size_t count = source.read(buffer)) {
    text.append(buffer.begin(), buffer.begin() + count);
  }
  return text;
}

TEST(NetworkSource, ComesBackToASourceThatHasGone) {
  Sender sender(Connections{{"-"}, {"abcd", "e"}, {"-"}, {"-"}, {"-"}, {"fg", "!"}, {"h"}});
  test_support::RecordingLogger logger;
  EXPECT_EQ(readAll(sender, true, &logger), "abcdefgh");
  EXPECT_THAT(sender.pauses, ElementsAre(0, 0, 500, 1000, 2000, 0, 0));
  EXPECT_THAT(logger.lines, testing::Contains(HasSubstr("the input is gone: torn")));
}

TEST(NetworkSource, EndsWithItsSourceUnlessAskedToWait) {
  Sender sender(Connections{{"abcd"}, {"more"}});
  EXPECT_EQ(readAll(sender, false), "abcd");
  Sender torn(Connections{{"abcd", "!"}});
  EXPECT_THROW(readAll(torn, false), util::TessaryException);
  Sender absent(Connections{{"-"}});
  EXPECT_THROW(readAll(absent, false), util::TessaryException);
}

TEST(NetworkAddress, NamesNoProtocolButItsOwn) {
  EXPECT_EQ(networkProtocol("news.ts"), nullptr);
  EXPECT_EQ(networkProtocol("./a://b"), nullptr);
  EXPECT_EQ(networkProtocol("C:\\news.ts"), nullptr);
  EXPECT_TRUE(networkProtocol("rtp://239.1.1.1:5004")->isRtp);
  for (const char* address : {"file:///etc/passwd", "ftp://host/a", "gopher://host", "tcp://host:1",
                              "pipe://0", "async://x", "UDP://host:1"}) {
    EXPECT_THROW(networkProtocol(address), util::TessaryException) << address;
  }
}

}  // namespace
}  // namespace korr::txsub
