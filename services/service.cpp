// SPDX-License-Identifier: MIT
#include "services/service.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "readers/record_format.h"
#include "services/caption_services.h"
#include "services/dvb_services.h"
#include "services/teletext_services.h"

namespace korr::txsub {

namespace {

constexpr std::uint32_t kFirstTeletextPage = 0x100;

std::string hexadecimal(const char* format, std::uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

std::optional<std::uint32_t> wholeNumber(std::string_view text, int base) {
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

}  // namespace

std::unique_ptr<IServiceFinder> createServiceFinder(const StreamInfo& stream,
                                                    const ServiceQuery& query,
                                                    log::ILogger* logger) {
  if (query.page && !canHavePage(stream.type, *query.page)) return nullptr;
  switch (stream.type) {
    case SubtitleInputType::ClosedCaption:
      return createCaptionServiceFinder(query);
    case SubtitleInputType::Teletext:
      return createTeletextServiceFinder(query, logger);
    case SubtitleInputType::DvbSubtitle:
      return createDvbServiceFinder(query);
  }
  return nullptr;
}

std::optional<std::uint32_t> digitalService(const Service& service) {
  if (service.type != SubtitleInputType::ClosedCaption) return std::nullopt;
  return digitalService(service.page);
}

std::optional<std::uint32_t> pageFromText(std::string_view text) {
  const auto startsWith = [&](std::string_view word) {
    return std::equal(
        word.begin(), word.end(), text.begin(),
        text.begin() + static_cast<std::ptrdiff_t>(std::min(word.size(), text.size())),
        [](char lower, char character) { return lower == (character | 0x20); });
  };
  if (startsWith("s")) {
    const auto service = wholeNumber(text.substr(1), 10);
    if (!service || *service < 1 || *service > 63) return std::nullopt;
    return digitalPage(*service);
  }
  const bool isCaption = startsWith("cc");
  const auto page = wholeNumber(isCaption ? text.substr(2) : text, 16);
  if (isCaption && page && (*page < 1 || *page > 4)) return std::nullopt;
  return page;
}

bool canHavePage(SubtitleInputType type, std::uint32_t page) {
  switch (type) {
    case SubtitleInputType::ClosedCaption:
      return (page >= 1 && page <= 4) || digitalService(page);
    case SubtitleInputType::Teletext:
      return page >= kFirstTeletextPage;
    case SubtitleInputType::DvbSubtitle:
      break;
  }
  return false;
}

std::string displayName(const Service& service) {
  switch (service.type) {
    case SubtitleInputType::ClosedCaption:
      if (const auto digital = digitalService(service)) {
        return "708 service " + std::to_string(*digital);
      }
      return "CC" + std::to_string(service.page);
    case SubtitleInputType::Teletext:
      return "page " + hexadecimal("%03x", service.page);
    case SubtitleInputType::DvbSubtitle:
      break;
  }
  if (service.pictures == PictureSystem::Pgs) return "PGS subtitles";
  if (service.pictures == PictureSystem::Dvd) return "DVD subtitles";
  const auto& pages = service.dvbPages;
  return pages ? "DVB subtitles page " + std::to_string(pages->composition) : "DVB subtitles";
}

std::string_view kindOf(const Service& service) {
  switch (service.pictures) {
    case PictureSystem::Dvb:
      break;
    case PictureSystem::Pgs:
      return "pgs";
    case PictureSystem::Dvd:
      return "dvd";
  }
  return streamName(service.type);
}

std::string describe(const Service& service) {
  return displayName(service) + " of PID " + pidText(service.pid);
}

std::string fileName(const Service& service) {
  std::string name = pidText(service.pid) + '-' + displayName(service);
  if (!service.language.empty()) name += '-' + service.language;
  // The language comes from the recording and may hold anything.
  for (char& c : name) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    const bool isPlain = (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
    if (!isPlain) c = '-';
  }
  return name;
}

std::string pidText(std::uint32_t pid) {
  return hexadecimal("0x%04x", pid);
}

}  // namespace korr::txsub
