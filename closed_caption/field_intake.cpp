// SPDX-License-Identifier: MIT
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

FieldIntake::Content FieldIntake::take(BytePair sent, MediaTime time) {
  pair_ = {withoutParity(sent.b1), withoutParity(sent.b2)};
  wasDamaged_ = false;
  if (pair_ == BytePair{}) return Content::Nothing;  // parts nothing from its repetition

  const bool isFirstRight = parity_.accepts(sent.b1);
  const bool isSecondRight = parity_.accepts(sent.b2);
  wasDamaged_ = !isFirstRight || !isSecondRight;
  if (isFirstRight && isSecondRight && isControl(pair_.b1)) return takeControl(time);

  const bool isLost = isFirstRight ? isControl(pair_.b1) : isDamagedControl(isSecondRight);
  lastControl_.reset();
  if (isLost) return Content::Nothing;
  if (isFirstRight && pair_.b1 != 0 && pair_.b1 < kFirstControl) {
    takeExtendedData();
    return Content::Nothing;
  }
  return takeText(isFirstRight, isSecondRight);
}

// Whether a pair whose first byte is damaged was a control code. A repetition is known by its
// second byte (47 CFR 79.101, control codes); any other code has a copy, and needs no guess.
bool FieldIntake::isDamagedControl(bool isSecondRight) const {
  if (lastControl_ && isSecondRight && pair_.b2 == lastControl_->pair.b2) return true;
  return pair_.b1 < kFirstPrintable;
}

// A first byte of 0x01 to 0x0F begins, goes on with or ends a packet (CEA-608, 8.6); in field 1 it
// means nothing (CEA-608, D.2).
void FieldIntake::takeExtendedData() {
  if (service_.field == 2) isExtendedData_ = pair_.b1 != kExtendedDataEnd;
}

FieldIntake::Content FieldIntake::takeControl(MediaTime time) {
  isExtendedData_ = false;  // a control code returns to captions or text (CEA-608, 8.6.2)
  channel_ = (pair_.b1 & kSecondChannel) != 0 ? 2 : 1;
  if (isRepetition(time) || channel_ != service_.channel) return Content::Nothing;
  bringIntoFirstChannelForm();
  return Content::Control;
}

FieldIntake::Content FieldIntake::takeText(bool isFirstRight, bool isSecondRight) {
  if (isExtendedData_ || channel_ != service_.channel) return Content::Nothing;
  if (!isFirstRight) pair_.b1 = kSolidBlock;
  if (!isSecondRight) pair_.b2 = kSolidBlock;
  if (pair_.b2 < kFirstPrintable) pair_.b2 = 0;
  return Content::Text;
}

// The second of two equal codes is dropped, a third one runs again (CEA-608, 8.3).
bool FieldIntake::isRepetition(MediaTime time) {
  const auto before = std::exchange(lastControl_, SentControl{pair_, time});
  if (!before || before->pair != pair_ || time - before->time > kRepetitionWindow) return false;
  lastControl_.reset();
  return true;
}

// Field 2 sends the miscellaneous codes, and only these, one higher (CEA-608, 8.4). Encoders that
// do not are understood too, deliberately.
void FieldIntake::bringIntoFirstChannelForm() {
  pair_.b1 = static_cast<std::uint8_t>(pair_.b1 & ~kSecondChannel);
  if (service_.field == 2 && pair_.b1 == kMiscellaneousField2 && pair_.b2 < kPreambleAddressCode) {
    pair_.b1 = kMiscellaneous;
  }
}

}  // namespace korr::encoding::subtitling::closed_caption::inline v2
