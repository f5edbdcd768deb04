// SPDX-License-Identifier: MIT
#include "readers/record_format.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "util/base64.h"
#include "util/exception.h"

namespace korr::txsub {

namespace {

using Json = nlohmann::ordered_json;
using Bytes = std::vector<std::uint8_t>;
using util::TessaryException;

struct StreamName {
  SubtitleInputType type;
  std::string_view name;
};

constexpr std::array<StreamName, 3> kStreamNames = {{
    {SubtitleInputType::Teletext, "teletext"},
    {SubtitleInputType::DvbSubtitle, "dvb"},
    {SubtitleInputType::ClosedCaption, "captions"},
}};

[[noreturn]] void refuse(const std::string& why) {
  throw TessaryException(why);
}

std::string inQuotes(std::string_view name) {
  return '"' + std::string(name) + '"';
}

// An object that has no other than the `allowed` keys: a misspelt key must not pass for an absent
// one.
Json parseObject(std::string_view line, std::initializer_list<std::string_view> allowed) {
  Json object = Json::parse(line, nullptr, /*allow_exceptions=*/false);
  if (object.is_discarded()) refuse("not valid JSON");
  if (!object.is_object()) refuse("not a JSON object");
  for (const auto& [key, value] : object.items()) {
    if (std::find(allowed.begin(), allowed.end(), key) == allowed.end()) {
      refuse("unknown key " + inQuotes(key));
    }
  }
  return object;
}

std::optional<Bytes> optionalBytes(const Json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end()) return std::nullopt;
  if (!found->is_string()) refuse(inQuotes(key) + " is not a string");
  auto bytes = util::decodeBase64(found->get_ref<const std::string&>());
  if (!bytes) refuse(inQuotes(key) + " is not base64");
  return bytes;
}

std::optional<MediaTime> optionalTime(const Json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end()) return std::nullopt;
  if (!found->is_number_unsigned()) refuse(inQuotes(key) + " is not a count of 100 ns");
  return found->get<MediaTime>();
}

bool optionalFlag(const Json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end()) return false;
  if (!found->is_boolean()) refuse(inQuotes(key) + " is neither true nor false");
  return found->get<bool>();
}

std::string asLine(const Json& object) {
  return object.dump() + '\n';
}

}  // namespace

std::string_view streamName(SubtitleInputType type) {
  for (const auto& known : kStreamNames) {
    if (known.type == type) return known.name;
  }
  return "unknown";
}

RecordHeader parseHeader(std::string_view line) {
  const Json object = parseObject(line, {"stream", "format"});
  const auto stream = object.find("stream");
  if (stream == object.end() || !stream->is_string()) refuse("\"stream\" is missing");
  const auto& name = stream->get_ref<const std::string&>();
  const auto known = std::find_if(kStreamNames.begin(), kStreamNames.end(),
                                  [&](const StreamName& entry) { return entry.name == name; });
  if (known == kStreamNames.end()) {
    refuse("\"stream\" is neither \"teletext\" nor \"dvb\" nor \"captions\"");
  }
  return {.type = known->type, .format = optionalBytes(object, "format")};
}

InputSample parseSample(std::string_view line) {
  const Json object =
      parseObject(line, {"data", "start", "stop", "sync", "discontinuity", "format"});
  InputSample sample;
  if (auto data = optionalBytes(object, "data")) sample.data = std::move(*data);
  const auto start = optionalTime(object, "start");
  const auto stop = optionalTime(object, "stop");
  if (start.has_value() != stop.has_value()) {
    refuse("\"start\" and \"stop\" go together or are both absent");
  }
  if (start) sample.times = InputSample::Times{.start = *start, .stop = *stop};
  sample.sync = optionalFlag(object, "sync");
  sample.discontinuity = optionalFlag(object, "discontinuity");
  sample.format = optionalBytes(object, "format");
  return sample;
}

std::string formatHeader(const RecordHeader& header) {
  Json object{{"stream", streamName(header.type)}};
  if (header.format) object["format"] = util::encodeBase64(*header.format);
  return asLine(object);
}

std::string formatSample(const InputSample& sample) {
  Json object{{"data", util::encodeBase64(sample.data)}};
  if (sample.times) {
    object["start"] = sample.times->start;
    object["stop"] = sample.times->stop;
  }
  object["sync"] = sample.sync;
  object["discontinuity"] = sample.discontinuity;
  if (sample.format) object["format"] = util::encodeBase64(*sample.format);
  return asLine(object);
}

std::string formatDelivered(const DeliveredBuffer& buffer) {
  return asLine(Json{{"start", buffer.start},
                     {"stop", buffer.stop},
                     {"sync", buffer.sync},
                     {"discontinuity", buffer.discontinuity},
                     {"data", util::encodeBase64(buffer.data)}});
}

std::string formatEndOfStream() {
  return asLine(Json{{"endOfStream", true}});
}

}  // namespace korr::txsub
