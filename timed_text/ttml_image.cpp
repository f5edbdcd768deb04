// SPDX-License-Identifier: MIT
#include "timed_text/ttml_image.h"

#include <tinyxml.h>

#include <string>

#include "timed_text/element_stack.h"
#include "util/base64.h"

namespace korr::encoding::subtitling::ttml::inline v2_1 {

namespace {

constexpr const char* kRegionId = "Region";

std::uint32_t idOf(const SubtitleBitmap& bitmap) {
  return static_cast<std::uint32_t>(bitmap.pageState);
}

std::string imageIdOf(const SubtitleBitmap& bitmap) {
  return "Subtitle_" + std::to_string(idOf(bitmap));
}

void writeMetadata(ElementStack& head, const std::string& imageId, const ByteBuffer* png) {
  const auto metadata = head.open("metadata");
  if (!png) return;
  const auto image = head.open("smpte:image");
  head.setAttribute("xml:id", imageId);
  head.setAttribute("imagetype", "PNG");
  head.setAttribute("encoding", "Base64");
  head.addText(util::encodeBase64(*png));
}

// One region as large as the picture.
void writeLayout(ElementStack& head, const SubtitleBitmap& bitmap) {
  const auto layout = head.open("layout");
  const auto region = head.open("region");
  head.setAttribute("tts:extent",
                    std::to_string(bitmap.width) + "px " + std::to_string(bitmap.height) + "px");
  head.setAttribute("tts:origin", "0% 0%");
  head.setAttribute("xml:id", kRegionId);
}

std::unique_ptr<TiXmlElement> buildBody(const std::string& imageId, bool isPictured) {
  ElementStack stack;
  {
    const auto body = stack.open("body");
    const auto div = stack.open("div");
    if (isPictured) {
      stack.setAttribute("smpte:backgroundImage", "#" + imageId);
      stack.setAttribute("region", kRegionId);
    }
  }
  return stack.takeRoot();
}

}  // namespace

PngCache::PngCache(std::unique_ptr<IPngEncoder> encoder) : encoder_(std::move(encoder)) {
}

const ByteBuffer* PngCache::pngOf(const SubtitleBitmap& bitmap) {
  if (!entry_ || entry_->id != idOf(bitmap)) {
    auto png = encoder_->encode(imageOf(bitmap));
    if (!png) return nullptr;
    entry_ = Entry{.id = idOf(bitmap), .png = std::move(*png)};
  }
  return &entry_->png;
}

std::unique_ptr<TiXmlElement> buildImageHead(const SubtitleBitmap& bitmap, const ByteBuffer* png) {
  const std::string imageId = imageIdOf(bitmap);
  const auto body = buildBody(imageId, png != nullptr);
  ElementStack stack;
  {
    const auto head = stack.open("head");
    writeMetadata(stack, imageId, png);
    if (png) writeLayout(stack, bitmap);
    stack.add(*body);
  }
  return stack.takeRoot();
}

}  // namespace korr::encoding::subtitling::ttml::inline v2_1
