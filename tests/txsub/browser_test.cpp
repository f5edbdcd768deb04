// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "files/webvtt_file.h"
#include "testkit/cue_builder.h"
#include "tests/files/playable_text.h"
#include "tests/txsub/browser.h"
#include "util/base64.h"

namespace korr::txsub {
namespace {

// A page that lets the browser parse a WebVTT file, base64 between the two halves, and shows what
// it understood: a line for each cue, or "error".
constexpr const char* kPageStart =
    R"(<!doctype html><meta charset="utf-8"><video id="video"></video>
<pre id="result"></pre><script>
const track = document.createElement('track');
track.src = 'data:text/vtt;charset=utf-8;base64,)";
constexpr const char* kPageEnd = R"(';
const result = document.getElementById('result');
const markup = cue => {
  const element = document.createElement('div');
  element.append(cue.getCueAsHTML());
  return element.innerHTML.replaceAll('\n', '/');
};
track.onload = () => {
  result.innerHTML = [...track.track.cues].map(cue => [cue.startTime, cue.endTime, cue.line,
      cue.snapToLines, cue.position, cue.align, markup(cue)].join(' ')).join('\n');
};
track.onerror = () => result.textContent = 'error';
document.getElementById('video').append(track);
track.track.mode = 'hidden';
</script>)";

// What the browser understood of a file.
std::string parsedByBrowser(const std::string& vtt) {
  const TemporaryDirectory directory;
  const std::vector<std::uint8_t> bytes(vtt.begin(), vtt.end());
  const std::string page =
      directory.write("page.html", kPageStart + util::encodeBase64(bytes) + kPageEnd);
  const std::string dom = documentOf("file://" + page, directory);
  constexpr std::string_view kResult = "<pre id=\"result\">";
  const auto start = dom.find(kResult);
  if (start == std::string::npos) return "no page: " + dom;
  const auto text = dom.substr(start + kResult.size());
  return text.substr(0, text.find("</pre>"));
}

TEST(WebVttInABrowser, IsUnderstoodToTheLetter) {
  if (!isBrowserInstalled()) GTEST_SKIP() << kBrowser << " is not installed";
  auto styled = captionRun(0, "both");
  styled.italic = true;
  styled.underline = true;
  auto coloured = captionRun(10, "c");
  coloured.foreground = model::CaptionColour::Green;
  coloured.background = model::CaptionColour::Blue;
  const std::string vtt =
      webVttHeader(allColourClasses()) +
      webVttCues(cue(1234, 4004, captions({captionRow(15, 0, "a<b> & --> &amp;")}))) +
      webVttCues(cue(4004, 5000,
                     captions({captionRow(1, {styled}), captionRow(9, {coloured}),
                               captionRow(10, 10, "NOTE x")}))) +
      webVttCues(cue(400'000'000, 400'000'001,
                     captions({captionRow(2, 31, "\x01"), captionRow(3, 31, "z")})));
  EXPECT_EQ(parsedByBrowser(vtt),
            "1.234 4.004 84.67 false 10 start a&lt;b&gt; &amp; --&gt; &amp;amp;\n"
            "4.004 5 10 false 10 start <u><i>both</i></u>\n"
            "4.004 5 52.67 false 35 start <span class=\"lime bg_blue\">c</span>/NOTE x\n"
            "400000 400000.001 20.67 false 87.5 start z");
}

}  // namespace
}  // namespace korr::txsub
