// SPDX-License-Identifier: MIT
#include "services/dvb_services.h"

#include <span>

#include "model/descriptors.h"

namespace korr::txsub {

namespace {

using encoding::subtitling::DescriptorTag;
using encoding::subtitling::forEachDescriptor;

constexpr std::size_t kEntrySize = 8;

struct SubtitlingEntry {
  std::string language;
  std::uint8_t type = 0;  // subtitling_type: component_type for stream_content 3
  DvbPages pages;

  // EN 300 468, table 26: 0x20 to 0x25 are for the hard of hearing.
  bool isHearingImpaired() const { return type >= 0x20 && type <= 0x25; }
};

std::uint16_t read16(std::span<const std::uint8_t> bytes) {
  return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

// EN 300 468, 6.2.41: subtitling_descriptor().
std::vector<SubtitlingEntry> readSubtitling(std::span<const std::uint8_t> descriptors) {
  std::vector<SubtitlingEntry> entries;
  forEachDescriptor(descriptors, [&](DescriptorTag tag, std::span<const std::uint8_t> body) {
    if (tag != DescriptorTag::Subtitling) return;
    for (; body.size() >= kEntrySize; body = body.subspan(kEntrySize)) {
      entries.push_back({.language = {body.begin(), body.begin() + 3},
                         .type = body[3],
                         .pages = {.composition = read16(body.subspan(4)),
                                   .ancillary = read16(body.subspan(6))}});
    }
  });
  return entries;
}

class DvbServiceFinder final : public IServiceFinder {
 public:
  explicit DvbServiceFinder(const ServiceQuery& query) : query_(query) {}

  std::vector<Service> describe(const StreamInfo& stream) override {
    Service service;
    service.streamId = stream.id;
    service.pid = stream.pid;
    service.program = stream.program;
    service.type = stream.type;
    service.pictures = stream.pictures;
    service.pictureSetup = stream.pictureSetup;
    service.language = stream.language;
    service.isDeclared = true;
    const auto entries = readSubtitling(stream.descriptors);
    std::vector<Service> services;
    for (const auto& entry : entries) {
      if (!isAskedFor(entry)) continue;
      service.language = entry.language;
      service.hearingImpaired = entry.isHearingImpaired();
      if (entries.size() > 1 || entry.pages.composition != entry.pages.ancillary)
        service.dvbPages = entry.pages;
      services.push_back(service);
    }
    if (entries.empty() && (query_.language.empty() || query_.language == stream.language)) {
      services.push_back(service);
    }
    return services;
  }

  std::vector<Service> inspect(const InputSample&) override { return {}; }
  bool isSearching() const override { return false; }

 private:
  bool isAskedFor(const SubtitlingEntry& entry) const {
    return query_.language.empty() || (entry.language == query_.language &&
                                       entry.isHearingImpaired() == query_.hearingImpaired);
  }

  ServiceQuery query_;
};

}  // namespace

std::unique_ptr<IServiceFinder> createDvbServiceFinder(const ServiceQuery& query) {
  return std::make_unique<DvbServiceFinder>(query);
}

}  // namespace korr::txsub
