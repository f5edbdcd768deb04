#include "dvb_subtitle/page_painter.h"

#include "dvb_subtitle/errors.h"

namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1 {
namespace {

using util::BitReader;

// Runs beyond this length are dropped, deliberately: a 2-bit string can ask for 284.
constexpr std::uint32_t kLongestRun = 280;

// EN 300 743, table 20.
enum class DataType : std::uint32_t {
  TwoBitString = 0x10,
  FourBitString = 0x11,
  EightBitString = 0x12,
  TwoToFourBitMap = 0x20,
  TwoToEightBitMap = 0x21,
  FourToEightBitMap = 0x22,
  EndOfObjectLine = 0xF0,
};

template <std::size_t Size>
void readMap(BitReader& reader, unsigned entryBits, std::array<std::uint8_t, Size>& map) {
  for (auto& entry : map) entry = static_cast<std::uint8_t>(reader.read(entryBits));
}

const Colour* coloursOf(const DVBClutSet& cluts, PixelDepth depth) {
  switch (depth) {
    case PixelDepth::TwoBit:
      return cluts.twoBit.data();
    case PixelDepth::FourBit:
      return cluts.fourBit.data();
    case PixelDepth::EightBit:
      return cluts.eightBit.data();
  }
  return nullptr;
}

Colour fillColour(const DVBRegion& region, const DVBClutSet& cluts) {
  switch (region.depth) {
    case PixelDepth::TwoBit:
      return cluts.twoBit[region.pixelCode2Bit];
    case PixelDepth::FourBit:
      return cluts.fourBit[region.pixelCode4Bit];
    case PixelDepth::EightBit:
      return cluts.eightBit[region.pixelCode8Bit];
  }
  return {};
}

}  // namespace

void PaintingBudget::spend(std::uint64_t work) {
  if (work > left_) throw SegmentError("More to paint in one payload than any display can show");
  left_ -= work;
}

// Where the painting of one object stands, and with what.
struct PagePainter::Brush {
  const DVBClutSet& cluts;
  PixelDepth regionDepth;
  bool keepsCode1;  // non_modifying_colour_flag
  Position origin;
  MapTables maps;
  std::uint32_t x = 0;
  std::uint32_t line = 0;
};

void PagePainter::fillRegion(const DVBRegion& region, Position address, const DVBClutSet& cluts) {
  const std::uint64_t before = canvas_.pixelsWritten();
  canvas_.fill(address.horizontal, address.vertical, region.width, region.height,
               fillColour(region, cluts));
  budget_.spendOnPixels(canvas_.pixelsWritten() - before);
}

void PagePainter::paintObject(const DVBObject& object, Position inRegion, const DVBRegion& region,
                              Position address, const DVBClutSet& cluts) {
  Brush brush{.cluts = cluts,
              .regionDepth = region.depth,
              .keepsCode1 = object.nonModifyingColour,
              .origin = {inRegion.horizontal + address.horizontal + window_.horizontal,
                         inRegion.vertical + address.vertical + window_.vertical},
              .maps = {}};
  paintField(object.topField, 0, brush);
  paintField(object.bottomField.empty() ? object.topField : object.bottomField, 1, brush);
}

// Most of a page's time is spent here. So the reader and the place are copies, which the compiler
// can keep in registers while pixels are written.
template <PixelDepth Depth, typename ColourOf>
void PagePainter::paintRuns(BitReader& reader, Brush& brush, ColourOf colourOf) {
  constexpr std::uint32_t kNonModifyingCode = 1;
  BitReader runs = reader;
  Canvas::Row row = canvas_.row(brush.origin.vertical + brush.line);
  const bool keepsCode1 = brush.keepsCode1;
  std::uint32_t x = brush.origin.horizontal + brush.x;
  while (const auto run = readRun(runs, Depth)) {
    if (run->length == 0 || run->length > kLongestRun) continue;
    if (!keepsCode1 || run->code != kNonModifyingCode) {
      row.paintRun(x, run->length, colourOf(run->code));
    }
    x += run->length;
  }
  brush.x = x - brush.origin.horizontal;
  reader = runs;
}

template <PixelDepth Depth>
void PagePainter::paintString(BitReader& reader, Brush& brush) {
  if (brush.regionDepth == Depth) {  // as nearly always
    const Colour* const colours = coloursOf(brush.cluts, Depth);
    paintRuns<Depth>(reader, brush, [colours](std::uint32_t code) { return colours[code]; });
  } else {
    paintRuns<Depth>(reader, brush, [&brush](std::uint32_t code) {
      return lookUp(brush.cluts, brush.maps, brush.regionDepth, Depth, code);
    });
  }
}

// The pixel-data sub-blocks of one field, every other line of the object (EN 300 743, 7.2.5.1).
void PagePainter::paintField(std::span<const std::uint8_t> field, std::uint32_t firstLine,
                             Brush& brush) {
  const std::uint64_t before = canvas_.pixelsWritten();
  brush.x = 0;
  brush.line = firstLine;
  BitReader reader(field);
  while (!reader.exhausted()) {
    const std::uint32_t dataType = reader.read(8);
    switch (static_cast<DataType>(dataType)) {
      case DataType::TwoBitString:
        paintString<PixelDepth::TwoBit>(reader, brush);
        break;
      case DataType::FourBitString:
        paintString<PixelDepth::FourBit>(reader, brush);
        break;
      case DataType::EightBitString:
        paintString<PixelDepth::EightBit>(reader, brush);
        break;
      case DataType::TwoToFourBitMap:
        readMap(reader, 4, brush.maps.twoToFourBit);
        break;
      case DataType::TwoToEightBitMap:
        readMap(reader, 8, brush.maps.twoToEightBit);
        break;
      case DataType::FourToEightBitMap:
        readMap(reader, 8, brush.maps.fourToEightBit);
        break;
      case DataType::EndOfObjectLine:
        brush.line += 2;
        brush.x = 0;
        break;
      default:
        throw SegmentError("Unsupported data_type = %d", static_cast<int>(dataType));
    }
  }
  budget_.spendOnPixels(canvas_.pixelsWritten() - before);
  budget_.spendOnCodeStrings(field.size());
}

}  // namespace korr::encoding::subtitling::dvb::lib_dvb_subtitle::inline v2_1
