// SPDX-License-Identifier: MIT
#include "files/preview/preview_document.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "testkit/cue_builder.h"

namespace korr::txsub {
namespace {

TEST(PreviewTrack, RoundsTimesAsFilesDo) {
  std::vector<std::string> pictures;
  PictureSet pictureSet;
  PreviewTrack track(pictures, pictureSet);
  const auto text =
      std::make_shared<const Subtitle>(teletext({{.number = 20, .runs = {teletextRun(3, " ok")}}}));
  track.onCue({.start = 10'229'000, .stop = 20'004'999, .subtitle = text});
  const auto cues = track.takeCues(0);
  EXPECT_EQ(cues.at(0).at("start"), 1.023);
  EXPECT_EQ(cues.at(0).at("stop"), 2.0);
}

TEST(PreviewTrack, TellsWhereLinesBeginThatReadFromTheRight) {
  std::vector<std::string> pictures;
  PictureSet pictureSet;
  PreviewTrack track(pictures, pictureSet);
  auto hebrew = teletextRun(9, " ");
  for (const char* letter : {".", "ב", "א"}) hebrew.glyphs.emplace_back(std::string_view(letter));
  track.onCue(
      {.start = 0,
       .stop = 1,
       .subtitle = std::make_shared<const Subtitle>(teletext(
           {{.number = 20, .runs = {hebrew}}, {.number = 22, .runs = {teletextRun(3, " ok")}}}))});
  const auto lines = track.takeCues(0).at(0).at("lines");
  EXPECT_EQ(lines.at(0).at("right"), 36.0) << "after column 12 of 40 in 80 % of the picture";
  EXPECT_EQ(lines.at(0).at("spans").at(0).at("text"), "אב.");
  EXPECT_FALSE(lines.at(1).contains("right"));
}

}  // namespace
}  // namespace korr::txsub
