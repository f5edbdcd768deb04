// SPDX-License-Identifier: MIT
#include "disc_subtitle/sub_picture.h"

#include "util/bit_reader.h"

namespace korr::encoding::subtitling::disc::inline v2_1 {

namespace {

using util::BitReader;
using Bytes = std::span<const std::uint8_t>;

enum class Command : std::uint8_t {
  ForcedStart = 0x00,
  Start = 0x01,
  Stop = 0x02,
  SetColours = 0x03,
  SetAlphas = 0x04,
  SetArea = 0x05,
  SetFields = 0x06,
  ChangeColours = 0x07,  // of parts of the picture
  End = 0xFF,
};

constexpr std::size_t kMostSteps = 256;

// Emphasis 2 comes first.
void readFour(BitReader& reader, std::array<std::uint8_t, 4>& values) {
  for (std::size_t i = 4; i-- > 0;) values[i] = static_cast<std::uint8_t>(reader.read(4));
}

/// Where a picture and its look have come to.
struct State {
  SubPicture& picture;
  SubPictureStep step;
  bool hasArea = false;
};

// False at the end of the sequence, or where it cannot be read on.
bool follow(BitReader& reader, State& state) {
  const auto command = static_cast<Command>(reader.read(8));
  switch (command) {
    case Command::ForcedStart:
    case Command::Start:
      state.step.isShown = true;
      break;
    case Command::Stop:
      state.step.isShown = false;
      break;
    case Command::SetColours:
      readFour(reader, state.step.style.colours);
      break;
    case Command::SetAlphas:
      readFour(reader, state.step.style.alphas);
      break;
    case Command::SetArea:
      state.picture.area.left = reader.read(12);
      state.picture.area.right = reader.read(12);
      state.picture.area.top = reader.read(12);
      state.picture.area.bottom = reader.read(12);
      state.hasArea = true;
      break;
    case Command::SetFields:
      for (auto& field : state.picture.fields) field = reader.read(16);
      break;
    case Command::ChangeColours: {
      constexpr std::size_t kSizeBytes = 2;  // of the field, which counts itself
      const std::size_t size = reader.read(16);
      reader.skip(size > kSizeBytes ? (size - kSizeBytes) * 8 : 0);
      break;
    }
    case Command::End:
      return false;
    default:
      return false;
  }
  return !reader.failed();
}

// A run: 2, 4, 6 or 8 bits of its length in as many nibbles, then its code.
struct Run {
  std::uint32_t count = 0;  // 0: to the end of the row
  std::uint8_t code = 0;
};

Run takeRun(BitReader& reader) {
  std::uint32_t value = reader.read(4);
  for (const std::uint32_t least : {0x4U, 0x10U, 0x40U}) {
    if (value < least)
      value = value << 4 | reader.read(4);
    else
      break;
  }
  return {.count = value >> 2, .code = static_cast<std::uint8_t>(value & 3)};
}

}  // namespace

std::optional<std::size_t> sizeOfSubPicture(Bytes unit) {
  if (unit.size() < 2) return std::nullopt;
  return std::size_t{unit[0]} << 8 | unit[1];
}

std::optional<SubPicture> parseSubPicture(Bytes unit) {
  BitReader header(unit);
  header.skip(16);  // size
  std::size_t offset = header.read(16);
  if (header.failed()) return std::nullopt;
  SubPicture picture;
  State state{.picture = picture, .step = {}};
  while (offset < unit.size() && picture.steps.size() < kMostSteps) {
    BitReader reader(unit.subspan(offset));
    state.step.delay = reader.read(16);
    const std::size_t next = reader.read(16);
    while (follow(reader, state)) {
    }
    reader.allowZeros();
    const auto* last = picture.steps.empty() ? nullptr : &picture.steps.back();
    const bool isChange =
        last ? last->isShown != state.step.isShown || !(last->style == state.step.style)
             : state.step.isShown;
    if (isChange) picture.steps.push_back(state.step);
    if (next <= offset) break;  // the last one points at itself
    offset = next;
  }
  const auto& area = picture.area;
  if (picture.steps.empty() || !state.hasArea || area.right < area.left || area.bottom < area.top)
    return std::nullopt;
  return picture;
}

std::vector<std::uint8_t> pixelsOf(const SubPicture& picture, Bytes unit) {
  const std::size_t width = picture.area.right - picture.area.left + 1;
  const std::size_t height = picture.area.bottom - picture.area.top + 1;
  std::vector<std::uint8_t> pixels(width * height);
  for (const std::size_t field : {0U, 1U}) {
    if (picture.fields[field] >= unit.size()) continue;
    BitReader reader(unit.subspan(picture.fields[field]));
    reader.allowZeros();
    for (std::size_t y = field; y < height && !reader.exhausted(); y += 2) {
      for (std::size_t x = 0; x < width && !reader.exhausted();) {
        const Run run = takeRun(reader);
        const std::size_t count =
            run.count == 0 ? width - x : std::min<std::size_t>(run.count, width - x);
        std::fill_n(pixels.begin() + static_cast<std::ptrdiff_t>(y * width + x), count, run.code);
        x += count;
      }
      if (!reader.isByteAligned()) reader.skip(4);
    }
  }
  return pixels;
}

}  // namespace korr::encoding::subtitling::disc::inline v2_1
