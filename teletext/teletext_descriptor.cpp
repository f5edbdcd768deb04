// SPDX-License-Identifier: MIT
#include "teletext/teletext_descriptor.h"

#include <array>
#include <cstdio>

#include "model/descriptors.h"
#include "util/bit_reader.h"

namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1 {

namespace {

constexpr std::size_t kEntrySize = 5;

// EN 300 468, 6.2.43: teletext_descriptor().
void readEntries(std::span<const std::uint8_t> body, std::vector<TeletextPage>& pages) {
  for (; body.size() >= kEntrySize; body = body.subspan(kEntrySize)) {
    util::BitReader reader(body);
    TeletextPage page;
    for (int i = 0; i < 3; ++i) page.language += static_cast<char>(reader.read(8));
    page.type = reader.read(5);
    const std::uint32_t magazine = reader.read(3);
    page.magazine = magazine == 0 ? 8 : magazine;
    page.page = reader.read(8);
    pages.push_back(std::move(page));
  }
}

// The magazine's and the page's digits, as in "888".
std::string digits(const TeletextPage& page) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%x%02x", page.magazine, page.page);
  return text.data();
}

}  // namespace

std::vector<TeletextPage> readTeletextPages(std::span<const std::uint8_t> descriptors) {
  std::vector<TeletextPage> pages;
  forEachDescriptor(descriptors, [&](DescriptorTag tag, std::span<const std::uint8_t> body) {
    if (tag == DescriptorTag::Teletext) readEntries(body, pages);
  });
  return pages;
}

FollowedPage followLanguage(std::span<const TeletextPage> pages, std::string_view language,
                            bool hearingImpaired, std::uint32_t configuredPage) {
  FollowedPage followed{.page = configuredPage, .list = {}, .follow = {}};
  for (const TeletextPage& page : pages) {
    const bool isImpaired = page.type == TeletextPage::kHearingImpaired;
    if (!isImpaired && page.type != TeletextPage::kSubtitle) continue;
    const std::string name = page.language + (isImpaired ? "-imp" : "");
    followed.list += "[" + name + ", " + digits(page) + "] ";
    const std::uint32_t number = page.magazine * 256 + page.page;
    if (language.empty() || language != page.language || isImpaired != hearingImpaired ||
        number == followed.page) {
      continue;
    }
    followed.page = number;
    followed.follow = "=> Follow language " + name + " on page " + digits(page);
  }
  return followed;
}

std::uint32_t choosePage(std::span<const std::uint8_t> descriptors, std::string_view language,
                         bool hearingImpaired, std::uint32_t configuredPage, log::ILogger* logger) {
  const auto followed =
      followLanguage(readTeletextPages(descriptors), language, hearingImpaired, configuredPage);
  if (followed.list.empty()) {
    log::write(logger, log::Level::Information, "No Teletext descriptor detected");
  } else {
    log::write(logger, log::Level::Information, "Teletext descriptor(s) detected : %s",
               followed.list.c_str());
  }
  if (!followed.follow.empty()) {
    log::write(logger, log::Level::Information, "%s", followed.follow.c_str());
  }
  return followed.page;
}

}  // namespace korr::encoding::subtitling::teletext::lib_teletext::inline v2_1
