// SPDX-License-Identifier: MIT

// One pass over a recording with every service that is wanted.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "services/service.h"
#include "sessions/service_session.h"

namespace korr::txsub {

/// Listens to a reader, finds the services that are asked for and feeds a session each. Either
/// all of them go on to the end, or the best one is chosen as soon as it is known and the reader is
/// told to drop the rest.
class ServicePass final : public IReaderListener {
 public:
  /// The finder for a stream, or null when no service of it is wanted.
  using MakeFinder = std::function<std::unique_ptr<IServiceFinder>(const StreamInfo& stream)>;
  /// The session of a service, or null when it is not wanted after all.
  using MakeSession = std::function<std::unique_ptr<ServiceSession>(const Service& service,
                                                                    const StreamInfo& stream)>;
  enum class Wanted { All, Best };

  /// How long a better service may take to show something once another one has.
  static constexpr MediaTime kChoiceWindow = 60 * encoding::subtitling::kSecond;

  ServicePass(IMediaReader& reader, Wanted wanted, MakeFinder makeFinder, MakeSession makeSession,
              ISessionMonitor& monitor);

  /// Reads to the end, or until the user interrupts: false then.
  bool read();

  /// Completes the outputs of all sessions that have shown anything.
  void complete();

  void run() {
    read();
    complete();
  }

  bool onStream(const StreamInfo& stream) override;
  void onSample(const StreamInfo& stream, const InputSample& sample) override;

  /// All: every session, in order of rank. Best: the chosen one, or none when nothing was shown.
  std::vector<ServiceSession*> sessions() const;

  /// Every session in order of rank; when one has been chosen, that one.
  std::vector<ServiceSession*> ranked() const;

  /// Streams that could carry subtitles, wanted or not.
  std::size_t streamCount() const { return streams_.size(); }

 private:
  struct Stream {
    StreamInfo info;
    std::unique_ptr<IServiceFinder> finder;
    std::vector<std::unique_ptr<ServiceSession>> sessions;
    std::deque<InputSample> before;  // the latest ones that were searched
  };

  void search(Stream& stream, const InputSample& sample);
  void addServices(Stream& stream, const std::vector<Service>& services);
  void settle(MediaTime now);
  void choose(ServiceSession* chosen);

  IMediaReader& reader_;
  Wanted wanted_;
  MakeFinder makeFinder_;
  MakeSession makeSession_;
  ISessionMonitor& monitor_;
  std::map<std::uint32_t, Stream> streams_;  // by StreamInfo::id
  std::vector<std::uint32_t> order_;         // ids as they were announced
  std::optional<MediaTime> firstShown_;      // when any service first showed something
  ServiceSession* chosen_ = nullptr;
};

}  // namespace korr::txsub
