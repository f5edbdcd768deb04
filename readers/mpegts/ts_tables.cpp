// SPDX-License-Identifier: MIT
#include "readers/mpegts/ts_tables.h"

// Not all of dvb/si.h: its times need functions that Windows lacks.
#include <bitstream/dvb/si/desc_48.h>
#include <bitstream/dvb/si/sdt.h>
#include <bitstream/mpeg/psi.h>

#include <array>
#include <utility>

#include "model/descriptors.h"
#include "readers/mpegts/dvb_text.h"

namespace korr::txsub {
namespace {

using encoding::subtitling::DescriptorTag;

constexpr std::array<std::uint16_t, 2> kWellKnownPids = {PAT_PID, SDT_PID};
constexpr std::uint8_t kStuffingTableId = 0xFF;
// More than any multiplex has; damage must not make more.
constexpr std::size_t kMostPrograms = 1024;

std::size_t sectionSize(const std::vector<std::uint8_t>& section) {
  return PSI_HEADER_SIZE + std::size_t{psi_get_length(section.data())};
}

std::uint8_t tableIdOn(std::uint16_t pid) {
  if (pid == PAT_PID) return PAT_TABLE_ID;
  return pid == SDT_PID ? SDT_TABLE_ID_ACTUAL : PMT_TABLE_ID;
}

const char* tableNameOn(std::uint16_t pid) {
  if (pid == PAT_PID) return "PAT";
  return pid == SDT_PID ? "SDT" : "PMT";
}

/// Whether a section has the long form that tables have, and its CRC is right.
bool isSound(const std::vector<std::uint8_t>& section) {
  return psi_get_syntax(section.data()) && psi_validate(section.data()) &&
         psi_check_crc(section.data());
}

std::optional<TsProgramMap> parseMap(std::vector<std::uint8_t>& section) {
  if (!pmt_validate(section.data())) return {};
  TsProgramMap map{.program = pmt_get_program(section.data()),
                   .pcrPid = pmt_get_pcrpid(section.data()),
                   .streams = {}};
  // Not by its number: the library counts in a byte.
  std::uint8_t* entry = section.data() + PMT_HEADER_SIZE + pmt_get_desclength(section.data());
  const std::uint8_t* const end = section.data() + section.size() - PSI_CRC_SIZE;
  while (entry < end) {
    const std::uint8_t* const descriptors = entry + PMT_ES_SIZE;
    const std::uint8_t* const next = descriptors + pmtn_get_desclength(entry);
    map.streams.push_back({.pid = pmtn_get_pid(entry),
                           .streamType = pmtn_get_streamtype(entry),
                           .descriptors = {descriptors, next}});
    entry += next - entry;
  }
  return map;
}

/// The name in a service's descriptors; empty when none of them has one.
std::string nameIn(std::uint8_t* descriptors) {
  std::uint16_t number = 0;
  while (std::uint8_t* const descriptor = descs_get_desc(descriptors, number++)) {
    const auto tag = static_cast<DescriptorTag>(desc_get_tag(descriptor));
    if (tag != DescriptorTag::Service || !desc48_validate(descriptor)) continue;
    std::uint8_t size = 0;
    const std::uint8_t* const name = desc48_get_service(descriptor, &size);
    return dvbTextToUtf8({name, size});
  }
  return {};
}

}  // namespace

void TsSectionAssembler::begin() {
  section_.clear();
  inSection_ = true;
}

bool TsSectionAssembler::isStuffing(std::span<const std::uint8_t> payload) const {
  return section_.empty() && payload.front() == kStuffingTableId;
}

bool TsSectionAssembler::isComplete() const {
  return inSection_ && section_.size() >= PSI_HEADER_SIZE &&
         section_.size() == sectionSize(section_);
}

// What is left of the payload after the bytes that belong to the section.
std::span<const std::uint8_t> TsSectionAssembler::append(std::span<const std::uint8_t> payload) {
  const auto take = [&](std::size_t size) {
    const auto part = payload.first(std::min(size - section_.size(), payload.size()));
    section_.insert(section_.end(), part.begin(), part.end());
    payload = payload.subspan(part.size());
  };
  if (section_.size() < PSI_HEADER_SIZE) take(PSI_HEADER_SIZE);
  if (section_.size() >= PSI_HEADER_SIZE) take(sectionSize(section_));
  return payload;
}

TsTables::TsTables(TsReport& report) : report_(report) {
  for (const std::uint16_t pid : kWellKnownPids) assemblers_[pid] = {};
}

bool TsTables::take(const TsPacket& packet) {
  Assembler& assembler = assemblers_.at(packet.pid());
  const auto step = assembler.continuity.next(packet);
  if (step.isDuplicate) return false;
  if (step.lost != 0) assembler.sections.drop();

  bool hasChanged = false;
  const std::uint16_t pid = packet.pid();
  std::vector<std::vector<std::uint8_t>> sections;
  assembler.sections.take(
      packet.payload(), packet.hasUnitStart(),
      [&](std::vector<std::uint8_t>& section) { sections.push_back(std::move(section)); });
  for (auto& section : sections) hasChanged |= takeSection(pid, section);
  return hasChanged;
}

bool TsTables::takeSection(std::uint16_t pid, std::vector<std::uint8_t>& section) {
  if (psi_get_tableid(section.data()) != tableIdOn(pid)) return false;
  if (!isSound(section)) {
    Assembler& assembler = assemblers_.at(pid);
    if (!std::exchange(assembler.isDamageReported, true)) {
      report_.warn("%s: a damaged %s; passed over", pidName(pid).c_str(), tableNameOn(pid));
    }
    return false;
  }
  if (!psi_get_current(section.data())) return false;
  if (pid == PAT_PID) return takePat(section);
  return pid == SDT_PID ? takeSdt(section) : takePmt(pid, section);
}

bool TsTables::takePat(std::vector<std::uint8_t>& section) {
  if (!pat_validate(section.data())) return false;
  std::map<std::uint16_t, std::uint16_t> programs;
  const std::uint8_t* entry = section.data() + PAT_HEADER_SIZE;
  const std::uint8_t* const end = section.data() + section.size() - PSI_CRC_SIZE;
  for (; entry < end; entry += PAT_PROGRAM_SIZE) {
    const std::uint16_t program = patn_get_program(entry);
    constexpr std::uint16_t kNetworkInformation = 0;
    if (program != kNetworkInformation) programs[program] = patn_get_pid(entry);
  }
  const std::uint8_t last = psi_get_lastsection(section.data());
  pat_.erase(pat_.upper_bound(last), pat_.end());
  pat_[psi_get_section(section.data())] = std::move(programs);
  return updatePrograms();
}

bool TsTables::updatePrograms() {
  std::map<std::uint16_t, std::uint16_t> mapPids;
  for (const auto& [number, programs] : pat_) mapPids.insert(programs.begin(), programs.end());
  while (mapPids.size() > kMostPrograms) mapPids.erase(std::prev(mapPids.end()));
  if (mapPids == mapPids_) return false;
  mapPids_ = std::move(mapPids);

  std::erase_if(maps_, [&](const auto& map) { return !mapPids_.contains(map.first); });
  std::map<std::uint16_t, Assembler> assemblers;
  for (const std::uint16_t pid : kWellKnownPids) assemblers[pid] = std::move(assemblers_[pid]);
  for (const auto& [program, pid] : mapPids_) {
    if (!assemblers.contains(pid)) assemblers[pid] = std::move(assemblers_[pid]);
  }
  assemblers_ = std::move(assemblers);
  return true;
}

bool TsTables::takePmt(std::uint16_t pid, std::vector<std::uint8_t>& section) {
  auto map = parseMap(section);
  if (!map) return false;
  const auto program = mapPids_.find(map->program);
  if (program == mapPids_.end() || program->second != pid) return false;
  TsProgramMap& current = maps_[map->program];
  if (current == *map) return false;
  current = std::move(*map);
  return true;
}

bool TsTables::takeSdt(std::vector<std::uint8_t>& section) {
  if (!sdt_validate(section.data())) return false;
  bool hasChanged = false;
  std::uint8_t number = 0;
  while (std::uint8_t* const service = sdt_get_service(section.data(), number++)) {
    std::string name = nameIn(sdtn_get_descs(service));
    const std::uint16_t program = sdtn_get_sid(service);
    if (name.empty() || (names_.size() >= kMostPrograms && !names_.contains(program))) continue;
    if (names_[program] == name) continue;
    names_[program] = std::move(name);
    hasChanged = true;
  }
  return hasChanged;
}

std::string TsTables::serviceName(std::uint16_t program) const {
  const auto name = names_.find(program);
  return name == names_.end() ? std::string() : name->second;
}

bool TsTables::areComplete() const {
  return !mapPids_.empty() && maps_.size() == mapPids_.size();
}

std::vector<std::uint16_t> TsTables::pids() const {
  std::vector<std::uint16_t> pids;
  for (const auto& [pid, assembler] : assemblers_) pids.push_back(pid);
  return pids;
}

}  // namespace korr::txsub
