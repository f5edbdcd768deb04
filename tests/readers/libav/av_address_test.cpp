// SPDX-License-Identifier: MIT

// What may be opened on behalf of an address, and of what comes from it.
#include "readers/libav/av_address.h"

#include <gtest/gtest.h>

#include "readers/libav/av_reader.h"
#include "testkit/reader_support.h"
#include "testkit/temporary_directory.h"
#include "util/exception.h"

namespace korr::txsub {
namespace {

AddressRequest request(const std::string& url, const std::string& protocols) {
  return {.url = url,
          .protocols = protocols,
          .isStopped = [] { return false; },
          .stall = std::chrono::milliseconds(500)};
}

TEST(AvAddress, OpensNothingByAnyOtherProtocol) {
  const test_support::TemporaryDirectory scratch;
  const std::string secret = scratch.write("secret", "G");
  EXPECT_NO_THROW(AvAddress(request("file:" + secret, "file")));  // it would open, if it might
  for (const char* protocols : {"udp", "srt", "rist", "http,https,tcp,tls"}) {
    for (const auto& url : std::initializer_list<std::string>{
             "file:" + secret, secret, "concat:" + secret, "subfile,,start,0,end,0,,:" + secret,
             "async:" + secret, "cache:" + secret, "pipe:0", "data:text/plain,G",
             "unix:" + secret}) {
      EXPECT_THROW(AvAddress(request(url, protocols)), util::TessaryException) << url;
    }
  }
}

TEST(AvAddress, SaysWhenNothingComes) {
  AvAddress address(request("udp://127.0.0.1:0", "udp"));
  std::uint8_t byte = 0;
  try {
    address.read(&byte, 1);
    FAIL();
  } catch (const util::TessaryException& error) {
    EXPECT_STREQ(error.what(), "nothing has come for 0 s");
  }
}

// A playlist that comes through a pipe or from a network names files of this machine.
TEST(AvReader, OpensNoFileThatAPlaylistNames) {
  for (const auto& playlist :
       std::initializer_list<std::string>{"ffconcat version 1.0\nfile samples/captions.ts\n",
                                          "#EXTM3U\n#EXT-X-TARGETDURATION:30\n#EXTINF:24,\nsamples/"
                                          "captions.ts\n#EXT-X-ENDLIST\n"}) {
    test_support::RecordingListener listener;
    try {
      AvReader reader(std::make_unique<test_support::MemorySource>(playlist), ReaderOptions{});
      while (reader.read(listener)) {
      }
    } catch (const util::TessaryException&) {
    }
    EXPECT_TRUE(listener.samples.empty()) << playlist;
  }
}

}  // namespace
}  // namespace korr::txsub
