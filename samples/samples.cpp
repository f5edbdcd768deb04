// SPDX-License-Identifier: MIT
#include "samples/samples.h"

#include "samples/caption_samples.h"
#include "samples/digital_sample.h"
#include "samples/dvb_sample.h"
#include "samples/teletext_sample.h"

namespace korr::samples {

std::vector<SampleFile> sampleFiles() {
  const std::string scc = captionScc();
  return {
      {"captions.ts", captionTransportStream(txsub::VideoCodec::H264)},
      {"captions-mpeg2.ts", captionTransportStream(txsub::VideoCodec::Mpeg2)},
      {"captions-708.ts", digitalTransportStream()},
      {"captions.scc", {scc.begin(), scc.end()}},
      {"dvb.ts", dvbTransportStream()},
      {"teletext.ts", teletextTransportStream()},
  };
}

}  // namespace korr::samples
