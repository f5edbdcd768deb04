// SPDX-License-Identifier: MIT
#include "services/teletext_services.h"

#include <algorithm>
#include <array>
#include <set>
#include <span>

#include "teletext/packet.h"
#include "teletext/page_header.h"
#include "teletext/teletext_descriptor.h"

namespace korr::txsub {

namespace {

namespace teletext = encoding::subtitling::teletext::lib_teletext;

using teletext::TeletextPage;

struct LanguageGroup {
  std::string_view language;
  std::uint32_t group;
};

// EN 300 706, table 32: the groups of languages that group 0 has no letters for.
constexpr std::array kLanguageGroups = std::to_array<LanguageGroup>({
    {"pol", 1}, {"tur", 2}, {"hrv", 3}, {"scr", 3}, {"slv", 3}, {"ron", 3}, {"rum", 3},  {"srp", 3},
    {"scc", 3}, {"bos", 3}, {"rus", 4}, {"bul", 4}, {"ukr", 4}, {"bel", 4}, {"mkd", 4},  {"mac", 4},
    {"est", 4}, {"lav", 4}, {"lit", 4}, {"ell", 6}, {"gre", 6}, {"ara", 8}, {"heb", 10},
});

bool isSubtitlePage(const TeletextPage& page) {
  return page.type == TeletextPage::kSubtitle || page.type == TeletextPage::kHearingImpaired;
}

std::uint32_t numberOf(const TeletextPage& page) {
  return page.magazine * 256 + page.page;
}

// A page that a viewer can key in; headers damaged beyond repair read as others.
bool hasDecimalDigits(std::uint32_t page) {
  return (page >> 4) <= 9 && (page & 0xF) <= 9;
}

// The pages of subtitle headers (C6) in a PES data field.
std::vector<std::uint32_t> subtitlePagesOnAir(std::span<const std::uint8_t> field) {
  std::vector<std::uint32_t> pages;
  const auto anyMagazine = [](std::uint32_t) { return true; };
  teletext::forEachPacket(field, true, anyMagazine, [&pages](const teletext::Packet& packet) {
    if (packet.number != 0) return;
    const auto header = teletext::readPageHeader(packet.data);
    if (!header.subtitle || !hasDecimalDigits(header.page)) return;
    pages.push_back((packet.magazine == 0 ? 8 : packet.magazine) * 256 + header.page);
  });
  return pages;
}

class TeletextServiceFinder final : public IServiceFinder {
 public:
  TeletextServiceFinder(const ServiceQuery& query, log::ILogger* logger)
      : query_(query), logger_(logger) {}

  std::vector<Service> describe(const StreamInfo& stream) override {
    stream_ = stream;
    declared_ = teletext::readTeletextPages(stream.descriptors);
    std::erase_if(declared_, [](const TeletextPage& page) { return !isSubtitlePage(page); });
    const std::uint32_t page =
        teletext::choosePage(stream.descriptors, query_.language, query_.hearingImpaired,
                             query_.page.value_or(0), logger_);
    isSearching_ = !query_.page && query_.language.empty() && (query_.scan || declared_.empty());
    if (page != 0) return {serviceOf(page)};
    if (!query_.language.empty()) return {};

    std::vector<Service> services;
    for (const auto& entry : declared_) services.push_back(serviceOf(numberOf(entry)));
    return services;
  }

  std::vector<Service> inspect(const InputSample& sample) override {
    std::vector<Service> services;
    for (const std::uint32_t page : subtitlePagesOnAir(sample.data)) {
      if (onAir_.insert(page).second) services.push_back(serviceOf(page));
    }
    return services;
  }

  bool isSearching() const override { return isSearching_; }

 private:
  Service serviceOf(std::uint32_t page) const {
    Service service;
    service.streamId = stream_.id;
    service.pid = stream_.pid;
    service.program = stream_.program;
    service.type = stream_.type;
    service.page = page;
    const auto entry =
        std::find_if(declared_.begin(), declared_.end(),
                     [page](const TeletextPage& known) { return numberOf(known) == page; });
    if (entry != declared_.end()) {
      service.language = entry->language;
      service.hearingImpaired = entry->type == TeletextPage::kHearingImpaired;
      service.isDeclared = true;
    }
    service.pageOption = query_.pageOption.value_or(characterGroupOf(service.language));
    return service;
  }

  ServiceQuery query_;
  log::ILogger* logger_;
  StreamInfo stream_;
  std::vector<TeletextPage> declared_;  // subtitle pages only
  std::set<std::uint32_t> onAir_;
  bool isSearching_ = false;
};

}  // namespace

std::unique_ptr<IServiceFinder> createTeletextServiceFinder(const ServiceQuery& query,
                                                            log::ILogger* logger) {
  return std::make_unique<TeletextServiceFinder>(query, logger);
}

std::uint32_t characterGroupOf(std::string_view language) {
  const auto found =
      std::find_if(kLanguageGroups.begin(), kLanguageGroups.end(),
                   [language](const LanguageGroup& entry) { return entry.language == language; });
  return found == kLanguageGroups.end() ? 0 : found->group;
}

}  // namespace korr::txsub
