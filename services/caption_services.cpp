#include "services/caption_services.h"

namespace korr::txsub {

namespace {

constexpr std::uint32_t kServices = 4;

class CaptionServiceFinder final : public IServiceFinder {
 public:
  explicit CaptionServiceFinder(const ServiceQuery& query) : page_(query.page) {}

  std::vector<Service> describe(const StreamInfo& stream) override {
    std::vector<Service> services;
    for (std::uint32_t page = 1; page <= kServices; ++page) {
      if (page_ && page != *page_) continue;
      services.push_back({.streamId = stream.id,
                          .pid = stream.pid,
                          .program = stream.program,
                          .type = stream.type,
                          .page = page,
                          .language = stream.language,
                          .isDeclared = !stream.isVideo});
    }
    return services;
  }

  std::vector<Service> inspect(const InputSample&) override { return {}; }
  bool isSearching() const override { return false; }

 private:
  std::optional<std::uint32_t> page_;
};

}  // namespace

std::unique_ptr<IServiceFinder> createCaptionServiceFinder(const ServiceQuery& query) {
  return std::make_unique<CaptionServiceFinder>(query);
}

}  // namespace korr::txsub
