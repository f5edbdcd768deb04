// SPDX-License-Identifier: MIT
#include "files/ttml_markup.h"

#include <tinyxml.h>

#include "cues/cue_time.h"

namespace korr::txsub {

void setAttributes(ElementStack& stack, const Attributes& attributes) {
  for (const auto& [name, value] : attributes) stack.setAttribute(name.c_str(), value);
}

Attributes timesOf(const Cue& cue) {
  const auto [start, stop] = cueMilliseconds(cue);
  return {{"begin", cueTimeText(start, '.')}, {"end", cueTimeText(stop, '.')}};
}

std::string takeLine(ElementStack& stack, int depth) {
  TiXmlPrinter printer;
  printer.SetStreamPrinting();
  stack.takeRoot()->Accept(&printer);
  return std::string(static_cast<std::size_t>(2 * depth), ' ') + printer.Str() + '\n';
}

const std::string& ReferenceTable::idOf(const Attributes& attributes) {
  const auto [entry, isNew] = ids_.try_emplace(attributes);
  if (isNew) {
    entry->second = idPrefix_ + std::to_string(ids_.size());
    inOrder_.push_back(&*entry);
  }
  return entry->second;
}

std::string ReferenceTable::lines(int depth) const {
  std::string lines;
  for (const auto* entry : inOrder_) {
    ElementStack stack;
    {
      const auto element = stack.open(element_);
      stack.setAttribute("xml:id", entry->second);
      setAttributes(stack, entry->first);
    }
    lines += takeLine(stack, depth);
  }
  return lines;
}

}  // namespace korr::txsub
