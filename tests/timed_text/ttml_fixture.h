// What the tests of the TTML writer share.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "core/byte_buffer.h"
#include "core/interfaces.h"
#include "timed_text/converter_to_ttml.h"

namespace korr::encoding::subtitling::ttml {

/// Yields one subtitle for every time.
class FixedContainer final : public ISubtitleContainer {
 public:
  explicit FixedContainer(std::function<Subtitle()> make) : make_(std::move(make)) {}
  Subtitle currentSubtitle(MediaTime) override { return make_(); }

 private:
  std::function<Subtitle()> make_;
};

/// Answers every picture with the same bytes, or with none.
class FakePngEncoder final : public IPngEncoder {
 public:
  explicit FakePngEncoder(std::optional<std::string>& answer, int& calls)
      : answer_(answer), calls_(calls) {}

  std::optional<ByteBuffer> encode(const RgbaImage&) override {
    ++calls_;
    if (!answer_) return std::nullopt;
    return ByteBuffer(answer_->begin(), answer_->end());
  }

 private:
  std::optional<std::string>& answer_;
  int& calls_;
};

/// A writer over whatever subtitle the test puts in, with a fake PNG encoder behind it.
class TtmlWriter {
 public:
  explicit TtmlWriter(bool ebuTt = false)
      : container_([this] { return make_(); }),
        converter_(container_, ebuTt, std::make_unique<FakePngEncoder>(png, encoderCalls)) {}

  template <class Payload>
  std::string convert(const Payload& payload) {
    make_ = [payload] { return Subtitle(payload); };
    return run([this](ByteBuffer& out) { converter_.convert(out, 0); });
  }

  template <class Payload>
  std::string initialDocument(const Payload& payload) {
    make_ = [payload] { return Subtitle(payload); };
    return run([this](ByteBuffer& out) { converter_.initialDocument(out); });
  }

  std::optional<std::string> png = "png";  ///< what the encoder answers
  int encoderCalls = 0;

 private:
  // Starts from a used buffer: documents replace what was there.
  std::string run(const std::function<void(ByteBuffer&)>& write) {
    ByteBuffer out(3, 'x');
    write(out);
    return std::string(asText(out));
  }

  std::function<Subtitle()> make_;
  FixedContainer container_;
  ConverterToTtml converter_;
};

}  // namespace korr::encoding::subtitling::ttml
