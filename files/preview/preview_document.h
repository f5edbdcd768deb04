// SPDX-License-Identifier: MIT

// A page that shows every subtitle of a recording in a browser.
#pragma once

#include <cstddef>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "cues/cue.h"
#include "files/output_file.h"
#include "files/picture.h"
#include "services/service.h"

namespace korr::txsub {

/// The cues of one service in the form that the page's script takes them.
class PreviewTrack final : public ICueOutput {
 public:
  /// `pictures` takes the Base64 PNG of each different picture, `pictureSet` tells them apart; both
  /// are shared by all tracks of a page and not owned.
  PreviewTrack(std::vector<std::string>& pictures, PictureSet& pictureSet);
  ~PreviewTrack() override;

  void onCue(const Cue& cue) override;
  void open() override {}
  void flush() override {}
  void commit() override {}

  /// What the pictures that come into view from `start` (100 ns) to before `stop` were read as, and
  /// how sure that is, 0 to 1.
  void addText(MediaTime start, MediaTime stop, const Subtitle& text, double confidence);

  bool isEmpty() const;

  /// The cues, with times that count from `origin`; once.
  nlohmann::ordered_json takeCues(MediaTime origin);

 private:
  struct TimedContent;

  std::vector<std::string>& pictures_;
  PictureSet& pictureSet_;
  std::vector<TimedContent> cues_;
};

/// What a page calls the recording of this path, which may be "-".
std::string pageTitle(const std::string& input);

/// Tracks and their pictures on the way into one self-contained HTML file.
class PreviewDocument {
 public:
  PreviewDocument();
  ~PreviewDocument();
  PreviewDocument(const PreviewDocument&) = delete;
  PreviewDocument& operator=(const PreviewDocument&) = delete;

  /// A track for a service; must not outlive the document.
  std::unique_ptr<PreviewTrack> makeTrack();

  void add(const Service& service, PreviewTrack& track, MediaTime origin);

  /// Writes the page. `title`: what the recording is called.
  void write(OutputFile& file, const std::string& title, MediaTime duration) const;

 private:
  std::vector<std::string> pictures_;
  PictureSet pictureSet_;
  std::vector<nlohmann::ordered_json> services_;
};

}  // namespace korr::txsub
