// SPDX-License-Identifier: MIT
#include "services/teletext_survey.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "teletext/packet.h"
#include "teletext/packet_numbers.h"
#include "teletext/page_header.h"
#include "teletext/teletext_rules.h"

namespace korr::txsub {

namespace {

namespace teletext = encoding::subtitling::teletext::lib_teletext;

bool hasDecimalDigits(std::uint32_t page) {
  return (page >> 4) <= 9 && (page & 0xF) <= 9;
}

// The page that follows on a remote control: after 199 comes 200.
std::uint32_t nextPage(std::uint32_t page) {
  if ((page & 0xF) < 9) return page + 1;
  return (page & 0xF0) < 0x90 ? (page & 0xFF0) + 0x10 : (page & 0xF00) + 0x100;
}

// Letters and digits; not the pictures after a mosaic colour (EN 300 706, 12.2), nor row numbers
// and clocks of fewer characters.
bool hasText(std::span<const std::uint8_t> row) {
  constexpr int kLeastLetters = 2;
  bool isMosaic = false;
  int letters = 0;
  for (const std::uint8_t byte : row) {
    const std::uint8_t code = teletext::kCharacterCodeOrUnknown[byte];
    if (code >= 0x01 && code <= 0x07) isMosaic = false;
    if (code >= 0x11 && code <= 0x17) isMosaic = true;
    if (!isMosaic && code > 0x20 && code < 0x7F) ++letters;
  }
  return letters >= kLeastLetters;
}

class SurveyingFinder final : public IServiceFinder {
 public:
  SurveyingFinder(std::unique_ptr<IServiceFinder> finder, TeletextSurvey& survey)
      : finder_(std::move(finder)), survey_(survey) {}

  std::vector<Service> describe(const StreamInfo& stream) override {
    return finder_->describe(stream);
  }

  std::vector<Service> inspect(const InputSample& sample) override {
    survey_.take(sample.data);
    return finder_->isSearching() ? finder_->inspect(sample) : std::vector<Service>{};
  }

  bool isSearching() const override { return true; }

 private:
  std::unique_ptr<IServiceFinder> finder_;
  TeletextSurvey& survey_;
};

std::string digits(std::uint32_t page) {
  char text[16];
  std::snprintf(text, sizeof text, "%03x", page);
  return text;
}

}  // namespace

void TeletextSurvey::take(std::span<const std::uint8_t> field) {
  const auto anyMagazine = [](std::uint32_t) { return true; };
  teletext::forEachPacket(field, teletext::kReceiver.dropsDamagedAddresses, anyMagazine,
                          [this](const teletext::Packet& packet) {
                            auto& page = inTransmission_[packet.magazine];
                            if (packet.number == teletext::kHeaderPacket) {
                              const auto header = teletext::readPageHeader(packet.data);
                              if (header.magazineSerial) inTransmission_ = {};
                              page.reset();
                              const auto number = teletext::readPageNumber(packet.data);
                              if (number && hasDecimalDigits(*number)) page = number;
                            } else if (page && packet.number <= teletext::kLastRowPacket) {
                              auto& isWithText = withText_[packet.magazine];
                              if (!isWithText[*page] && hasText(packet.data)) isWithText.set(*page);
                            }
                          });
}

std::vector<std::uint32_t> TeletextSurvey::pagesWithText() const {
  std::vector<std::uint32_t> pages;
  for (std::uint32_t magazine = 1; magazine <= kMagazines; ++magazine) {
    const auto& isWithText = withText_[magazine % kMagazines];
    for (std::uint32_t page = 0; page < isWithText.size(); ++page) {
      if (isWithText[page]) pages.push_back(magazine * 256 + page);
    }
  }
  return pages;
}

std::unique_ptr<IServiceFinder> withSurvey(std::unique_ptr<IServiceFinder> finder,
                                           TeletextSurvey& survey) {
  return std::make_unique<SurveyingFinder>(std::move(finder), survey);
}

std::string pageList(std::span<const std::uint32_t> pages) {
  std::string list;
  for (std::size_t first = 0; first < pages.size();) {
    std::size_t last = first;
    while (last + 1 < pages.size() && pages[last + 1] == nextPage(pages[last])) ++last;
    if (!list.empty()) list += ' ';
    list += digits(pages[first]);
    if (last > first) list += (last == first + 1 ? ' ' : '-') + digits(pages[last]);
    first = last + 1;
  }
  return list;
}

}  // namespace korr::txsub
