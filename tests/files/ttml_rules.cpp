// SPDX-License-Identifier: MIT
#include "tests/files/ttml_rules.h"

#include <tinyxml.h>

#include <map>
#include <regex>
#include <set>
#include <vector>

namespace korr::txsub {

namespace {

const char* const kPercent = R"(\d+(\.\d+)?%)";
const char* const kPercentPair = R"(\d+(\.\d+)?% \d+(\.\d+)?%)";
const char* const kColour = "#([0-9A-Fa-f]{6}|[0-9A-Fa-f]{8})";
const char* const kTime = R"(\d{2,}:[0-5]\d:[0-5]\d(\.\d+)?)";
const char* const kAny = ".*";

struct Rule {
  std::string children{};  // as a pattern over their names, a blank after each
  std::map<std::string, std::string> attributes{};  // allowed ones, and the pattern of their values
  std::set<std::string> required{};
};

// EBU Tech 3380, clause 3: one rule per element.
const std::map<std::string, Rule> kRules = {
    {"tt",
     {.children = "head (body )?",
      .attributes = {{"xmlns", "http://www.w3.org/ns/ttml"},
                     {"xmlns:tts", "http://www.w3.org/ns/ttml#styling"},
                     {"xmlns:ttp", "http://www.w3.org/ns/ttml#parameter"},
                     {"xmlns:ebutts", "urn:ebu:tt:style"},
                     {"xmlns:itts", "http://www.w3.org/ns/ttml/profile/imsc1#styling"},
                     {"xmlns:ebuttm", "urn:ebu:tt:metadata"},
                     {"ttp:timeBase", "media"},
                     {"ttp:cellResolution", R"(\d+ \d+)"},
                     {"xml:space", "default|preserve"},
                     {"xml:lang", "[A-Za-z]{1,8}(-[A-Za-z0-9]{1,8})*"}},
      .required = {"xmlns", "ttp:timeBase", "xml:lang"}}},
    {"head", {.children = "(metadata )?styling layout "}},
    {"metadata", {.children = "ebuttm:documentMetadata "}},
    {"ebuttm:documentMetadata", {.children = "(ebuttm:conformsToStandard )+"}},
    {"ebuttm:conformsToStandard", {}},
    {"styling", {.children = "(style )+"}},
    {"style",
     {.attributes = {{"xml:id", kAny},
                     {"tts:fontFamily", kAny},
                     {"tts:fontSize", kPercent},
                     {"tts:lineHeight", std::string("normal|") + kPercent},
                     {"tts:textAlign", "left|center|right|start|end"},
                     {"tts:color", kColour},
                     {"tts:backgroundColor", kColour},
                     {"tts:fontStyle", "normal|italic"},
                     {"tts:textDecoration", "none|underline"},
                     {"tts:direction", "ltr|rtl"},
                     {"tts:unicodeBidi", "normal|embed|bidiOverride"},
                     {"ebutts:linePadding", R"(\d+(\.\d+)?c)"},
                     {"itts:fillLineGap", "true|false"}},
      .required = {"xml:id"}}},
    {"layout", {.children = "(region )+"}},
    {"region",
     {.attributes = {{"xml:id", kAny},
                     {"tts:origin", kPercentPair},
                     {"tts:extent", kPercentPair},
                     {"tts:displayAlign", "before|center|after"},
                     {"tts:overflow", "visible|hidden"}},
      .required = {"xml:id", "tts:origin", "tts:extent"}}},
    {"body", {.children = "(div )+"}},
    {"div", {.children = "(p )+"}},
    {"p",
     {.children = "((span|br) )*",
      .attributes =
          {{"xml:id", kAny}, {"region", kAny}, {"style", kAny}, {"begin", kTime}, {"end", kTime}},
      .required = {"xml:id", "region", "begin", "end"}}},
    {"span", {.children = "(br )*", .attributes = {{"style", kAny}}}},
    {"br", {}},
};

class Checker {
 public:
  void check(const TiXmlElement& element) {
    const std::string name = element.Value();
    const auto rule = kRules.find(name);
    if (rule == kRules.end()) return fault("there is no element " + name);
    std::string children;
    for (const auto* child = element.FirstChildElement(); child;
         child = child->NextSiblingElement()) {
      children += std::string(child->Value()) + ' ';
      check(*child);
    }
    if (!std::regex_match(children, std::regex(rule->second.children))) {
      fault(name + " holds " + children);
    }
    checkAttributes(element, rule->second);
  }

  std::string faults() {
    for (const auto& [kind, id] : references_) {
      if (ids_[id] != kind) fault(id + " is no " + kind);
    }
    return faults_;
  }

 private:
  void checkAttributes(const TiXmlElement& element, const Rule& rule) {
    const std::string name = element.Value();
    for (const auto& required : rule.required) {
      if (!element.Attribute(required)) fault(name + " lacks " + required);
    }
    for (const auto* attribute = element.FirstAttribute(); attribute;
         attribute = attribute->Next()) {
      const std::string what = attribute->Name();
      const std::string value = attribute->Value();
      const auto pattern = rule.attributes.find(what);
      if (pattern == rule.attributes.end()) {
        fault(name + " has no attribute " + what);
      } else if (!std::regex_match(value, std::regex(pattern->second))) {
        fault(name + " has " + what + " of " + value);
      }
      if (what == "style" || what == "region") references_.emplace_back(what, value);
      if (what == "xml:id" && !ids_.emplace(value, name).second) fault(value + " is there twice");
    }
  }

  void fault(const std::string& text) { faults_ += text + '\n'; }

  std::string faults_;
  std::map<std::string, std::string> ids_;  // and the elements that have them
  std::vector<std::pair<std::string, std::string>> references_;
};

}  // namespace

std::string ebuTtDFaults(const std::string& document) {
  TiXmlDocument xml;
  xml.Parse(document.c_str(), nullptr, TIXML_ENCODING_UTF8);
  if (xml.Error()) return xml.ErrorDesc();
  Checker checker;
  checker.check(*xml.RootElement());
  return checker.faults();
}

}  // namespace korr::txsub
