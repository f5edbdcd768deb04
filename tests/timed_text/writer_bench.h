// SPDX-License-Identifier: MIT

// What the tests of the writers share.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/byte_buffer.h"
#include "model/interfaces.h"
#include "util/exception.h"

namespace korr::encoding::subtitling::ttml {

/// A writer over whatever subtitle the test puts in.
template <class Converter>
class WriterBench {
 public:
  /// `options`: those of the converter after its container.
  template <class... Options>
  explicit WriterBench(Options&&... options)
      : converter_(container_, std::forward<Options>(options)...) {}

  template <class Payload>
  std::string convert(const Payload& payload) {
    return written(payload, [this](ByteBuffer& out) { converter_.convert(out, 0); });
  }

  template <class Payload>
  std::string initialDocument(const Payload& payload) {
    return written(payload, [this](ByteBuffer& out) { converter_.initialDocument(out); });
  }

 private:
  struct Container final : ISubtitleContainer {
    Subtitle currentSubtitle(MediaTime) override { return make(); }
    std::function<Subtitle()> make;
  };

  // Starts from a used buffer: documents replace what was there. An exception becomes its text.
  template <class Payload>
  std::string written(const Payload& payload, const std::function<void(ByteBuffer&)>& write) {
    container_.make = [&payload] { return Subtitle(payload); };
    ByteBuffer out(3, 'x');
    try {
      write(out);
    } catch (const util::TessaryException& error) {
      return error.what();
    }
    return std::string(asText(out));
  }

  Container container_;
  Converter converter_;
};

/// A TTML document with this content of its head.
inline std::string withHead(std::string_view head) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<head>\n" + std::string(head) + "</head>\n";
}

inline std::vector<GlyphText> glyphs(std::string_view ascii) {
  return std::vector<GlyphText>(ascii.begin(), ascii.end());
}

}  // namespace korr::encoding::subtitling::ttml
