// SPDX-License-Identifier: MIT
#include "chain/conversion_chain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "chain/parser_factory.h"
#include "testkit/encoders/caption_builder.h"
#include "testkit/memory_item.h"
#include "testkit/recording_sink.h"
#include "util/exception.h"

namespace korr::encoding::subtitling {
namespace {

using encoders::CaptionBuilder;
using test_support::Delivered;
using test_support::MemoryItem;
using test_support::RecordingSink;
using testing::ElementsAre;

std::string errorOf(std::uint32_t inputType, std::uint32_t mode) {
  RecordingSink sink;
  try {
    ConversionChain chain(sink,
                          {.inputType = static_cast<SubtitleInputType>(inputType),
                           .page = 1,
                           .mode = static_cast<ConversionMode>(mode)},
                          nullptr);
  } catch (const util::TessaryException& error) {
    return error.what();
  }
  return {};
}

TEST(ConversionChain, RefusesUnknownInputBeforeModesThatMakeNoText) {
  constexpr auto kCaptions = static_cast<std::uint32_t>(SubtitleInputType::ClosedCaption);
  for (const std::uint32_t mode : {0u, 1u, 3u, 5u, 7u, 0xFFFFFFFFu}) {
    EXPECT_EQ(errorOf(kCaptions, mode), "Unexpected subtitle conversion mode") << mode;
    EXPECT_EQ(errorOf(7, mode), "Unexpected subtitle input type") << mode;
  }
  for (const std::uint32_t mode : {2u, 4u, 6u}) {
    EXPECT_EQ(errorOf(kCaptions, mode), "") << mode;
    EXPECT_EQ(errorOf(0, mode), "Unexpected subtitle input type") << mode;
  }
}

TEST(ConversionMode, HasADisplayName) {
  EXPECT_STREQ(displayName(ConversionMode::Ttml), "TTML");
  EXPECT_STREQ(displayName(ConversionMode::YoutubeSrt), "Youtube Srt");
  EXPECT_STREQ(displayName(static_cast<ConversionMode>(7)), "????");
}

TEST(ConversionChain, DeliversCaptionsAsTheyChange) {
  RecordingSink sink;
  ConversionChain chain(
      sink,
      {.inputType = SubtitleInputType::ClosedCaption, .page = 1, .mode = ConversionMode::WebVtt},
      nullptr);
  const auto push = [&chain](CaptionBuilder captions, MediaTime time) {
    auto item = std::make_shared<MemoryItem>();
    item->bytes = captions.take();
    item->time = {time, time + 1};
    chain.framer().push(std::move(item));
  };
  push(CaptionBuilder().resumeCaptionLoading().preamble(15).text("HELLO"), 1 * kSecond);
  push(CaptionBuilder().endOfCaption(), 2 * kSecond);
  push(CaptionBuilder().eraseDisplayedMemory(), 3 * kSecond);
  push(CaptionBuilder().pair(0, 0), 5 * kSecond);
  chain.framer().endOfStream();

  EXPECT_THAT(sink.delivered,
              ElementsAre(Delivered{"", 1 * kSecond, 2 * kSecond, true, true},
                          Delivered{"line:100%\nHELLO\n", 2 * kSecond, 3 * kSecond, true, true},
                          Delivered{"", 3 * kSecond, 5 * kSecond, true, true}));
  EXPECT_EQ(chain.counters().units, 4u);
  EXPECT_EQ(chain.counters().unitBytes, 24u);
  EXPECT_EQ(chain.counters().documents, 3u);
  EXPECT_EQ(chain.counters().buffers, 3u);
  EXPECT_EQ(chain.counters().documentBytes, 16u);
}

// A caption service tells its field and channel; page 0 is no service and shows nothing.
TEST(ParserFactory, FollowsTheServiceOfThePage) {
  for (std::uint32_t page = 0; page <= 5; ++page) {
    for (int service = 1; service <= 4; ++service) {
      ISubtitleContainer* container = nullptr;
      const auto parser = createParser(
          {.inputType = SubtitleInputType::ClosedCaption, .page = page, .container = &container});
      CaptionBuilder captions((service + 1) / 2, service % 2 == 1 ? 1 : 2);
      const auto triplets =
          captions.resumeCaptionLoading().preamble(15).text("X").endOfCaption().take();
      parser->parse(triplets.data(), static_cast<std::int64_t>(triplets.size()), 1, true);
      ASSERT_NE(container, nullptr);
      const bool isFollowed = page == static_cast<std::uint32_t>(service);
      EXPECT_EQ(isEmpty(container->currentSubtitle(1)), !isFollowed)
          << "page " << page << ", service " << service;
    }
  }
}

}  // namespace
}  // namespace korr::encoding::subtitling
