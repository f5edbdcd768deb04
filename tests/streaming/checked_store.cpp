// SPDX-License-Identifier: MIT
#include "tests/streaming/checked_store.h"

#include <cmath>
#include <regex>
#include <sstream>

namespace korr::txsub {

namespace {

bool isPlaylist(const std::string& name) {
  return name.ends_with(".m3u8") && name.find('/') != name.npos;
}

bool isSegment(const std::string& name) {
  return name.ends_with(".vtt") || name.ends_with(".m4s");
}

std::string folderOf(const std::string& name) {
  return name.substr(0, name.rfind('/') + 1);
}

// The number that an attribute-less tag tells.
std::optional<std::uint64_t> numberOf(const std::string& line, const std::string& tag) {
  if (!line.starts_with(tag + ':')) return {};
  return std::stoull(line.substr(tag.size() + 1));
}

// How many discontinuities lie before the entry, since the beginning.
std::uint64_t jumpsUpTo(const ReadPlaylist& playlist, std::size_t index) {
  std::uint64_t jumps = playlist.discontinuitySequence;
  for (std::size_t i = 0; i <= index; ++i) {
    if (playlist.entries[i].isDiscontinuous) ++jumps;
  }
  return jumps;
}

}  // namespace

ReadPlaylist readPlaylist(const std::string& text) {
  ReadPlaylist playlist;
  std::istringstream lines(text);
  std::string line;
  if (!std::getline(lines, line) || line != "#EXTM3U") throw std::runtime_error("no #EXTM3U");
  ReadPlaylist::Entry entry;
  bool hasDuration = false;
  while (std::getline(lines, line)) {
    if (playlist.isEnded) throw std::runtime_error("goes on after its end");
    if (const auto target = numberOf(line, "#EXT-X-TARGETDURATION")) {
      playlist.targetDuration = static_cast<unsigned>(*target);
    } else if (const auto sequence = numberOf(line, "#EXT-X-MEDIA-SEQUENCE")) {
      playlist.mediaSequence = *sequence;
    } else if (const auto jumps = numberOf(line, "#EXT-X-DISCONTINUITY-SEQUENCE")) {
      playlist.discontinuitySequence = *jumps;
    } else if (line == "#EXT-X-DISCONTINUITY") {
      entry.isDiscontinuous = true;
    } else if (line == "#EXT-X-ENDLIST") {
      playlist.isEnded = true;
    } else if (line.starts_with("#EXT-X-MAP:URI=\"")) {
      playlist.map = line.substr(16, line.size() - 17);
    } else if (line.starts_with("#EXTINF:")) {
      entry.duration = std::stod(line.substr(8));
      hasDuration = true;
    } else if (!line.starts_with('#')) {
      if (!hasDuration) throw std::runtime_error("a segment without EXTINF");
      entry.uri = line;
      playlist.entries.push_back(entry);
      entry = {};
      hasDuration = false;
    }
  }
  if (!text.ends_with('\n')) throw std::runtime_error("is torn");
  return playlist;
}

void CheckedStore::put(const std::string& name, std::string_view content) {
  count();
  const std::string text(content);
  if (isSegment(name)) {
    if (files.contains(name) && (isOfThisRun_.contains(name) || isNamed(name))) {
      fault(name + " is written anew");
    }
    isOfThisRun_[name] = true;
  }
  if (isPlaylist(name)) checkPlaylist(name, text);
  if (name.ends_with(".mpd")) checkManifest(text);
  files[name] = text;
}

std::optional<std::string> CheckedStore::get(const std::string& name) {
  const auto found = files.find(name);
  if (found == files.end()) return {};
  return found->second;
}

void CheckedStore::remove(const std::string& name) {
  count();
  if (isNamed(name)) fault(name + " is removed while it is named");
  files.erase(name);
}

void CheckedStore::count() {
  if (killAt && changes >= *killAt) throw Killed();
  ++changes;
}

void CheckedStore::beginRun() {
  isOfThisRun_.clear();
  killAt.reset();
}

void CheckedStore::checkAll() {
  for (const auto& [name, text] : std::map(files)) {
    if (isPlaylist(name)) checkPlaylist(name, text);
    if (name.ends_with(".mpd")) checkManifest(text);
  }
}

void CheckedStore::checkPlaylist(const std::string& name, const std::string& text) {
  try {
    const ReadPlaylist playlist = readPlaylist(text);
    for (const auto& entry : playlist.entries) {
      // RFC 8216, 4.3.3.1.
      if (std::lround(entry.duration) > static_cast<long>(playlist.targetDuration)) {
        fault(name + ": " + entry.uri + " is longer than the target duration");
      }
      if (!files.contains(folderOf(name) + entry.uri)) {
        fault(name + " names " + entry.uri + ", which is not there");
      }
    }
    if (!playlist.map.empty() && !files.contains(folderOf(name) + playlist.map)) {
      fault(name + " names " + playlist.map + ", which is not there");
    }
    const auto before = files.find(name);
    if (before != files.end()) checkGrowth(name, readPlaylist(before->second), playlist);
  } catch (const std::exception& error) {
    fault(name + ": " + error.what());
  }
}

// RFC 8216, 6.2.1 and 6.2.2.
void CheckedStore::checkGrowth(const std::string& name, const ReadPlaylist& before,
                               const ReadPlaylist& now) {
  if (now.targetDuration != before.targetDuration) fault(name + ": another target duration");
  if (now.mediaSequence < before.mediaSequence) fault(name + ": its sequence goes back");
  const std::uint64_t left = now.mediaSequence - before.mediaSequence;
  if (now.entries.size() + left < before.entries.size()) fault(name + ": its end is gone");
  for (std::size_t i = 0; i < now.entries.size(); ++i) {
    const std::uint64_t old = left + i;
    if (old >= before.entries.size()) break;
    if (now.entries[i].uri != before.entries[old].uri ||
        now.entries[i].duration != before.entries[old].duration) {
      fault(name + ": " + before.entries[old].uri + " has become " + now.entries[i].uri);
    }
    if (jumpsUpTo(now, i) != jumpsUpTo(before, old)) {
      fault(name + ": " + now.entries[i].uri + " has another discontinuity sequence number");
    }
  }
}

void CheckedStore::checkManifest(const std::string& text) {
  static const std::regex kTemplate(
      "startNumber=\"(\\d+)\" initialization=\"([^\"]+)\" media=\"([^\"]+)\\$Number\\$\\.m4s\"");
  static const std::regex kEntry("<S (?:t=\"(\\d+)\" )?d=\"(\\d+)\"(?: r=\"(\\d+)\")?");
  for (std::sregex_iterator at(text.begin(), text.end(), kTemplate), end; at != end; ++at) {
    const std::string timeline = at->suffix().str().substr(0, at->suffix().str().find("</Seg"));
    std::uint64_t number = std::stoull((*at)[1]);
    if (!files.contains((*at)[2])) fault("the MPD names " + (*at)[2].str());
    for (std::sregex_iterator entry(timeline.begin(), timeline.end(), kEntry); entry != end;
         ++entry) {
      const std::uint64_t repeats = (*entry)[3].matched ? std::stoull((*entry)[3]) : 0;
      for (std::uint64_t i = 0; i <= repeats; ++i, ++number) {
        const std::string name = (*at)[3].str() + std::to_string(number) + ".m4s";
        if (!files.contains(name)) fault("the MPD names " + name + ", which is not there");
      }
    }
  }
}

bool CheckedStore::isNamed(const std::string& name) const {
  for (const auto& [playlist, text] : files) {
    if (!isPlaylist(playlist) || folderOf(playlist) != folderOf(name)) continue;
    if (text.find('\n' + name.substr(folderOf(name).size()) + '\n') != text.npos) return true;
  }
  return false;
}

void CheckedStore::fault(const std::string& what) {
  constexpr std::size_t kMost = 20;
  if (faults.size() < kMost) faults.push_back(what);
}

}  // namespace korr::txsub
