// SPDX-License-Identifier: MIT
#include "services/caption_services.h"

#include <array>

#include "dtvcc/packet_assembler.h"
#include "dtvcc/service_blocks.h"
#include "services/caption_service_descriptor.h"

namespace korr::txsub {

namespace {

using encoding::subtitling::dtvcc::PacketAssembler;
using encoding::subtitling::dtvcc::ServiceBlocks;

constexpr std::size_t kTripletBytes = 3;

// What a digital service must have sent for its number to be believed: a definition of a window.
constexpr std::size_t kLeastBytes = 7;

class CaptionServiceFinder final : public IServiceFinder {
 public:
  explicit CaptionServiceFinder(const ServiceQuery& query)
      : page_(query.page), charset_(query.charset) {}

  std::vector<Service> describe(const StreamInfo& stream) override {
    stream_ = stream;
    declared_ = readCaptionServices(stream.descriptors);
    std::vector<Service> services;
    for (std::uint32_t page = 1; page <= kLine21Services; ++page) {
      if (!isWanted(page)) continue;
      Service service = serviceOf(page);
      service.isDeclared = !stream.isVideo;
      services.push_back(std::move(service));
    }
    for (const auto& declared : declared_) {
      if (declared.service == 0 || !isWanted(digitalPage(declared.service))) continue;
      isKnown_[declared.service] = true;
      services.push_back(serviceOf(digitalPage(declared.service)));
    }
    if (services.empty() && page_ && digitalService(*page_)) {
      services.push_back(serviceOf(*page_));
    }
    return services;
  }

  std::vector<Service> inspect(const InputSample& sample) override {
    std::vector<Service> services;
    std::span<const std::uint8_t> rest = sample.data;
    for (; rest.size() >= kTripletBytes; rest = rest.subspan(kTripletBytes)) {
      const auto packet = packets_.take(rest.first<kTripletBytes>(), 0);
      if (packet) inspectPacket(*packet, services);
    }
    return services;
  }

  bool isSearching() const override { return !page_; }

 private:
  static constexpr std::uint32_t kLine21Services = 4;

  bool isWanted(std::uint32_t page) const { return !page_ || page == *page_; }

  void inspectPacket(std::span<const std::uint8_t> data, std::vector<Service>& found) {
    ServiceBlocks blocks(data);
    while (const auto block = blocks.next()) {
      if (isKnown_[block->service]) continue;
      bytes_[block->service] += block->data.size();
      if (bytes_[block->service] < kLeastBytes) continue;
      isKnown_[block->service] = true;
      found.push_back(serviceOf(digitalPage(block->service)));
    }
  }

  // With the language that the descriptor gives; it numbers the fields of line 21, not their
  // channels.
  Service serviceOf(std::uint32_t page) const {
    Service service{.streamId = stream_.id,
                    .pid = stream_.pid,
                    .program = stream_.program,
                    .type = stream_.type,
                    .page = page,
                    .language = stream_.language,
                    .charset = charset_};
    for (const auto& declared : declared_) {
      const bool isSame = declared.isDigital ? digitalService(page) == declared.service
                                             : page == 2 * declared.field - 1;
      if (!isSame) continue;
      service.language = declared.language;
      service.isWide = !declared.isDigital || declared.isWideAspect;
      service.isEasyReader = declared.isEasyReader;
    }
    return service;
  }

  std::optional<std::uint32_t> page_;
  encoding::subtitling::dtvcc::Charset charset_;
  StreamInfo stream_;
  std::vector<AnnouncedCaptions> declared_;
  PacketAssembler packets_{nullptr};
  std::array<bool, encoding::subtitling::dtvcc::kServices + 1> isKnown_{};
  std::array<std::size_t, encoding::subtitling::dtvcc::kServices + 1> bytes_{};
};

}  // namespace

std::unique_ptr<IServiceFinder> createCaptionServiceFinder(const ServiceQuery& query) {
  return std::make_unique<CaptionServiceFinder>(query);
}

}  // namespace korr::txsub
