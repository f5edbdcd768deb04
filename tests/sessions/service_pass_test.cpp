// SPDX-License-Identifier: MIT
#include "sessions/service_pass.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "tests/sessions/silent_monitor.h"

namespace korr::txsub {
namespace {

constexpr MediaTime kSecond = encoding::subtitling::kSecond;

StreamInfo stream(std::uint32_t id) {
  StreamInfo info;
  info.id = id;
  info.pid = 0x100 + id;
  info.type = SubtitleInputType::ClosedCaption;
  return info;
}

InputSample sampleAt(MediaTime time, std::uint8_t page) {
  InputSample sample;
  sample.data = {page};
  sample.times = InputSample::Times{.start = time, .stop = time};
  return sample;
}

// A recording of two streams, played by a script.
class ScriptedReader final : public IMediaReader {
 public:
  using Step = std::function<void(IReaderListener&)>;

  explicit ScriptedReader(std::vector<Step> steps) : steps_(std::move(steps)) {}

  bool read(IReaderListener& listener) override {
    if (next_ == steps_.size()) return false;
    steps_[next_++](listener);
    return true;
  }
  void unselect(std::uint32_t id) override { unselected.insert(id); }
  ReadProgress progress() const override { return {}; }
  std::optional<MediaTime> startTime(std::uint32_t) const override { return 0; }
  std::optional<MediaTime> endTime(std::uint32_t) const override { return 100 * kSecond; }

  std::set<std::uint32_t> unselected;

 private:
  std::vector<Step> steps_;
  std::size_t next_ = 0;
};

// Two services a stream; those of stream 2 are declared.
class TwoServices final : public IServiceFinder {
 public:
  std::vector<Service> describe(const StreamInfo& info) override {
    std::vector<Service> services(2);
    for (std::uint32_t i = 0; i < 2; ++i) {
      services[i].streamId = info.id;
      services[i].page = i + 1;
      services[i].isDeclared = info.id == 2;
    }
    return services;
  }
  std::vector<Service> inspect(const InputSample&) override { return {}; }
  bool isSearching() const override { return false; }
};

// Shows something as soon as a sample names its page.
class FakeSession final : public ServiceSession {
 public:
  using ServiceSession::ServiceSession;

  void push(const InputSample& sample, const SharedSample&) override {
    hasShown_ = hasShown_ || sample.data.front() == service().page;
  }
  bool hasShown() const override { return hasShown_; }
  void endInput(MediaTime) override {}
  void flush() override {}
  HostCounters counters() const override { return {}; }
  void commit() override { isCommitted = true; }

  bool isCommitted = false;

 private:
  void openOutput() override {}

  bool hasShown_ = false;
};

class ServicePassTest : public testing::Test {
 protected:
  ScriptedReader::Step announce(std::uint32_t id) {
    return [id](IReaderListener& listener) { listener.onStream(stream(id)); };
  }
  ScriptedReader::Step sample(std::uint32_t id, MediaTime time, std::uint8_t page) {
    return [=](IReaderListener& listener) { listener.onSample(stream(id), sampleAt(time, page)); };
  }

  // The streams and pages of what comes out, as "1/2": stream 1, page 2.
  std::vector<std::string> run(ServicePass::Wanted wanted,
                               std::vector<ScriptedReader::Step> steps) {
    ScriptedReader reader(std::move(steps));
    SilentMonitor monitor;
    ServicePass pass(
        reader, wanted, [](const StreamInfo&) { return std::make_unique<TwoServices>(); },
        [this](const Service& service, const StreamInfo&) {
          auto session = std::make_unique<FakeSession>(service);
          if (service.page == lastChoice_) session->setLastChoice();
          return session;
        },
        monitor);
    pass.run();
    unselected_ = reader.unselected;
    std::vector<std::string> results;
    for (const auto* session : pass.sessions()) {
      if (!static_cast<const FakeSession*>(session)->isCommitted) continue;
      results.push_back(std::to_string(session->service().streamId) + '/' +
                        std::to_string(session->service().page));
    }
    return results;
  }

  std::set<std::uint32_t> unselected_;
  std::uint32_t lastChoice_ = 0;  // page of the services that are
};

using Results = std::vector<std::string>;

TEST_F(ServicePassTest, ChoosesTheFirstRankedServiceAtOnceAndDropsTheRest) {
  EXPECT_EQ(
      run(ServicePass::Wanted::Best, {announce(1), announce(2), sample(2, 1, 1), sample(1, 2, 1)}),
      Results{"2/1"});
  EXPECT_EQ(unselected_, std::set<std::uint32_t>{1});
}

TEST_F(ServicePassTest, WaitsForABetterServiceForAWhile) {
  const auto untilBetter = [&](MediaTime betterComesAt) {
    return run(ServicePass::Wanted::Best,
               {announce(1), sample(1, kSecond, 2), sample(1, betterComesAt - 1, 0),
                sample(1, betterComesAt, 1)});
  };
  EXPECT_EQ(untilBetter(60 * kSecond), Results{"1/1"});
  EXPECT_EQ(untilBetter(61 * kSecond + 2), Results{"1/2"});
}

TEST_F(ServicePassTest, DecidesAtTheEndWhenNothingBetterCame) {
  EXPECT_EQ(run(ServicePass::Wanted::Best, {announce(1), sample(1, kSecond, 2)}), Results{"1/2"});
  EXPECT_EQ(run(ServicePass::Wanted::Best, {announce(1), sample(1, kSecond, 0)}), Results{});
}

TEST_F(ServicePassTest, TakesTheLastChoiceWhereNothingElseIsShown) {
  lastChoice_ = 1;
  EXPECT_EQ(run(ServicePass::Wanted::Best, {announce(1), sample(1, 1, 1), sample(1, 2, 2)}),
            Results{"1/2"});
  EXPECT_EQ(run(ServicePass::Wanted::Best, {announce(1), sample(1, 1, 1)}), Results{"1/1"});
}

TEST_F(ServicePassTest, CompletesEveryServiceThatShowedSomething) {
  EXPECT_EQ(run(ServicePass::Wanted::All,
                {announce(1), announce(2), sample(1, 1, 2), sample(2, 2, 1), sample(2, 3, 2)}),
            (Results{"2/1", "2/2", "1/2"}));
}

}  // namespace
}  // namespace korr::txsub
