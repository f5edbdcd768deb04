// SPDX-License-Identifier: MIT
#include "sessions/service_pass.h"

#include <algorithm>

namespace korr::txsub {

namespace {

constexpr std::size_t kMostSamplesBefore = 128;  // two packets with one pair a picture

ServiceSession* firstShown(const std::vector<ServiceSession*>& sessions) {
  const auto found =
      std::find_if(sessions.begin(), sessions.end(),
                   [](const ServiceSession* session) { return session->hasShown(); });
  return found == sessions.end() ? nullptr : *found;
}

}  // namespace

ServicePass::ServicePass(IMediaReader& reader, Wanted wanted, MakeFinder makeFinder,
                         MakeSession makeSession, ISessionMonitor& monitor)
    : reader_(reader),
      wanted_(wanted),
      makeFinder_(std::move(makeFinder)),
      makeSession_(std::move(makeSession)),
      monitor_(monitor) {
}

bool ServicePass::read() {
  while (reader_.read(*this)) {
    monitor_.showProgress(reader_.progress());
    // Whoever reads along with a live input wants what has come so far; a file is soon read.
    if (!reader_.progress().bytesTotal) {
      for (auto* session : sessions()) session->flush();
    }
    if (monitor_.isStopWanted()) break;
  }
  monitor_.endProgress();
  return !monitor_.isStopWanted();  // which also ends the input that a reader waits for
}

bool ServicePass::onStream(const StreamInfo& info) {
  auto [entry, isNew] = streams_.try_emplace(info.id);
  Stream& stream = entry->second;
  stream.info = info;
  if (isNew) order_.push_back(info.id);
  if (chosen_) return !stream.sessions.empty();

  if (isNew) stream.finder = makeFinder_(info);
  if (stream.finder) addServices(stream, stream.finder->describe(info));
  return !stream.sessions.empty() || (stream.finder && stream.finder->isSearching());
}

void ServicePass::onSample(const StreamInfo& info, const InputSample& sample) {
  const auto found = streams_.find(info.id);
  if (found == streams_.end()) return;
  Stream& stream = found->second;
  if (stream.finder && stream.finder->isSearching()) search(stream, sample);
  if (stream.sessions.empty()) return;
  const SharedSample shared = share(sample);
  for (const auto& session : stream.sessions) {
    session->push(sample, shared);
    if (wanted_ == Wanted::All && session->hasShown()) session->open();
  }
  if (wanted_ == Wanted::Best && !chosen_ && sample.times) settle(sample.times->start);
}

// A service of captions shows itself when a packet is whole, or a few are, each of which takes many
// pictures: what it began with belongs to it too.
void ServicePass::search(Stream& stream, const InputSample& sample) {
  const std::size_t known = stream.sessions.size();
  addServices(stream, stream.finder->inspect(sample));
  for (const InputSample& before : stream.before) {
    for (std::size_t i = known; i < stream.sessions.size(); ++i) {
      stream.sessions[i]->push(before, share(before));
    }
  }
  if (stream.info.type != SubtitleInputType::ClosedCaption) return;
  if (stream.before.size() == kMostSamplesBefore) stream.before.pop_front();
  stream.before.push_back(sample);
}

std::vector<ServiceSession*> ServicePass::sessions() const {
  if (wanted_ == Wanted::All) return ranked();
  if (chosen_) return {chosen_};
  return {};
}

void ServicePass::addServices(Stream& stream, const std::vector<Service>& services) {
  for (const auto& service : services) {
    const bool isKnown =
        std::any_of(stream.sessions.begin(), stream.sessions.end(), [&](const auto& session) {
          return session->service().page == service.page &&
                 session->service().dvbPages == service.dvbPages;
        });
    if (isKnown) continue;
    if (auto session = makeSession_(service, stream.info)) {
      stream.sessions.push_back(std::move(session));
    }
  }
}

// What the recording declares comes before what only its samples show, the last choice after
// everything; otherwise the order in which streams and their services were found.
std::vector<ServiceSession*> ServicePass::ranked() const {
  std::vector<ServiceSession*> sessions;
  for (const auto id : order_) {
    for (const auto& session : streams_.at(id).sessions) sessions.push_back(session.get());
  }
  std::stable_partition(sessions.begin(), sessions.end(), [](const ServiceSession* session) {
    return session->service().isDeclared;
  });
  std::stable_partition(sessions.begin(), sessions.end(),
                        [](const ServiceSession* session) { return !session->isLastChoice(); });
  return sessions;
}

// Chooses the first-ranked service that has shown something: at once when none is before it, else
// when those before it have had their time.
void ServicePass::settle(MediaTime now) {
  const auto candidates = ranked();
  auto* best = firstShown(candidates);
  if (!best) return;
  if (!firstShown_) firstShown_ = now;
  const bool isTimeUp = now > *firstShown_ && now - *firstShown_ >= kChoiceWindow;
  if (best == candidates.front() || isTimeUp) choose(best);
}

void ServicePass::choose(ServiceSession* chosen) {
  chosen_ = chosen;
  for (auto& [id, stream] : streams_) {
    std::erase_if(stream.sessions, [&](const auto& session) { return session.get() != chosen; });
    stream.finder.reset();
    if (stream.sessions.empty()) reader_.unselect(id);
  }
  monitor_.detail("converting " + describe(chosen->service()));
  chosen_->open();
}

void ServicePass::complete() {
  for (auto* session : ranked()) {
    session->endInput(reader_.endTime(session->service().program).value_or(0));
  }
  if (wanted_ == Wanted::Best && !chosen_) {
    if (auto* best = firstShown(ranked())) choose(best);
  }
  for (auto* session : sessions()) {
    if (wanted_ == Wanted::All && session->hasShown()) session->open();
    if (session->isOpen()) session->commit();
  }
}

}  // namespace korr::txsub
