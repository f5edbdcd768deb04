// SPDX-License-Identifier: MIT

// The exceptions of the system's components.
#pragma once

#include <cstdarg>
#include <cstdio>
#include <exception>
#include <string>
#include <utility>

#if defined(__MINGW32__) && !defined(__clang__)
#define TESSARY_PRINTF(text, first) __attribute__((format(gnu_printf, text, first)))
#elif defined(__GNUC__)
#define TESSARY_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define TESSARY_PRINTF(text, first)
#endif

namespace korr::util::inline v2_1 {

/// The text that a printf format and its arguments give.
inline std::string vformat(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  if (length <= 0) return {};
  std::string text(static_cast<std::size_t>(length) + 1, '\0');
  std::vsnprintf(text.data(), text.size(), format, arguments);
  text.pop_back();
  return text;
}

/// An error with a message for its reader.
class TessaryException : public std::exception {
 public:
  explicit TessaryException(std::string message) : message_(std::move(message)) {}

  const char* what() const noexcept override { return message_.c_str(); }

 private:
  std::string message_;
};

/// The error of one component: instantiated on the class that throws it, so that handlers can tell
/// components apart.
template <class Thrower>
class ExceptionTemplate : public TessaryException {
 public:
  TESSARY_PRINTF(2, 3) explicit ExceptionTemplate(const char* format, ...) : TessaryException("") {
    std::va_list arguments;
    va_start(arguments, format);
    static_cast<TessaryException&>(*this) = TessaryException(vformat(format, arguments));
    va_end(arguments);
  }
};

}  // namespace korr::util::inline v2_1
