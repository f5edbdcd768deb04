#include "closed_caption/field_intake.h"

#include <utility>

#include "closed_caption/caption_codes.h"

namespace korr::encoding::subtitling::closed_caption::inline v2 {
namespace {

constexpr std::uint8_t kSolidBlock = 0x7F;
constexpr std::uint8_t kExtendedDataEnd = 0x0F;

// How far apart a code and its repetition may be. They fill frames that follow each other
// (47 CFR 79.101, control codes); encoders that put null pairs between them are met halfway, while
// a code sent singly (CEA-608, 8.3) and again much later means what it says.
constexpr MediaTime kRepetitionWindow = kSecond / 4;

constexpr std::uint8_t withoutParity(std::uint8_t byte) {
  return static_cast<std::uint8_t>(byte & ~kParityBit);
}

bool isControl(std::uint8_t b1) {
  return b1 >= kFirstControl && b1 < kFirstPrintable;
}

}  // namespace

std::optional<CaptionPair> FieldIntake::take(BytePair sent, MediaTime time) {
  const bool isFirstRight = parity_.accepts(sent.b1);
  const bool isSecondRight = parity_.accepts(sent.b2);
  wasDamaged_ = !isFirstRight || !isSecondRight;

  const BytePair pair{withoutParity(sent.b1), withoutParity(sent.b2)};
  if (pair == BytePair{}) return std::nullopt;  // parts nothing from its repetition
  if (isFirstRight && isControl(pair.b1)) return takeControl(pair, isSecondRight, time);

  const auto before = std::exchange(lastControl_, std::nullopt);
  if (!isFirstRight) {
    // The repetition of a code whose first byte is damaged is known by its second one
    // (47 CFR 79.101, control codes); any other code that is damaged there has a second copy.
    if (before && isSecondRight && pair.b2 == before->pair.b2) return std::nullopt;
    if (pair.b1 < kFirstPrintable) return std::nullopt;
  } else if (pair.b1 != 0 && pair.b1 < kFirstControl) {
    takeExtendedData(pair.b1);
    return std::nullopt;
  }
  return takeText(pair, isFirstRight, isSecondRight);
}

// A first byte of 0x01 to 0x0F begins, goes on with or ends a packet (CEA-608, 8.6); in field 1 it
// means nothing (CEA-608, D.2).
void FieldIntake::takeExtendedData(std::uint8_t b1) {
  if (service_.field == 2) isExtendedData_ = b1 != kExtendedDataEnd;
}

std::optional<CaptionPair> FieldIntake::takeControl(BytePair pair, bool isSecondRight,
                                                    MediaTime time) {
  if (!isSecondRight) {
    lastControl_.reset();
    return std::nullopt;
  }
  isExtendedData_ = false;  // a control code returns to captions or text (CEA-608, 8.6.2)
  channel_ = (pair.b1 & kSecondChannel) != 0 ? 2 : 1;
  if (isRepetition(pair, time) || channel_ != service_.channel) return std::nullopt;
  return CaptionPair{true, inFirstChannelForm(pair)};
}

std::optional<CaptionPair> FieldIntake::takeText(BytePair pair, bool isFirstRight,
                                                 bool isSecondRight) {
  if (isExtendedData_ || channel_ != service_.channel) return std::nullopt;
  if (!isFirstRight) pair.b1 = kSolidBlock;
  if (!isSecondRight) pair.b2 = kSolidBlock;
  if (pair.b2 < kFirstPrintable) pair.b2 = 0;
  return CaptionPair{false, pair};
}

// The second of two equal codes is dropped, a third one runs again (CEA-608, 8.3).
bool FieldIntake::isRepetition(BytePair pair, MediaTime time) {
  const auto before = std::exchange(lastControl_, SentControl{pair, time});
  if (!before || before->pair != pair || time - before->time > kRepetitionWindow) return false;
  lastControl_.reset();
  return true;
}

// Field 2 sends the miscellaneous codes, and only these, one higher (CEA-608, 8.4). Encoders that
// do not are understood too, deliberately.
BytePair FieldIntake::inFirstChannelForm(BytePair pair) const {
  pair.b1 = static_cast<std::uint8_t>(pair.b1 & ~kSecondChannel);
  if (service_.field == 2 && pair.b1 == kMiscellaneousField2 && pair.b2 < kPreambleAddressCode) {
    pair.b1 = kMiscellaneous;
  }
  return pair;
}

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
