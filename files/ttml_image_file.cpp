// SPDX-License-Identifier: MIT
#include "files/ttml_image_file.h"

#include "util/base64.h"

namespace korr::txsub {

namespace {

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
    : file_(request.path),
      document_(request.language, request.pictures == PictureStorage::Files
                                      ? TtmlImageDocument::Profile::Imsc1
                                      : TtmlImageDocument::Profile::SmpteTt) {
  if (request.pictures == PictureStorage::Files) files_ = filesBeside(request.path);
}

void TtmlImageFile::write(const Cue& cue) {
  document_.add(cue, [this](const SubtitleBitmap& bitmap, const PictureArea& area) {
    start();
    return storePicture(bitmap, area);
  });
}

// Everything up to the pictures.
void TtmlImageFile::start() {
  if (std::exchange(isStarted_, true)) return;
  file_.write(document_.opening());
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

void TtmlImageFile::finish() {
  start();
  if (isEmbedding()) file_.write("    </metadata>\n");
  file_.write(document_.closing());
  file_.commit();
}

}  // namespace korr::txsub
