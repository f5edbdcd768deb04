// SPDX-License-Identifier: MIT
#include "util/time_code.h"

#include <charconv>
#include <cstdio>

namespace korr::util::inline v2_1 {
namespace {

constexpr std::uint64_t kMinute = 60;

std::optional<std::uint32_t> twoDigits(std::string_view digits) {
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(digits.begin(), digits.end(), value);
  if (error != std::errc{} || end != digits.end()) return {};
  return value;
}

}  // namespace

std::optional<std::uint64_t> frameOfTimeCode(std::string_view timeCode, const TimeCodeRate& rate) {
  constexpr std::string_view kForm = "00:00:00:00";
  if (timeCode.size() != kForm.size() || timeCode[2] != ':' || timeCode[5] != ':') return {};
  if (timeCode[8] != ':' && timeCode[8] != ';') return {};
  const auto hours = twoDigits(timeCode.substr(0, 2));
  const auto minutes = twoDigits(timeCode.substr(3, 2));
  const auto seconds = twoDigits(timeCode.substr(6, 2));
  const auto frames = twoDigits(timeCode.substr(9, 2));
  if (!hours || !minutes || !seconds || !frames) return {};
  if (*minutes > 59 || *seconds > 59 || *frames >= rate.base) return {};
  const std::uint64_t minute = *hours * kMinute + *minutes;
  const std::uint64_t dropped = rate.droppedAMinute() * (minute - minute / 10);
  const std::uint64_t number = (minute * kMinute + *seconds) * rate.base + *frames;
  // A number that is left out names the frame that follows.
  return number < dropped ? 0 : number - dropped;
}

std::string timeCodeOfFrame(std::uint64_t frame, const TimeCodeRate& rate) {
  const std::uint64_t dropped = rate.droppedAMinute();
  const std::uint64_t fullMinute = kMinute * rate.base;
  const std::uint64_t tenMinutes = 10 * fullMinute - 9 * dropped;
  const std::uint64_t inTen = frame % tenMinutes;
  frame += frame / tenMinutes * 9 * dropped;
  // The first of ten minutes has all its numbers.
  if (inTen >= fullMinute) {
    frame += dropped * ((inTen - fullMinute) / (fullMinute - dropped) + 1);
  }
  const std::uint64_t second = frame / rate.base;
  char text[32];
  std::snprintf(text, sizeof text, "%02u:%02u:%02u%c%02u",
                static_cast<unsigned>(second / 3600 % 100), static_cast<unsigned>(second / 60 % 60),
                static_cast<unsigned>(second % 60), rate.dropFrame ? ';' : ':',
                static_cast<unsigned>(frame % rate.base));
  return text;
}

}  // namespace korr::util::inline v2_1
