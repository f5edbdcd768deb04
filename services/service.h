// SPDX-License-Identifier: MIT

// The subtitle services of a recording: what can be listed, chosen and converted.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "dtvcc/character_sets.h"
#include "log/logger.h"
#include "model/dvb_pages.h"
#include "readers/media_reader.h"

namespace korr::txsub {

using encoding::subtitling::DvbPages;
using encoding::subtitling::PictureSystem;

/// One subtitle service: a caption channel, a teletext page, a DVB subtitle stream.
struct Service {
  std::uint32_t streamId = 0;  ///< StreamInfo::id
  std::uint32_t pid = 0;       ///< StreamInfo::pid
  std::uint32_t program = 0;   ///< StreamInfo::program
  SubtitleInputType type = SubtitleInputType::Teletext;
  /// As the chain takes it: caption service 1 to 4, teletext magazine * 256 + page number; or a
  /// digital caption service, as `digitalPage` numbers it.
  std::uint32_t page = 0;
  std::uint32_t pageOption = 0;  ///< teletext: the default character-set group
  std::string language;          ///< ISO 639-2; empty when nothing says it
  bool hearingImpaired = false;
  /// Where the PID carries, or may carry, other pages too; else the first page on the PID is shown.
  std::optional<DvbPages> dvbPages = {};
  bool isDeclared = false;  ///< named by the recording's tables, not only found in its samples
  // Of pictures:
  PictureSystem pictures = PictureSystem::Dvb;
  std::string pictureSetup = {};  ///< as StreamInfo has it
  // Of digital captions:
  encoding::subtitling::dtvcc::Charset charset = encoding::subtitling::dtvcc::Charset::Automatic;
  bool isWide = true;         ///< laid out for 16:9, else for 4:3
  bool isEasyReader = false;  ///< for those who are learning to read
};

/// The page number that stands for a digital caption service, 1 to 63: none that anything else has.
constexpr std::uint32_t digitalPage(std::uint32_t service) {
  return 0x10000 + service;
}

/// The digital caption service that a page number stands for, if any.
constexpr std::optional<std::uint32_t> digitalService(std::uint32_t page) {
  if (page <= digitalPage(0) || page > digitalPage(63)) return std::nullopt;
  return page - digitalPage(0);
}

/// The digital caption service that this one is, if any.
std::optional<std::uint32_t> digitalService(const Service& service);

/// The page number that a user's text stands for: "CC3" and "3" are caption service 3, "S3" is
/// digital caption service 3, "888" is teletext magazine 8, page 88. Nothing when it is none of
/// them.
std::optional<std::uint32_t> pageFromText(std::string_view text);

/// What to look for.
struct ServiceQuery {
  std::optional<std::uint32_t> page = {};  ///< as in Service
  std::string language = {};
  bool hearingImpaired = false;
  std::optional<std::uint32_t> pageOption = {};
  /// Also teletext pages that no descriptor names, even when there are descriptors.
  bool scan = false;
  /// How two-byte characters of digital captions are meant.
  encoding::subtitling::dtvcc::Charset charset = encoding::subtitling::dtvcc::Charset::Automatic;
};

/// Finds the services of one stream that a query asks for.
class IServiceFinder {
 public:
  virtual ~IServiceFinder() = default;

  /// The services that the stream's description names, best match first. Called again when the
  /// description changes.
  virtual std::vector<Service> describe(const StreamInfo& stream) = 0;

  /// The services that this sample is the first to show.
  virtual std::vector<Service> inspect(const InputSample& sample) = 0;

  /// Whether `inspect` may still find any.
  virtual bool isSearching() const = 0;
};

/// The finder for a stream's kind; `logger` may be null.
std::unique_ptr<IServiceFinder> createServiceFinder(const StreamInfo& stream,
                                                    const ServiceQuery& query,
                                                    log::ILogger* logger);

/// Whether a page of this number can belong to a stream of this kind: 1 to 4 and those of
/// `digitalPage` are caption services, from 0x100 on they are teletext pages. DVB subtitles have no
/// page numbers.
bool canHavePage(SubtitleInputType type, std::uint32_t page);

/// "CC1", "708 service 1", "page 888", "DVB subtitles", "DVB subtitles page 2" where the PID has
/// several pages; "PGS subtitles", "DVD subtitles".
std::string displayName(const Service& service);

/// How a list names the system: "teletext", "dvb", "pgs", "dvd", "captions".
std::string_view kindOf(const Service& service);

/// With where it is: "CC1 of PID 0x0100", "page 888 of PID 0x0034".
std::string describe(const Service& service);

/// For the name of a file: "0x0100-cc1", "0x0034-page-888-swe".
std::string fileName(const Service& service);

/// "0x0100"
std::string pidText(std::uint32_t pid);

}  // namespace korr::txsub
