// MPEG transport streams.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "readers/media_reader.h"
#include "readers/mpegts/ts_framing.h"
#include "readers/mpegts/ts_report.h"
#include "readers/mpegts/ts_stream.h"
#include "readers/mpegts/ts_tables.h"

namespace korr::txsub {

/// Reads MPEG transport streams (ISO/IEC 13818-1) with packets of 188, 192 or 204 bytes: teletext,
/// DVB subtitles and captions in video, as the tables name them, or by their content where there
/// are none. Times are the streams' own, carried over the wrap of the clock and over splices. Of
/// other PIDs it looks at packet headers only.
class TsReader final : public IMediaReader {
 public:
  TsReader(std::unique_ptr<IByteSource> source, const ReaderOptions& options);
  ~TsReader() override;
  TsReader(const TsReader&) = delete;
  TsReader& operator=(const TsReader&) = delete;

  bool read(IReaderListener& listener) override;
  void unselect(std::uint32_t streamId) override;
  ReadProgress progress() const override;
  std::optional<MediaTime> startTime(std::uint32_t program) const override;
  std::optional<MediaTime> endTime(std::uint32_t program) const override;

 private:
  /// What packets of a PID are looked at for; bits.
  enum Role : std::uint8_t {
    kNone = 0,
    kTable = 1,
    kClock = 2,    ///< PCR
    kTiming = 4,   ///< PTS of pictures and sound
    kUnknown = 8,  ///< may turn out to hold what is looked for
    kStream = 16,  ///< a wanted stream
  };
  static constexpr std::size_t kPids = 8192;

  struct Stream;

  // The bytes.
  void open();
  std::size_t fill();
  void process();
  void finish();

  // The packets.
  void take(const TsPacket& packet, unsigned role);
  void takePcr(std::uint16_t pid, std::uint64_t pcr, bool discontinuity);
  void takeStream(const TsPacket& packet);
  void takePesStart(const TsPacket& packet, unsigned role);
  bool detect(const TsPacket& packet, const PesHeader& header);
  void noteTiming(std::uint16_t pid, const PesHeader& header);

  // What there is.
  void applyTables();
  void applyEntry(std::uint16_t program, const TsStreamEntry& entry);
  void addStream(StreamInfo info, const TsStreamKind& kind);
  void removeStream(std::uint16_t pid);
  std::uint32_t idOf(std::uint16_t pid, const TsStreamKind& kind);
  void announce(Stream& stream);
  void updateRoles();
  bool isAskedFor(std::uint16_t pid) const { return !options_.pid || *options_.pid == pid; }
  std::uint16_t programOf(std::uint16_t pid) const;
  TsProgramTime& timeOf(std::uint16_t pid) { return times_[programOf(pid)]; }
  const TsProgramTime* timeOfProgram(std::uint32_t program) const;

  std::unique_ptr<IByteSource> source_;
  ReaderOptions options_;
  TsReport report_;
  IReaderListener* listener_ = nullptr;  // during `read`

  std::vector<std::uint8_t> buffer_;
  std::size_t begin_ = 0;     // of what is not processed; may lie a little beyond the end
  std::size_t end_ = 0;       // of what has been read
  std::uint64_t offset_ = 0;  // of the buffer in the input
  bool isOpen_ = false;
  bool isAtEnd_ = false;

  TsFraming framing_{&report_};
  TsTables tables_{report_};
  std::array<std::uint8_t, kPids> roles_{};                   // bits of Role, by PID
  std::vector<std::unique_ptr<Stream>> streams_;              // by PID; null: none
  std::map<std::uint16_t, std::vector<TsStreamKind>> kinds_;  // that a PID has been, in order

  std::map<std::uint16_t, TsProgramTime> times_;                // by program; 0: not in a PMT
  std::map<std::uint16_t, std::uint16_t> programs_;             // by PID, of those in a PMT
  std::map<std::uint16_t, std::vector<std::uint16_t>> clocks_;  // programs by PCR PID
  std::map<std::uint16_t, TsStreamClock> timings_;              // of role kTiming, by PID
  std::optional<std::uint16_t> untabledClock_;  // PID of the PCRs that go for program 0
  bool hasRivalClocks_ = false;                 // there are several such PIDs: none is believed
};

}  // namespace korr::txsub
