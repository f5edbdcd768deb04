// SPDX-License-Identifier: MIT
#include "util/variable_expander.h"

#include <optional>
#include <utility>

namespace korr::util::inline v2_1 {
namespace {

std::string orNotAvailable(std::string value) {
  return value.empty() ? "N/A" : std::move(value);
}

// What the character after a backslash stands for.
std::optional<char> unescape(char character) {
  switch (character) {
    case '\\':
    case '{':
    case '}':
    case '$':
      return character;
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    default:
      return std::nullopt;
  }
}

// The first character of UTF-8 text with all its bytes.
std::string firstCharacter(std::string_view text) {
  std::size_t size = 1;
  while (size < text.size() && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) ++size;
  return std::string(text.substr(0, size));
}

// One left-to-right scan; each step takes one byte and says what is wrong with it, if
// anything.
class Scan {
 public:
  explicit Scan(const IVariables& variables)
      : variables_(variables), owed_(variables.requiredNames()) {}

  std::optional<std::string> take(std::string_view rest) {
    const char character = rest.front();
    switch (state_) {
      case State::Text:
        return takeText(character);
      case State::Escape:
        return takeEscaped(rest);
      case State::Dollar:
        return takeOpeningBrace(character);
      case State::Name:
        return takeName(character);
    }
    return std::nullopt;
  }

  std::optional<std::string> finish() const {
    switch (state_) {
      case State::Text:
        break;
      case State::Escape:
        return R"(unfinished escape sequence (available: \\ \$ \{ \} \t \n \r).)";
      case State::Dollar:
        return kNoOpeningBrace;
      case State::Name:
        return "unbalanced braces, you probably forgot a }.";
    }
    if (!owed_.empty()) return "${" + *owed_.begin() + "} must appear at least once.";
    return std::nullopt;
  }

  std::string takeResult() { return std::move(expanded_); }

 private:
  enum class State { Text, Escape, Dollar, Name };

  static constexpr const char* kNoOpeningBrace =
      R"(expecting opening brace { after $; you might want \$ instead.)";

  std::optional<std::string> takeText(char character) {
    if (character == '\\') {
      state_ = State::Escape;
    } else if (character == '$') {
      state_ = State::Dollar;
    } else if (character == '{' || character == '}') {
      return std::string("unexpected character ") + character + "; you might want \\" + character +
             " instead.";
    } else {
      expanded_ += character;
    }
    return std::nullopt;
  }

  std::optional<std::string> takeEscaped(std::string_view rest) {
    const auto meant = unescape(rest.front());
    if (!meant) return "unknown escape sequence \\" + firstCharacter(rest) + ".";
    expanded_ += *meant;
    state_ = State::Text;
    return std::nullopt;
  }

  std::optional<std::string> takeOpeningBrace(char character) {
    if (character != '{') return kNoOpeningBrace;
    name_.clear();
    state_ = State::Name;
    return std::nullopt;
  }

  std::optional<std::string> takeName(char character) {
    if (character == '{' || character == '$' || character == '\\')
      return std::string("special character ") + character + " is forbidden in variable names.";
    if (character != '}') {
      name_ += character;
      return std::nullopt;
    }
    auto found = variables_.lookup(name_);
    if (auto* error = std::get_if<LookupError>(&found)) return std::move(error->message);
    expanded_ += std::get<std::string>(found);
    owed_.erase(name_);
    state_ = State::Text;
    return std::nullopt;
  }

  const IVariables& variables_;
  VariableNames owed_;
  State state_ = State::Text;
  std::string name_;
  std::string expanded_;
};

}  // namespace

LookupResult MapVariables::lookup(std::string_view name) const {
  if (const auto found = values_.find(name); found != values_.end()) return found->second;

  std::string message = "unknown variable ${" + std::string(name) + "} (available: ";
  const char* separator = "";
  for (const auto& [known, value] : values_) {
    message += separator + known;
    separator = ", ";
  }
  return LookupError{message + ")"};
}

MosaicVariables::MosaicVariables(std::string feedIndex, std::string serviceName,
                                 std::string customName)
    : values_({{"feedIndex", orNotAvailable(std::move(feedIndex))},
               {"serviceName", orNotAvailable(std::move(serviceName))},
               {"customName", orNotAvailable(std::move(customName))}}) {
}

VariableNames MosaicVariables::requiredNames() const {
  return {"feedIndex"};
}

ExpansionResult expandVariables(std::string_view text, const IVariables& variables) {
  Scan scan(variables);
  for (std::size_t offset = 0; offset < text.size(); ++offset) {
    if (auto error = scan.take(text.substr(offset))) {
      return ExpansionError{std::move(*error), offset};
    }
  }
  if (auto error = scan.finish()) return ExpansionError{std::move(*error), text.size()};
  return scan.takeResult();
}

}  // namespace korr::util::inline v2_1
