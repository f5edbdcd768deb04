// SPDX-License-Identifier: MIT
#include "files/ttml_image_document.h"

#include <algorithm>

#include "cues/language_tag.h"

namespace korr::txsub {

namespace {

std::string pixels(std::uint64_t horizontal, std::uint64_t vertical) {
  return std::to_string(horizontal) + "px " + std::to_string(vertical) + "px";
}

}  // namespace

TtmlImageDocument::TtmlImageDocument(std::string_view language, Profile profile)
    : language_(languageTag(language)), profile_(profile) {
}

void TtmlImageDocument::add(const Cue& cue, const StorePicture& store) {
  const SubtitleBitmap* bitmap = cue.subtitle->bitmap();
  const auto area = bitmap ? visibleArea(*bitmap) : std::nullopt;
  if (!area) return;
  if (!display_) display_ = DisplaySize{.width = bitmap->width, .height = bitmap->height};
  ElementStack stack;
  {
    const auto div = stack.open("div");
    stack.setAttribute("region", regions_.idOf(regionOf(*bitmap, *area)));
    setAttributes(stack, timesOf(cue));
    stack.setAttribute("smpte:backgroundImage", store(*bitmap, *area));
  }
  body_ += takeLine(stack, 2);
}

std::string TtmlImageDocument::opening() const {
  std::string text = kXmlDeclaration;
  text +=
      "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:tts=\"http://www.w3.org/ns/ttml#styling\""
      " xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\""
      " xmlns:smpte=\"http://www.smpte-ra.org/schemas/2052-1/2010/smpte-tt\"";
  if (profile_ == Profile::Imsc1) {
    text += " ttp:profile=\"http://www.w3.org/ns/ttml/profile/imsc1/image\"";
  }
  if (display_) text += " tts:extent=\"" + pixels(display_->width, display_->height) + "\"";
  return text + " ttp:timeBase=\"media\" xml:lang=\"" + language_ + "\">\n  <head>\n";
}

std::string TtmlImageDocument::closing() const {
  std::string text;
  if (!regions_.isEmpty()) text += "    <layout>\n" + regions_.lines(3) + "    </layout>\n";
  text += "  </head>\n";
  if (!body_.empty()) text += "  <body>\n" + body_ + "  </body>\n";
  return text + "</tt>\n";
}

// In pixels of the document. A display of another size, after a change of format, is scaled to it:
// a document has one size only.
Attributes TtmlImageDocument::regionOf(const SubtitleBitmap& bitmap,
                                       const PictureArea& area) const {
  const auto across = [&](std::uint64_t x) { return x * display_->width / bitmap.width; };
  const auto down = [&](std::uint64_t y) { return y * display_->height / bitmap.height; };
  const auto atLeastOne = [](std::uint64_t length) { return std::max<std::uint64_t>(length, 1); };
  return {{"tts:origin", pixels(across(area.x), down(area.y))},
          {"tts:extent", pixels(atLeastOne(across(area.width)), atLeastOne(down(area.height)))}};
}

}  // namespace korr::txsub
