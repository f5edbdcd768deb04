// SPDX-License-Identifier: MIT

// Segments and manifests of all services of a stream, in the order that keeps them true.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "streaming/dash_manifest.h"
#include "streaming/display_cutter.h"
#include "streaming/hls_playlist.h"
#include "streaming/mp4_track.h"
#include "streaming/stream_history.h"
#include "streaming/stream_store.h"

namespace korr::txsub {

/// A service as a stream offers it.
struct StreamService {
  std::string folder;         ///< of its files; unique, the same in every run
  std::string name;           ///< for viewers
  std::string language = {};  ///< ISO 639-2; empty when unknown
  bool forHardOfHearing = false;
  bool hasPictures = false;  ///< else it has text

  friend bool operator==(const StreamService&, const StreamService&) = default;
};

struct PublisherSettings {
  MediaTime target = 6 * encoding::subtitling::kSecond;
  std::optional<MediaTime> window = {};  ///< nothing: all of it stays
  /// The video's playlist, asked for until it is there; empty: no master playlist is wanted.
  std::function<std::optional<VideoPlaylist>()> video = {};
  std::function<WallTime()> now = {};
};

/// Puts a stream into a store: first the segments of all services, then the list of segments, then
/// all that names them; what is not named any more goes last. So nothing is ever named that does
/// not exist, and a run that follows a killed one knows where to go on.
class StreamPublisher {
 public:
  /// Takes up what an earlier run has left in the store. Throws OutputError when that is not a
  /// stream's.
  StreamPublisher(IStreamStore& store, PublisherSettings settings);

  /// Offers a service; a known one is updated. Its segments until now are empty.
  void offer(const StreamService& service);

  /// What a service shows in a segment.
  using CuesOf = std::function<std::vector<SegmentCue>(const StreamService& service)>;

  void publish(const Segment& segment, WallTime wallTime, const CuesOf& cuesOf);

  /// The stream is over: manifests say so. Without it a later run goes on.
  void end();

  const StreamHistory& history() const { return history_; }

 private:
  /// One form of a service: what its segments are, and whether they are of HLS and DASH.
  struct Track {
    std::optional<Mp4Codec> codec;  ///< nothing: WebVTT files
    bool isHls = false;
    SegmentNames names;  ///< within the service's folder
  };

  static std::vector<Track> tracksOf(const StreamService& service);
  static Track mp4Track(Mp4Codec codec, const char* name, bool isHls);

  void restore();
  void putInitialisation(const StreamService& service);
  void putSegment(const StreamService& service, const Segment& segment,
                  const std::vector<SegmentCue>& cues);
  void checkState();
  void putState();
  void putManifests();
  void putMediaLines();
  void putMaster();
  void putDash();
  void removeOld();
  std::vector<SubtitleRendition> renditions() const;
  std::vector<DashTrack> dashTracks() const;

  IStreamStore& store_;
  PublisherSettings settings_;
  StreamHistory history_;
  std::vector<StreamService> services_;
  bool hasState_ = false;  // the store does
  bool isEnded_ = false;
};

}  // namespace korr::txsub
