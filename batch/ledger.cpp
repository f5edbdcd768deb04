// SPDX-License-Identifier: MIT

#include "batch/ledger.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>

#include "platform/terminal.h"
#include "util/exception.h"
#include "util/utf8_path.h"

namespace korr::txsub {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using nlohmann::ordered_json;

const char* nameOf(JobStatus status) {
  switch (status) {
    case JobStatus::Done:
      return "done";
    case JobStatus::NoSubtitles:
      return "no subtitles";
    case JobStatus::Failed:
      break;
  }
  return "failed";
}

// Paths may hold bytes that are no UTF-8.
std::string dump(const ordered_json& object) {
  return object.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::string lineOf(const JobResult& result) {
  ordered_json services = ordered_json::array();
  for (const auto& service : result.services) {
    services.push_back({{"service", service.name},
                        {"cues", service.cues},
                        {"first", service.first},
                        {"last", service.last},
                        {"file", service.file}});
  }
  return dump({{"input", result.key.input},
               {"size", result.key.size},
               {"modified", result.key.modified},
               {"options", result.key.options},
               {"output", result.key.output},
               {"status", nameOf(result.status)},
               {"exit", result.exitCode},
               {"seconds", result.seconds},
               {"services", services},
               {"damage", result.damage},
               {"messages", result.messages}});
}

bool isThere(const std::string& file) {
  std::error_code error;
  return fs::exists(pathFromUtf8(file), error);
}

// What the result's files are: of each service, or the one that was asked for.
bool hasItsFiles(const json& result) {
  if (result.at("status") != nameOf(JobStatus::Done)) return true;
  if (result.at("services").empty()) return isThere(result.at("output"));
  for (const auto& service : result.at("services")) {
    if (!isThere(service.at("file"))) return false;
  }
  return true;
}

bool isFamily(const fs::path& candidate, const fs::path& family) {
  const std::string name = utf8FromPath(candidate.filename());
  return name.starts_with(utf8FromPath(family.stem())) &&
         name.ends_with(utf8FromPath(family.extension()));
}

}  // namespace

JobKey keyOf(const Job& job) {
  JobKey key{.input = job.input, .output = job.output, .options = job.options};
  const fs::path path = pathFromUtf8(job.input);
  std::error_code error;
  const auto size = fs::file_size(path, error);
  if (error) return key;
  const auto time = fs::last_write_time(path, error);
  if (error) return key;
  key.size = size;
  key.modified = std::chrono::duration_cast<std::chrono::nanoseconds>(
                     std::chrono::file_clock::to_sys(time).time_since_epoch())
                     .count();
  return key;
}

Ledger::Ledger(const fs::path& file, const fs::path& family) : path_(file) {
  const fs::path folder = family.has_parent_path() ? family.parent_path() : fs::path(".");
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    if (entry.is_regular_file(error) && isFamily(entry.path(), family)) readFile(entry.path());
  }
  const bool isTorn = [&] {
    std::ifstream before(path_, std::ios::binary);
    return before.seekg(-1, std::ios::end) && before.get() != '\n';
  }();
  file_ = platform::openFile(path_, "ab");
  if (!file_ || (isTorn && std::fputc('\n', file_) == EOF)) fail();
}

Ledger::~Ledger() {
  if (file_) std::fclose(file_);
}

void Ledger::readFile(const fs::path& file) {
  std::ifstream lines(file, std::ios::binary);
  for (std::string line; std::getline(lines, line);) {
    const json result = json::parse(line, nullptr, false);
    if (!result.is_object()) continue;
    try {
      const JobKey key{.input = result.at("input"),
                       .output = result.at("output"),
                       .options = result.at("options"),
                       .size = result.at("size"),
                       .modified = result.at("modified")};
      const bool isSettled = result.at("status") != nameOf(JobStatus::Failed);
      if (isSettled && hasItsFiles(result)) {
        settled_.insert(key);
      } else {
        settled_.erase(key);
      }
    } catch (const json::exception&) {
      continue;  // another program's line
    }
  }
}

void Ledger::add(const JobResult& result) {
  const std::string line = lineOf(result) + '\n';
  if (std::fwrite(line.data(), 1, line.size(), file_) != line.size()) fail();
  if (std::fflush(file_) != 0) fail();
}

void Ledger::fail() const {
  throw util::TessaryException("cannot write the results to '" + utf8FromPath(path_) +
                               "': " + std::strerror(errno));
}

}  // namespace korr::txsub
