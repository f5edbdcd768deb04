// SPDX-License-Identifier: MIT
#include "timed_text/element_stack.h"

#include <tinyxml.h>

namespace korr::encoding::subtitling::ttml::inline v2_1 {

ElementStack::ElementStack() = default;
ElementStack::~ElementStack() = default;

ElementStack::Scope ElementStack::open(const char* name) {
  open_.push_back(std::make_unique<TiXmlElement>(name));
  return Scope(*this);
}

void ElementStack::setAttribute(const char* name, const std::string& value) {
  open_.back()->SetAttribute(name, value);
}

void ElementStack::addText(const std::string& text) {
  open_.back()->LinkEndChild(new TiXmlText(text));
}

void ElementStack::add(const TiXmlNode& node) {
  open_.back()->LinkEndChild(node.Clone());
}

std::unique_ptr<TiXmlElement> ElementStack::takeRoot() {
  return std::move(root_);
}

void ElementStack::close() noexcept {
  std::unique_ptr<TiXmlElement> element = std::move(open_.back());
  open_.pop_back();
  if (open_.empty()) {
    root_ = std::move(element);
  } else {
    open_.back()->LinkEndChild(element.release());
  }
}

}  // namespace korr::encoding::subtitling::ttml::inline v2_1
