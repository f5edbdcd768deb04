// SPDX-License-Identifier: MIT
#include "closed_caption/field_intake.h"

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

FieldIntake::Taken FieldIntake::take(BytePair sent, MediaTime time) {
  const BytePair pair{withoutParity(sent.b1), withoutParity(sent.b2)};
  if (pair == BytePair{}) return {};  // parts nothing from its repetition

  const bool isFirstRight = parity_.accepts(sent.b1);
  const bool isSecondRight = parity_.accepts(sent.b2);
  if (isFirstRight && isSecondRight && isControl(pair.b1)) return takeControl(pair, time);
  Taken taken = takeDamagedOrText(pair, isFirstRight, isSecondRight);
  taken.wasDamaged = !isFirstRight || !isSecondRight;
  return taken;
}

FieldIntake::Taken FieldIntake::takeDamagedOrText(BytePair pair, bool isFirstRight,
                                                  bool isSecondRight) {
  const bool isLost = isFirstRight ? isControl(pair.b1) : isDamagedControl(pair, isSecondRight);
  lastControl_.reset();
  if (isLost) return {};
  if (isFirstRight && pair.b1 != 0 && pair.b1 < kFirstControl) {
    takeExtendedData(pair.b1);
    return {};
  }
  if (!isForService()) return {};
  if (!isFirstRight) pair.b1 = kSolidBlock;
  if (!isSecondRight) pair.b2 = kSolidBlock;
  if (pair.b2 < kFirstPrintable) pair.b2 = 0;
  return {.content = Content::Text, .pair = pair};
}

// Whether a pair whose first byte is damaged was a control code. A repetition is known by its
// second byte (47 CFR 79.101, control codes); any other code has a copy, and needs no guess.
bool FieldIntake::isDamagedControl(BytePair pair, bool isSecondRight) const {
  if (lastControl_ && isSecondRight && pair.b2 == lastControl_->pair.b2) return true;
  return pair.b1 < kFirstPrintable;
}

// A first byte of 0x01 to 0x0F begins, goes on with or ends a packet (CEA-608, 8.6); in field 1 it
// means nothing (CEA-608, D.2).
void FieldIntake::takeExtendedData(std::uint8_t b1) {
  if (service_.field == 2) isExtendedData_ = b1 != kExtendedDataEnd;
}

FieldIntake::Taken FieldIntake::takeControl(BytePair pair, MediaTime time) {
  isExtendedData_ = false;  // a control code returns to captions or text (CEA-608, 8.6.2)
  channel_ = (pair.b1 & kSecondChannel) != 0 ? 2 : 1;
  if (isRepetition(pair, time) || channel_ != service_.channel) return {};
  return {.content = Content::Control, .pair = inFirstChannelForm(pair)};
}

// The second of two equal codes is dropped, a third one runs again (CEA-608, 8.3).
bool FieldIntake::isRepetition(BytePair pair, MediaTime time) {
  const bool isSecond =
      lastControl_ && lastControl_->pair == pair && time - lastControl_->time <= kRepetitionWindow;
  if (isSecond) {
    lastControl_.reset();
  } else {
    lastControl_ = SentControl{pair, time};
  }
  return isSecond;
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
