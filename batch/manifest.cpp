// SPDX-License-Identifier: MIT

#include "batch/manifest.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <utility>

#include "util/utf8_path.h"

namespace korr::txsub {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

/// A mistake at a byte of the line; npos: the line as a whole.
struct Refusal {
  std::size_t offset = std::string_view::npos;
  std::string message;
};

// What stands for itself where `convert` expands a template.
std::string escaped(std::string_view text) {
  std::string result;
  for (const char character : text) {
    if (std::string_view("\\${}").find(character) != std::string_view::npos) result += '\\';
    result += character;
  }
  return result;
}

std::string outputOf(const Job& job) {
  const fs::path input = pathFromUtf8(job.input);
  std::string stem = utf8FromPath(input.stem());
  std::string folder = utf8FromPath(input.parent_path());
  if (folder.empty()) folder = ".";
  if (std::find(job.options.begin(), job.options.end(), "--all") != job.options.end()) {
    stem = escaped(stem);
    folder = escaped(folder);
  }
  // In one pass, so that a name that looks like a variable stays a name.
  std::string result;
  for (std::size_t at = 0; at < job.output.size();) {
    const std::string_view left = std::string_view(job.output).substr(at);
    if (left.starts_with("${input}")) {
      result += stem;
      at += std::string_view("${input}").size();
    } else if (left.starts_with("${folder}")) {
      result += folder;
      at += std::string_view("${folder}").size();
    } else {
      result += left.front();
      ++at;
    }
  }
  return result;
}

std::size_t offsetOfKey(std::string_view line, const std::string& key) {
  return line.find('"' + key + '"');
}

std::string word(std::string_view line, const std::string& key, const json& value) {
  if (value.is_string() && !value.get_ref<const std::string&>().empty()) return value;
  throw Refusal{offsetOfKey(line, key), "\"" + key + "\" is not a text"};
}

Job jobFromJson(std::string_view line, const ManifestDefaults& defaults) {
  json object;
  try {
    object = json::parse(line);
  } catch (const json::parse_error& error) {
    throw Refusal{error.byte == 0 ? 0 : error.byte - 1, "this is not JSON"};
  }
  Job job{.line = 0, .input = {}, .output = defaults.output, .options = defaults.options};
  for (const auto& [key, value] : object.items()) {
    if (key == "input") {
      job.input = word(line, key, value);
    } else if (key == "output") {
      job.output = word(line, key, value);
    } else if (key == "options" && value.is_array()) {
      job.options.clear();
      for (const auto& option : value) job.options.push_back(word(line, key, option));
    } else if (key == "options") {
      throw Refusal{offsetOfKey(line, key), "\"options\" is not an array of texts"};
    } else {
      throw Refusal{
          offsetOfKey(line, key),
          "\"" + key + "\" is not known; a line has \"input\", \"output\" and \"options\""};
    }
  }
  if (job.input.empty()) throw Refusal{.message = "there is no \"input\""};
  return job;
}

Job jobFromLine(std::string_view line, const ManifestDefaults& defaults, const CheckJob& check) {
  Job job;
  if (line.starts_with('{')) {
    job = jobFromJson(line, defaults);
  } else {
    job = {.line = 0,
           .input = std::string(line),
           .output = defaults.output,
           .options = defaults.options};
  }
  if (job.input == "-") throw Refusal{.message = "standard input cannot be one of many"};
  if (job.output.empty()) {
    throw Refusal{.message = "there is no \"output\", and no --output for all"};
  }
  if (job.output == "-") throw Refusal{.message = "standard output cannot take one of many"};
  job.output = outputOf(job);
  if (const auto why = check(job)) throw Refusal{.message = *why};
  return job;
}

fs::path placeOf(const std::string& path) {
  std::error_code error;
  const fs::path place = fs::weakly_canonical(pathFromUtf8(path), error);
  return error ? pathFromUtf8(path).lexically_normal() : place;
}

void findCollisions(Manifest& manifest) {
  std::map<fs::path, std::size_t> inputs;
  std::map<fs::path, std::size_t> outputs;
  for (const auto& job : manifest.jobs) inputs.try_emplace(placeOf(job.input), job.line);
  for (const auto& job : manifest.jobs) {
    const fs::path place = placeOf(job.output);
    const auto [first, isNew] = outputs.try_emplace(place, job.line);
    const auto input = inputs.find(place);
    if (!isNew) {
      manifest.mistakes.push_back({.line = job.line,
                                   .message = "the output '" + job.output + "' is that of line " +
                                              std::to_string(first->second) + " too"});
    } else if (input != inputs.end()) {
      manifest.mistakes.push_back({.line = job.line,
                                   .message = "the output '" + job.output +
                                              "' would overwrite the input of line " +
                                              std::to_string(input->second)});
    }
  }
}

}  // namespace

Manifest readManifest(std::string_view text, const ManifestDefaults& defaults,
                      const CheckJob& check) {
  Manifest manifest;
  std::size_t number = 0;
  while (!text.empty()) {
    const auto end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    ++number;
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.find_first_not_of(" \t") == std::string_view::npos || line.starts_with('#')) continue;
    try {
      Job job = jobFromLine(line, defaults, check);
      job.line = number;
      manifest.jobs.push_back(std::move(job));
    } catch (const Refusal& refusal) {
      ManifestMistake mistake{.line = number, .message = refusal.message};
      if (refusal.offset != std::string_view::npos) mistake.column = refusal.offset + 1;
      manifest.mistakes.push_back(std::move(mistake));
    }
  }
  findCollisions(manifest);
  std::stable_sort(manifest.mistakes.begin(), manifest.mistakes.end(),
                   [](const auto& one, const auto& other) { return one.line < other.line; });
  return manifest;
}

}  // namespace korr::txsub
