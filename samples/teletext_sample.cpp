// SPDX-License-Identifier: MIT
#include "samples/teletext_sample.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <span>
#include <string>
#include <string_view>

#include "teletext/teletext_descriptor.h"
#include "testkit/encoders/teletext_encoder.h"
#include "testkit/encoders/ts_builder.h"

namespace korr::samples {
namespace {

using encoders::Pes;
using encoders::pesPacket;
using encoders::TeletextPacket;
using encoders::TeletextSpan;
using encoders::TsBuilder;
using encoders::TsProgram;
using encoding::subtitling::teletext::lib_teletext::CharacterSet;
using encoding::subtitling::teletext::lib_teletext::TeletextPage;

// Teletext colours, by their codes.
constexpr int kYellow = 3;
constexpr int kCyan = 6;
constexpr int kWhite = 7;

constexpr std::size_t kFieldsPerSecond = 5;
constexpr std::size_t kSeconds = 20;

struct Line {
  std::string_view utf8;
  int colour = kWhite;
};

/// A subtitle of one or two lines, in seconds from the start.
struct Show {
  double start;
  double stop;
  std::vector<Line> lines;
};

struct Page {
  std::uint32_t number;
  std::string_view language;  // of the descriptor; empty: no descriptor names the page
  bool hearingImpaired;
  // EN 300 706, table 32
  std::uint32_t group;
  std::uint32_t nationalOption;
  bool isRightToLeft;
  std::vector<Show> shows;
};

std::vector<Page> pages() {
  const auto news = [](Line greeting, std::vector<Line> talk, Line weather) {
    return std::vector<Show>{{1, 4, {greeting}}, {5, 9.4, std::move(talk)}, {11, 15, {weather}}};
  };
  return {
      {0x150, "deu", false, 0, 1, false,
       news({"Guten Abend aus dem Hafen."},
            {{"Wie lange dauert die Überfahrt?", kYellow}, {"Ungefähr zwölf Stunden.", kCyan}},
            {"Groß & grau: Möwen fliegen tief."})},
      {0x149,
       "deu",
       true,
       0,
       1,
       false,
       {{0.6, 2.4, {{"* Möwen schreien *", kCyan}}},
        {2.4, 4, {{"Guten Abend aus dem Hafen."}}},
        {11, 15, {{"Groß & grau: Möwen fliegen tief."}}}}},
      {0x888, "fra", false, 0, 4, false,
       news({"Bonsoir du port."},
            {{"Combien dure la traversée ?", kYellow}, {"Ça dépend, où va-t-on ?", kCyan}},
            {"La mer sera calme, bientôt."})},
      {0x199, "swe", false, 0, 2, false,
       news({"God kväll från hamnen."},
            {{"Hur lång är överfarten?", kYellow}, {"Ungefär tolv timmar.", kCyan}},
            {"Ålen är färsk i dag."})},
      {0x299, "dan", false, 0, 2, false,
       news({"God aften fra havnen."},
            {{"Hvornår går færgen?", kYellow}, {"Først på søndag.", kCyan}},
            {"Røde æbler på øen, Ærø."})},
      {0x398, "pol", false, 1, 0, false,
       news({"Dobry wieczór z portu."},
            {{"Jak długo trwa rejs?", kYellow}, {"Około dwunastu godzin.", kCyan}},
            {"Żółta łódź płynie ku brzegom."})},
      {0x488, "rus", false, 4, 4, false,
       news({"Добрый вечер из порта."},
            {{"Сколько идёт паром?", kYellow}, {"Около двенадцати часов.", kCyan}},
            {"Море сегодня спокойное."})},
      {0x588, "ell", false, 6, 7, false,
       news({"Καλησπέρα από το λιμάνι."},
            {{"Πόσο διαρκεί το ταξίδι;", kYellow}, {"Περίπου δώδεκα ώρες.", kCyan}},
            {"Η θάλασσα είναι ήρεμη σήμερα."})},
      {0x688, "heb", false, 10, 5, true,
       news({"ערב טוב מהנמל."}, {{"כמה זמן ההפלגה?", kYellow}, {"בערך יום אחד.", kCyan}},
            {"הים שקט היום."})},
      {0x777, "", false, 0, 0, false,
       news({"Page 777 is a rehearsal."}, {{"One, two ..."}}, {"½ £3"})},
  };
}

// Right-to-left text is sent as it stands on screen.
std::string asSent(std::string_view utf8, bool isRightToLeft) {
  if (!isRightToLeft) return std::string(utf8);
  std::string reversed;
  for (std::size_t end = utf8.size(), begin = end; begin > 0;) {
    --begin;
    if ((static_cast<unsigned char>(utf8[begin]) & 0xC0) == 0x80) continue;
    reversed += utf8.substr(begin, end - begin);
    end = begin;
  }
  return reversed;
}

TeletextPacket header(const Page& page) {
  return encoders::headerPacket(
      {.page = page.number, .update = true, .nationalOption = page.nationalOption});
}

// Ends a page where nothing else would: a header of a page that nobody can key in.
TeletextPacket endOfPage(const Page& page) {
  return encoders::headerPacket({.page = page.number | 0xFF, .subtitle = false});
}

void addShow(std::vector<TeletextPacket>& packets, const Page& page, const Show& show) {
  const auto set = CharacterSet::of(page.group, page.nationalOption);
  packets.push_back(header(page));
  std::vector<TeletextPacket> rows;
  std::vector<encoders::TeletextTriplet> triplets;
  auto row = static_cast<std::uint32_t>(24 - 2 * show.lines.size());
  for (const Line& text : show.lines) {
    const std::string sent = asSent(text.utf8, page.isRightToLeft);
    const TeletextSpan span{sent, text.colour};
    const auto line = encoders::teletextLine(set, {&span, 1}, {.row = row, .doubleHeight = true});
    std::ranges::copy(line.triplets, std::back_inserter(triplets));
    rows.push_back(encoders::rowPacket(page.number, row, line.codes));
    row += 2;
  }
  if (!triplets.empty()) {
    packets.push_back(encoders::enhancementPacket(page.number, 0, triplets));
  }
  std::ranges::copy(rows, std::back_inserter(packets));
  packets.push_back(endOfPage(page));
}

// The packets of a PES data field: what changes at its time.
std::vector<TeletextPacket> packetsAt(std::span<const Page> all, std::size_t field) {
  const auto isAt = [field](double seconds) {
    return static_cast<std::size_t>(seconds * kFieldsPerSecond + 0.5) == field;
  };
  std::vector<TeletextPacket> packets;
  for (const Page& page : all) {
    const auto starts = std::ranges::find_if(page.shows, isAt, &Show::start);
    if (starts != page.shows.end()) {
      addShow(packets, page, *starts);
    } else if (std::ranges::any_of(page.shows, isAt, &Show::stop)) {
      packets.push_back(header(page));
      packets.push_back(endOfPage(page));
    }
  }
  return packets;
}

TsProgram program(std::span<const Page> all) {
  constexpr std::uint16_t kTeletextPid = 0x200;
  constexpr std::uint32_t kInitialPage = 1;
  std::vector<TeletextPage> entries{
      {.language = "deu", .type = kInitialPage, .magazine = 1, .page = 0x00}};
  for (const Page& page : all) {
    if (page.language.empty()) continue;
    entries.push_back(
        {.language = std::string(page.language),
         .type = page.hearingImpaired ? TeletextPage::kHearingImpaired : TeletextPage::kSubtitle,
         .magazine = page.number >> 8,
         .page = page.number & 0xFF});
  }
  return {.pcrPid = kTeletextPid,
          .streams = {{.pid = kTeletextPid, .descriptors = encoders::teletextDescriptor(entries)}}};
}

}  // namespace

std::vector<std::uint8_t> teletextTransportStream() {
  constexpr std::uint64_t kFieldTicks = 90'000 / kFieldsPerSecond;
  constexpr std::uint64_t kFirstPts = 10 * 90'000;
  constexpr std::uint64_t kDelay = 18'000;  // from PCR to PTS
  constexpr std::size_t kHeaderLength = 0x24;

  const std::vector<Page> all = pages();
  const TsProgram tables = program(all);
  TsBuilder stream;
  for (std::size_t field = 0; field < kSeconds * kFieldsPerSecond; ++field) {
    if (field % kFieldsPerSecond == 0) stream.tables(tables);
    const std::uint64_t pts = kFirstPts + field * kFieldTicks;
    const auto payload = encoders::stuffedTeletextDataField(packetsAt(all, field));
    const Pes pes{.streamId = Pes::kPrivateStream1, .pts = pts, .headerDataLength = kHeaderLength};
    stream.pcr(tables.pcrPid, pts - kDelay).pes(tables.pcrPid, pesPacket(pes, payload));
  }
  return stream.take();
}

}  // namespace korr::samples
