// SPDX-License-Identifier: MIT

// MPEG transport streams.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "readers/input_buffer.h"
#include "readers/media_reader.h"
#include "readers/mpegts/ts_demultiplexer.h"
#include "readers/mpegts/ts_framing.h"
#include "readers/mpegts/ts_report.h"

namespace korr::txsub {

/// Reads MPEG transport streams (ISO/IEC 13818-1) with packets of 188, 192 or 204 bytes: teletext,
/// DVB subtitles and captions in video, as the tables name them, or by their content where there
/// are none. Times are the streams' own, carried over the wrap of the clock and over splices.
class TsReader final : public IMediaReader {
 public:
  TsReader(std::unique_ptr<IByteSource> source, const ReaderOptions& options);

  bool read(IReaderListener& listener) override;
  void unselect(std::uint32_t streamId) override;
  ReadProgress progress() const override;
  std::optional<MediaTime> startTime(std::uint32_t program) const override;
  std::optional<MediaTime> endTime(std::uint32_t program) const override;
  ReaderFindings findings() const override;

 private:
  void open();
  void readOn();
  void scout();
  void process();

  std::chrono::milliseconds tablesDue_;
  TsReport report_;
  InputBuffer input_;
  TsFraming framing_{&report_};
  std::size_t ahead_ = 0;  // where the next packet is expected in the bytes that come
  TsDemultiplexer demultiplexer_;
  bool isOpen_ = false;
};

}  // namespace korr::txsub
