// SPDX-License-Identifier: MIT
#include "files/picture_files.h"

#include "files/output_file.h"
#include "model/byte_buffer.h"

namespace korr::txsub {

std::string PictureFiles::store(const PictureSet::Picture& picture) const {
  constexpr std::size_t kLeastDigits = 4;
  std::string number = std::to_string(picture.number);
  if (number.size() < kLeastDigits) number.insert(0, kLeastDigits - number.size(), '0');
  std::string name = prefix_ + number + ".png";
  if (picture.isNew) {
    OutputFile file(utf8FromPath(directory_ / pathFromUtf8(name)));
    file.write(encoding::subtitling::asText(picture.png));
    file.commit();
  }
  return name;
}

}  // namespace korr::txsub
