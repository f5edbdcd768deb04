// SPDX-License-Identifier: MIT

// A store that holds a stream to the rules with every file that is put there.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "streaming/stream_store.h"

namespace korr::txsub {

/// What a media playlist says.
struct ReadPlaylist {
  struct Entry {
    std::string uri;
    double duration = 0;
    bool isDiscontinuous = false;
  };
  unsigned targetDuration = 0;
  std::uint64_t mediaSequence = 0;
  std::uint64_t discontinuitySequence = 0;
  std::string map;
  std::vector<Entry> entries;
  bool isEnded = false;
};

/// Throws std::runtime_error for what breaks RFC 8216.
ReadPlaylist readPlaylist(const std::string& text);

/// Keeps files in memory. Each breach of a rule is a line of `faults`: a playlist names what is not
/// there, changes what it must not, or a segment is written anew or removed too early.
class CheckedStore final : public IStreamStore {
 public:
  /// The run is killed before this many changes have been made.
  struct Killed : std::runtime_error {
    Killed() : std::runtime_error("killed") {}
  };

  void put(const std::string& name, std::string_view content) override;
  std::optional<std::string> get(const std::string& name) override;
  bool has(const std::string& name) override { return files.contains(name); }
  void remove(const std::string& name) override;

  /// Each playlist and manifest as it stands now.
  void checkAll();

  /// That a run which follows may write anew what was never named.
  void beginRun();

  std::map<std::string, std::string> files;
  std::vector<std::string> faults;
  std::uint64_t changes = 0;
  std::optional<std::uint64_t> killAt;

 private:
  void count();
  void checkPlaylist(const std::string& name, const std::string& text);
  void checkGrowth(const std::string& name, const ReadPlaylist& before, const ReadPlaylist& now);
  void checkManifest(const std::string& text);
  bool isNamed(const std::string& name) const;
  void fault(const std::string& what);

  std::map<std::string, bool> isOfThisRun_;  // segments
};

}  // namespace korr::txsub
