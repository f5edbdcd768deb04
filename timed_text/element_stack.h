// SPDX-License-Identifier: MIT

// Builds one XML element from the outside in.
#pragma once

#include <memory>
#include <string>
#include <vector>

class TiXmlElement;
class TiXmlNode;

namespace korr::encoding::subtitling::ttml::inline v2_1 {

/// A cursor over a growing XML tree: a stack of open elements and the root that is finished when
/// the last of them closes.
class ElementStack {
 public:
  /// Closes the element that `open` pushed, also when an exception passes by.
  class [[nodiscard]] Scope {
   public:
    ~Scope() { stack_.close(); }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    friend class ElementStack;
    explicit Scope(ElementStack& stack) : stack_(stack) {}

    ElementStack& stack_;
  };

  ElementStack();
  ~ElementStack();
  ElementStack(const ElementStack&) = delete;
  ElementStack& operator=(const ElementStack&) = delete;

  /// Opens an element; it is a child of the one that is open now.
  Scope open(const char* name);

  /// The next three work on the innermost open element, which there must be.
  void setAttribute(const char* name, const std::string& value);
  void addText(const std::string& text);
  /// Appends a copy of a finished node as the last child.
  void add(const TiXmlNode& node);

  /// The element that closed last with no other one open; null when there is none (any more).
  std::unique_ptr<TiXmlElement> takeRoot();

 private:
  void close() noexcept;

  std::vector<std::unique_ptr<TiXmlElement>> open_;
  std::unique_ptr<TiXmlElement> root_;
};

}  // namespace korr::encoding::subtitling::ttml::inline v2_1
