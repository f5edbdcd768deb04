#include "files/ttml_image_file.h"

#include <algorithm>

#include "cues/language_tag.h"
#include "util/base64.h"

namespace korr::txsub {

namespace {

std::string pixels(std::uint64_t horizontal, std::uint64_t vertical) {
  return std::to_string(horizontal) + "px " + std::to_string(vertical) + "px";
}

// A file name as a relative reference (RFC 3986, 2.3): everything but unreserved characters is
// escaped.
std::string referenceTo(std::string_view fileName) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string reference;
  for (const char c : fileName) {
    const bool isUnreserved = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                              (c >= '0' && c <= '9') || c == '-' || c == '.' || c == '_' ||
                              c == '~';
    if (isUnreserved) {
      reference += c;
    } else {
      const auto code = static_cast<unsigned char>(c);
      reference += {'%', kDigits[code >> 4], kDigits[code & 15]};
    }
  }
  return reference;
}

// "DIR/news.ttml" has its pictures in "DIR/news-0001.png" and so on.
PictureFiles filesBeside(const std::string& document) {
  const auto path = pathFromUtf8(document);
  return PictureFiles(path.parent_path(), utf8FromPath(path.stem()) + '-');
}

}  // namespace

TtmlImageFile::TtmlImageFile(const PlayableRequest& request)
    : language_(languageTag(request.language)), file_(request.path) {
  if (request.pictures == PictureStorage::Files) files_ = filesBeside(request.path);
}

void TtmlImageFile::write(const Cue& cue) {
  const SubtitleBitmap* bitmap = cue.subtitle->bitmap();
  const auto area = bitmap ? visibleArea(*bitmap) : std::nullopt;
  if (!area) return;
  if (!isStarted_) start(DisplaySize{.width = bitmap->width, .height = bitmap->height});
  ElementStack stack;
  {
    const auto div = stack.open("div");
    stack.setAttribute("region", regions_.idOf(regionOf(*bitmap, *area)));
    setAttributes(stack, timesOf(cue));
    stack.setAttribute("smpte:backgroundImage", storePicture(*bitmap, *area));
  }
  body_ += takeLine(stack, 2);
}

// Everything up to the pictures.
void TtmlImageFile::start(std::optional<DisplaySize> display) {
  isStarted_ = true;
  file_.write(kXmlDeclaration);
  file_.write(
      "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:tts=\"http://www.w3.org/ns/ttml#styling\""
      " xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\""
      " xmlns:smpte=\"http://www.smpte-ra.org/schemas/2052-1/2010/smpte-tt\"");
  if (!isEmbedding()) {
    file_.write(" ttp:profile=\"http://www.w3.org/ns/ttml/profile/imsc1/image\"");
  }
  if (display) {
    display_ = *display;
    file_.write(" tts:extent=\"" + pixels(display->width, display->height) + "\"");
  }
  file_.write(" ttp:timeBase=\"media\" xml:lang=\"" + language_ + "\">\n");
  file_.write("  <head>\n");
  if (isEmbedding()) file_.write("    <metadata>\n");
}

// Keeps the picture and gives what refers to it.
std::string TtmlImageFile::storePicture(const SubtitleBitmap& bitmap, const PictureArea& area) {
  const PictureSet::Picture picture = pictures_.add(bitmap, area);
  if (files_) return referenceTo(files_->store(picture));
  const std::string id = "Picture" + std::to_string(picture.number);
  if (picture.isNew) embed(id, picture.png);
  return "#" + id;
}

void TtmlImageFile::embed(const std::string& id, const PictureSet::ByteBuffer& png) {
  file_.write("      <smpte:image xml:id=\"" + id + "\" imagetype=\"PNG\" encoding=\"Base64\">");
  file_.write(util::encodeBase64(png));
  file_.write("</smpte:image>\n");
}

// In pixels of the document. A display of another size, after a change of format, is scaled to it:
// a document has one size only.
Attributes TtmlImageFile::regionOf(const SubtitleBitmap& bitmap, const PictureArea& area) const {
  const auto across = [&](std::uint64_t x) { return x * display_.width / bitmap.width; };
  const auto down = [&](std::uint64_t y) { return y * display_.height / bitmap.height; };
  const auto atLeastOne = [](std::uint64_t length) { return std::max<std::uint64_t>(length, 1); };
  return {{"tts:origin", pixels(across(area.x), down(area.y))},
          {"tts:extent", pixels(atLeastOne(across(area.width)), atLeastOne(down(area.height)))}};
}

void TtmlImageFile::finish() {
  if (!isStarted_) start(std::nullopt);
  if (isEmbedding()) file_.write("    </metadata>\n");
  if (!regions_.isEmpty()) {
    file_.write("    <layout>\n" + regions_.lines(3) + "    </layout>\n");
  }
  file_.write("  </head>\n");
  if (!body_.empty()) file_.write("  <body>\n" + body_ + "  </body>\n");
  file_.write("</tt>\n");
  file_.commit();
}

}  // namespace korr::txsub
