// SPDX-License-Identifier: MIT

// The pieces that playable TTML documents are put together from.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "cues/cue.h"
#include "timed_text/element_stack.h"

namespace korr::txsub {

using encoding::subtitling::ttml::ElementStack;

/// Names and values in the order in which they are written.
using Attributes = std::vector<std::pair<std::string, std::string>>;

inline constexpr const char* kXmlDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

void setAttributes(ElementStack& stack, const Attributes& attributes);

/// `begin` and `end` of a cue, to the millisecond.
Attributes timesOf(const Cue& cue);

/// Takes the root of `stack` and prints it as one line, two blanks per step of `depth` before it
/// and nothing between its parts, where blanks would be text.
std::string takeLine(ElementStack& stack, int depth);

/// The elements of one kind that others refer to by their `xml:id`, styles say: each set of
/// attributes is there once.
class ReferenceTable {
 public:
  explicit ReferenceTable(const char* element, const char* idPrefix)
      : element_(element), idPrefix_(idPrefix) {}

  /// The id of the element with these attributes, which is added when it is new.
  const std::string& idOf(const Attributes& attributes);

  /// All elements in the order of their ids, a line each.
  std::string lines(int depth) const;

  bool isEmpty() const { return ids_.empty(); }

 private:
  const char* element_;
  const char* idPrefix_;
  std::map<Attributes, std::string> ids_;
  std::vector<const std::pair<const Attributes, std::string>*> inOrder_;  // of `ids_`
};

}  // namespace korr::txsub
