// SPDX-License-Identifier: MIT

// TTML of pictures, for a file or for a segment.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "files/picture.h"
#include "files/ttml_markup.h"

namespace korr::txsub {

/// The parts of one TTML document of bitmap subtitles: a div per picture and interval in a region
/// where the picture stood on screen, cropped to what can be seen. Where the pictures themselves
/// are is up to the writer. The document's pixels are those of the first picture's display.
class TtmlImageDocument {
 public:
  enum class Profile {
    SmpteTt,  ///< SMPTE ST 2052-1
    Imsc1,    ///< image profile of W3C IMSC 1
  };

  using SubtitleBitmap = encoding::subtitling::SubtitleBitmap;

  /// Keeps the part of a picture that can be seen and gives what refers to it.
  using StorePicture =
      std::function<std::string(const SubtitleBitmap& bitmap, const PictureArea& area)>;

  /// `language`: ISO 639-2; empty when unknown.
  TtmlImageDocument(std::string_view language, Profile profile);

  /// Adds a cue whose times are those of the document; a picture that shows nothing is left out.
  void add(const Cue& cue, const StorePicture& store);

  /// The document up to its head's opening tag; known from the first picture on.
  std::string opening() const;

  /// Whether a picture has been added.
  bool hasPicture() const { return display_.has_value(); }

  /// Regions, body and the rest; what stands before them in the head is up to the writer.
  std::string closing() const;

 private:
  struct DisplaySize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
  };

  Attributes regionOf(const SubtitleBitmap& bitmap, const PictureArea& area) const;

  std::string language_;
  Profile profile_;
  std::optional<DisplaySize> display_;
  ReferenceTable regions_{"region", "Region"};
  std::string body_;
};

}  // namespace korr::txsub
