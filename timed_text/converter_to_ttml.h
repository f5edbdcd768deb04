// SPDX-License-Identifier: MIT

// TTML documents for all kinds of subtitle.
#pragma once

#include <cstdint>
#include <memory>

#include "model/interfaces.h"
#include "timed_text/ttml_image.h"
#include "timed_text/ttml_styles.h"

class TiXmlElement;

namespace korr::encoding::subtitling::ttml::inline v2_1 {

/// Writes plain TTML or EBU-TT, pictures as SMPTE-TT images. The body stands inside `head` and the
/// root is that `head`, deliberately: the `tt` around it is the initial document's. Not
/// thread-safe.
class ConverterToTtml final : public ISubtitleConverter {
 public:
  /// The line breaks that one document holds at the most; later ones are left out.
  static constexpr std::int32_t kMostLineBreaks = 65'536;

  /// `container` is not owned. With `ttmlOption` the documents are EBU-TT.
  ConverterToTtml(ISubtitleContainer& container, bool ttmlOption,
                  std::unique_ptr<IPngEncoder> pngEncoder);

  /// A picture that cannot be encoded gives a document with nothing but its XML declaration.
  void convert(ByteBuffer& out, MediaTime time) override;

  /// An empty `tt` with the namespaces that the subtitle's kind needs.
  void initialDocument(ByteBuffer& out) override;

 private:
  std::unique_ptr<TiXmlElement> buildHead(const Subtitle& subtitle);
  std::unique_ptr<TiXmlElement> buildHead(const SubtitleBitmap& bitmap);
  template <class Text>
  std::unique_ptr<TiXmlElement> buildTextHead(const Text& text);
  void writeRows(const TeletextText& text, ElementStack& styling, ElementStack& body);
  void writeRows(const CaptionText& text, ElementStack& styling, ElementStack& body);

  ISubtitleContainer& container_;
  bool isEbuTt_;
  TtmlStyleTable styles_;  // of the document in hand
  PngCache pngCache_;
};

}  // namespace korr::encoding::subtitling::ttml::inline v2_1
